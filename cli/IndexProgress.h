// A run of the index update that shows itself on standard error and can be stopped by a signal.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "cli/Output.h"
#include "indexing/UpdateIndex.h"

namespace velmora {

struct ProgressWishes {
    bool quiet = false;     // no progress line
    bool listFiles = false; // a line for each file that the engine names
};

// Runs UpdateIndex until it has ended; SIGINT, SIGTERM and SIGHUP cancel it. What went wrong with
// the index has been told.
void RunUpdate(UpdateMembers& members, const ProgressWishes& wishes, Output& output);

// Whether the open archive has an index.
bool IndexExists();

// Prints what could not be read, or only in part, to standard error.
void ComplainOfProblems(const std::vector<engine::Problem>& problems, Output& output);
// One of them in a line.
QString ProblemText(const engine::Problem& problem);

} // namespace velmora
