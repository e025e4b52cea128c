// What keeps an index from being used, as the end of a command.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "cli/Ending.h"
#include "engine/SearchJob.h"

namespace velmora {

// Throws CommandError when nothing could be searched: kUsage for a malformed request, with its
// place, else kUnusable.
void ThrowOnFault(const engine::SearchResults& results);

CommandError EndingOf(const engine::IndexError& error);

} // namespace velmora
