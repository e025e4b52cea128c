// What every command starts with: language, archive, and who answers failures and questions.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "cli/Arguments.h"
#include "cli/Output.h"
#include "core/Dialogue.h"
#include "core/Failure.h"

namespace velmora {

// Sets the language of messages: --lang wherever it stands, else the desktop's. Called before
// anything is told, so an unknown language is a UsageError of its own in the desktop's.
void ChooseLanguage(const QByteArrayList& words);

// Makes the archive of --archive, or the default one, the open one; its database has been opened.
// Throws CommandError, UsageError.
void OpenArchive(const Arguments& arguments);

// The absolute machine path of an argument, as text of platform/Names.h; nothing need be there.
// Throws UsageError for an empty one.
QString MachinePathOf(const QByteArray& argument);
// The same as logical path.
QString LogicalPathOf(const QByteArray& argument);

// Prints the report of a failure, answers Cancel, and remembers it.
class CommandReporter : public Reporter {
  public:
    explicit CommandReporter(Output& output) : m_output(output) {}
    bool Retry(const QString& report) override;
    [[nodiscard]] bool Failed() const { return m_failed; }

  private:
    Output& m_output;
    bool m_failed = false;
};

// Prints what is told and asked to standard error. `yesTo`: the titles of the questions that the
// command line has answered with yes; all others are answered with no.
class CommandDialogue : public TextDialogue {
  public:
    explicit CommandDialogue(Output& output, const QStringList& yesTo = {})
        : m_output(output), m_yesTo(yesTo) {}
    void Tell(const QString& text, const QString& title, Icon icon) override;
    Answer Ask(const QString& text, const QString& title, Icon icon) override;

  private:
    Output& m_output;
    QStringList m_yesTo;
};

} // namespace velmora
