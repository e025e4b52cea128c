// Error reports: their text, the reporter in force, what becomes of a failing reporter.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Failure.h"

#include "core/Dialogue.h"
#include "core/Globals.h"
#include "core/MessageIds.h"
#include "core/Messages.h"
#include "platform/LogicalPath.h"

#include <cerrno>
#include <cstdio>
#include <new>
#include <system_error>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

void PrintReport(const QString& report) {
    QByteArray bytes = report.toUtf8();
    bytes.replace("\r\n", "\n").append('\n');
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
}

bool AskReporter(const QString& report) {
    Reporter* reporter = Program().reporter;
    if (!reporter) {
        return TextReporter().Retry(report);
    }
    // The failure may have struck while the hourglass was on. It comes back for another try only.
    Dialogue& dialogue = CurrentDialogue();
    const Pointer earlier = dialogue.CurrentPointer();
    dialogue.SetPointer(Pointer::Default);
    const bool retry = reporter->Retry(report);
    if (retry) {
        dialogue.SetPointer(earlier);
    }
    return retry;
}

} // namespace

Error::Error(int number, const QString& text)
    : std::runtime_error(text.toStdString()), m_number(number), m_text(text) {}

void Check(const platform::SystemError& error, const QString& logicalPath) {
    if (!error.Ok()) {
        throw Error(error.code, platform::DisplayPath(logicalPath) + u": "_s + error.text);
    }
}

QString MachinePath(const QString& logicalPath) {
    const QString path = platform::ToMachine(logicalPath);
    if (path.isEmpty()) {
        throw Error(kNoSuchPlace, GetMessage(kNoSuchPlace, {logicalPath}));
    }
    return path;
}

bool TextReporter::Retry(const QString& report) {
    PrintReport(report);
    return false;
}

ScopedReporter::ScopedReporter(Reporter& reporter)
    : m_covered(std::exchange(Program().reporter, &reporter)) {}

ScopedReporter::~ScopedReporter() {
    Program().reporter = m_covered;
}

bool ReportError(const QString& text) {
    for (;;) {
        QString ownReport;
        try {
            return AskReporter(text);
        } catch (...) {
            ownReport = ReportOfCurrentException(__LINE__, "ErrManager", "ReportError");
        }
        try {
            if (!AskReporter(ownReport)) {
                return false;
            }
        } catch (...) {
            PrintReport(text);
            PrintReport(ownReport);
            return false;
        }
    }
}

QString ReportText(const QString& description, int number, int line, const QString& module,
                   const QString& procedure) {
    return GetMessage(1038) + u"\r\n"_s + description + u" (n."_s + QString::number(number) +
           u")\r\n"_s + GetMessage(1039) + u' ' + QString::number(line) + GetMessage(1040) +
           module + u'/' + procedure;
}

QString ReportOfCurrentException(int line, const char* module, const char* procedure) {
    QString description;
    int number = 0;
    try {
        throw;
    } catch (const Error& error) {
        description = error.Text();
        number = error.Number();
    } catch (const std::system_error& error) {
        description = QString::fromUtf8(error.what());
        number = error.code().value();
    } catch (const std::bad_alloc&) {
        description = GetMessage(kOutOfMemory);
        number = ENOMEM;
    } catch (const std::exception& error) {
        description = QString::fromUtf8(error.what());
    } catch (...) {
        description = GetMessage(kUnknownFailure);
    }
    return ReportText(description, number, line, QString::fromUtf8(module),
                      QString::fromUtf8(procedure));
}

} // namespace velmora
