// Watches a carrier, answers its questions from a script and remembers them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/Carrier.h"

#include <deque>
#include <functional>
#include <vector>

namespace testing_support {

// Answers Cancel when the script is at its end.
class ScriptedObserver : public platform::CarryObserver {
  public:
    bool ShowProgress(const platform::CarryProgress& now) override {
        progress = now;
        ++calls;
        return !onProgress || onProgress(now);
    }
    platform::ConflictAnswer AskConflict(const platform::Conflict& conflict) override {
        conflicts.push_back(conflict);
        return Next(conflictAnswers);
    }
    platform::ProblemAnswer AskProblem(const platform::Problem& problem) override {
        problems.push_back(problem);
        if (onProblem) {
            onProblem();
        }
        return Next(problemAnswers);
    }

    platform::CarryResult Carry(const QStringList& sources, const QString& folder,
                                platform::CarryMode mode) {
        platform::CarryResult result;
        platform::Carry(sources, folder, mode, *this, result);
        return result;
    }

    std::function<bool(const platform::CarryProgress&)> onProgress;
    std::function<void()> onProblem;
    std::deque<platform::ConflictAnswer> conflictAnswers;
    std::deque<platform::ProblemAnswer> problemAnswers;
    std::vector<platform::Conflict> conflicts;
    std::vector<platform::Problem> problems;
    platform::CarryProgress progress;
    int calls = 0;

  private:
    template <class Answer> static Answer Next(std::deque<Answer>& answers) {
        if (answers.empty()) {
            return {};
        }
        const Answer answer = answers.front();
        answers.pop_front();
        return answer;
    }
};

} // namespace testing_support
