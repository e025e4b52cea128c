// Progress of an update on standard error.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/IndexProgress.h"

#include "cli/MessageIds.h"
#include "cli/Session.h"
#include "cli/Signals.h"
#include "core/Events.h"
#include "core/Messages.h"
#include "indexing/EngineWords.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "search/TextQuery.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Of the question whether mail is to be read too: asking for it on the command line answers it.
constexpr int kUpdateTitle = 10;

class ProgressLine : public UpdateView {
  public:
    ProgressLine(const ProgressWishes& wishes, Output& output)
        : m_wishes(wishes), m_output(output) {}

    void ShowStep(const QString& text) override {
        m_step = text;
        m_file.clear();
        Show();
    }
    void SetTotalProgress(int percent) override {
        m_percent = percent;
        Show();
    }
    void SetFileProgress(int) override {}
    [[nodiscard]] int LogLength() const override { return 0; }
    void EmptyLog() override {}
    void AppendLog(const QString& text) override {
        const QString lines = text.chopped(1); // the last line break
        m_file = lines.section(u'\n', -1);
        if (m_wishes.listFiles) {
            m_output.Note(lines);
        } else {
            Show();
        }
    }

  private:
    void Show() {
        if (!m_wishes.quiet && !m_wishes.listFiles) {
            m_output.ShowProgress(QString::number(m_percent).rightJustified(3) + u" %  "_s +
                                  (m_file.isEmpty() ? m_step : m_step + u"  "_s + m_file));
        }
    }

    ProgressWishes m_wishes;
    Output& m_output;
    QString m_step, m_file;
    int m_percent = 0;
};

} // namespace

void RunUpdate(UpdateMembers& members, const ProgressWishes& wishes, Output& output) {
    CommandDialogue dialogue(output, {GetMessage(kUpdateTitle)});
    const ScopedDialogue askThere(dialogue);
    ProgressLine line(wishes, output);
    UpdateStatus status(line);
    const StopSignals stop;
    const ScopedYield watch([&] {
        if (StopSignals::Came()) {
            members.Cancelled = true;
            status.Abort();
        }
    });
    UpdateIndex(members, line, status);
    output.ClearProgress();
    if (members.IndexReport.fault == engine::IndexFault::Damaged ||
        members.IndexReport.fault == engine::IndexFault::Unsuitable) {
        output.Complain(GetMessage(kRebuildHint));
    }
}

bool IndexExists() {
    const QString file = platform::ToMachine(IndexFolder() + u"index_a.ix"_s);
    return !file.isEmpty() && platform::Exists(file);
}

QString ProblemText(const engine::Problem& problem) {
    const QString state = StateMessage(problem.state);
    return problem.reason.isEmpty()
               ? GetMessage(kProblemUnexplained, {problem.file, state})
               : GetMessage(kProblem, {problem.file, state, ReasonMessage(problem.reason)});
}

void ComplainOfProblems(const std::vector<engine::Problem>& problems, Output& output) {
    for (const engine::Problem& problem : problems) {
        output.Note(ProblemText(problem));
    }
}

} // namespace velmora
