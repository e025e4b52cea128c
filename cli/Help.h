// What a person reads about the command line itself.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "cli/Ending.h"
#include "cli/Output.h"

namespace velmora {

// The help of a message id, with what all commands have in common, to standard output.
void PrintHelp(int help, Output& output);

// To standard error: the fault, how the command is written, and where more is told. command: null
// when none was understood.
void PrintUsage(const UsageError& error, const char* command, int help, Output& output);

} // namespace velmora
