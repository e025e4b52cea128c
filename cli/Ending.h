// How a command ends: exit codes, and the two ways of ending early.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace velmora {

enum ExitCode {
    kDone = 0,
    kIncomplete = 1, // documents that could not be read, folders that could not be added, no match
    kUsage = 2,      // the command line or the request cannot be understood
    kUnusable = 3,   // the archive, its index or the output cannot be used
    kCancelled = 130,
    kOutputClosed = 141, // whoever read the output has gone
};

// Thrown for a command line that cannot be understood: the message and its arguments.
struct UsageError {
    int message;
    QStringList arguments;
};

// Thrown by a command that cannot go on. An empty text: it has been told already.
struct CommandError {
    ExitCode code;
    QString text;
};

} // namespace velmora
