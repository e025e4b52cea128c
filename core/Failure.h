// The one way of reporting the unexpected: Guard runs a unit of work, ReportError asks what next.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/SystemError.h"

#include <QString>
#include <exception>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace velmora {

// A failure in the program's own words.
class Error : public std::runtime_error {
  public:
    Error(int number, const QString& text);
    int Number() const { return m_number; }
    const QString& Text() const { return m_text; }

  private:
    int m_number;
    QString m_text;
};

// Throws the system's refusal as an Error, with the place in front as a person sees it:
// "/home/anna/list.xml: Permission denied". Nothing happens when the call went well.
void Check(const platform::SystemError& error, const QString& logicalPath);
// The machine path of a logical path. Throws Error when this computer has no such place: a share
// that is not mounted, a drive letter.
QString MachinePath(const QString& logicalPath);

// Shows the report of a failure and answers whether the unit shall run again.
class Reporter {
  public:
    virtual ~Reporter() = default;
    virtual bool Retry(const QString& report) = 0;
};

// Prints the report to standard error and answers Cancel: for the command line.
class TextReporter : public Reporter {
  public:
    bool Retry(const QString& report) override;
};

// Puts a reporter in force for the lifetime of this object.
class ScopedReporter {
  public:
    explicit ScopedReporter(Reporter& reporter);
    ~ScopedReporter();
    ScopedReporter(const ScopedReporter&) = delete;
    ScopedReporter& operator=(const ScopedReporter&) = delete;

  private:
    Reporter* m_covered;
};

// Hands the report text to the reporter in force; true means Retry. Never throws: a reporter that
// fails is reported to itself once more, then the text goes to standard error and counts as Cancel.
[[nodiscard]] bool ReportError(const QString& text);

// The report text, lines parted by CR LF:
//   Unexpected error
//   <description> (n.<number>)
//   Error at line  <line>, module <module>/<procedure>
QString ReportText(const QString& description, int number, int line, const QString& module,
                   const QString& procedure);

// The report text of the exception being handled; call inside a catch block only.
QString ReportOfCurrentException(int line, const char* module, const char* procedure);

// Runs `unit`, which must be repeatable. Any exception becomes the error report; Retry runs the
// unit again, Cancel answers an empty result (zero, false, empty text, null).
//   return Guard("ModDb", "GetRs", [&] { return Open(sql); });
// The line in the report is that of the call.
template <class Unit>
auto Guard(const char* module, const char* procedure, Unit&& unit, int line = __builtin_LINE())
    -> std::invoke_result_t<Unit&> {
    using Result = std::invoke_result_t<Unit&>;
    for (;;) {
        QString report;
        try {
            return unit();
        } catch (...) {
            report = ReportOfCurrentException(line, module, procedure);
        }
        // Asked outside the handler: a window runs an event loop, and failures may nest in it.
        if (!ReportError(report)) {
            return Result();
        }
    }
}

// Guard for a step whose caller must know how it ended: true when done, false on Cancel.
//   if (!Attempt("Starter", "main", [&] { ShowSplash(); })) return;
template <class Unit>
[[nodiscard]] bool Attempt(const char* module, const char* procedure, Unit&& unit,
                           int line = __builtin_LINE()) {
    return Guard(
        module, procedure,
        [&] {
            unit();
            return true;
        },
        line);
}

} // namespace velmora
