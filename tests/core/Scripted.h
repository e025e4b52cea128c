// A reporter and a dialogue that answer from a script and remember what they were told.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Dialogue.h"
#include "core/Failure.h"

#include <QStringList>
#include <deque>
#include <functional>

namespace velmora {

// Answers Cancel when the script is at its end.
class ScriptedReporter : public Reporter {
  public:
    bool Retry(const QString& report) override {
        reports.append(report);
        if (script.empty()) {
            return false;
        }
        const auto answer = std::move(script.front());
        script.pop_front();
        return answer();
    }
    // The next report's answer; it may do something first, or throw.
    void Next(std::function<bool()> answer) { script.push_back(std::move(answer)); }

    QStringList reports;

  private:
    std::deque<std::function<bool()>> script;
    ScopedReporter m_inForce{*this};
};

// Answers No when the script is at its end. Lines of `told`: "title|text|icon".
class ScriptedDialogue : public Dialogue {
  public:
    void Tell(const QString& text, const QString& title, Icon icon) override {
        Note(text, title, icon);
    }
    Answer Ask(const QString& text, const QString& title, Icon icon) override {
        Note(text, title, icon);
        if (answers.empty()) {
            return Answer::No;
        }
        const Answer answer = answers.front();
        answers.pop_front();
        return answer;
    }
    QString BrowseForFolder(const QString& prompt, const QString& start) override {
        Note(prompt, start, Icon::None);
        return folder;
    }
    bool ShowHint(int pictureId, const QString& text, const QString& title) override {
        Note(text, title, Icon::None);
        hintPictures.push_back(pictureId);
        pointerAtHint = m_pointer;
        return tickHint;
    }
    void SetPointer(Pointer pointer) override { m_pointer = pointer; }
    Pointer CurrentPointer() const override { return m_pointer; }

    QStringList told;
    std::deque<Answer> answers;
    QString folder;
    bool tickHint = false;
    std::deque<int> hintPictures;
    Pointer pointerAtHint = Pointer::Hourglass;

  private:
    void Note(const QString& text, const QString& title, Icon icon) {
        told.append(title + u'|' + text + u'|' + QString::number(static_cast<int>(icon)));
    }

    Pointer m_pointer = Pointer::Default;
    ScopedDialogue m_inForce{*this};
};

} // namespace velmora
