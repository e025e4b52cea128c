// The commands of velmora. Each runs on parsed arguments and answers the exit code.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "cli/Arguments.h"
#include "cli/Output.h"

namespace velmora {

struct Command {
    CommandSyntax syntax;
    int help; // message id
    // Throws UsageError and CommandError.
    int (*run)(const Arguments& arguments, Output& output);
};

int RunInit(const Arguments& arguments, Output& output);
int RunFolders(const Arguments& arguments, Output& output);
int RunIndex(const Arguments& arguments, Output& output);
int RunSearch(const Arguments& arguments, Output& output);
int RunShow(const Arguments& arguments, Output& output);
int RunWords(const Arguments& arguments, Output& output);

// The whole command line, words without the program's name: the exit code of the process.
int RunCommandLine(const QByteArrayList& words, Output& output);

} // namespace velmora
