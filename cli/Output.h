// Standard output and standard error: UTF-8 whatever the locale, harmless on a terminal.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace velmora {

// On a terminal control characters become "?", so that no name and no document steers it.
class Output {
  public:
    Output();
    ~Output() { (void)Flush(); }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // Lines of the result; one line break is added. The text may hold paths as platform/Names.h has
    // them: their bytes come out as they stand on the disk.
    void Line(const QString& text);
    // Text that is always UTF-8, without a line break added.
    void Utf8(const QString& text);
    // A line to standard error, behind "velmora: ", with paths as in Line. What was printed before
    // comes first.
    void Complain(const QString& text);
    // A line to standard error as it is.
    void Note(const QString& text);

    // Writes out what is kept back. The error number of the first failure, 0 when all went well.
    int Flush();

    // A line on the terminal of standard error that the next one replaces; cut to its width. Does
    // nothing when standard error is no terminal.
    void ShowProgress(const QString& text);
    void ClearProgress();
    [[nodiscard]] bool CanShowProgress() const { return m_errorIsTerminal; }

  private:
    void Append(const QByteArray& bytes);
    static void ToError(const QByteArray& bytes);

    bool m_outputIsTerminal;
    bool m_errorIsTerminal;
    bool m_progressShown = false;
    QByteArray m_waiting;
    int m_failure = 0;
};

} // namespace velmora
