// What velmora index tells of the documents in the index, without indexing.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "cli/Arguments.h"
#include "cli/Output.h"

namespace velmora {

// Both take the folder, if one is named, from the only operand, and print lines or JSON. They throw
// UsageError, and CommandError where the index cannot be used.

// The documents that could not be read, or only in part; kIncomplete when there are any.
int PrintProblems(const Arguments& arguments, Output& output);

// How many documents of each folder stand in each state. kIncomplete when some could not be read,
// or only in part, and, with a word on standard error, when the named folder holds none.
int PrintCounts(const Arguments& arguments, Output& output);

} // namespace velmora
