// A note beside the index that somebody met damage in it, for the next update to look into.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"

#include <functional>
#include <string>

namespace engine {

// A search meets damage in places that an update may never come to. Without the right to leave the
// note none is left.
void NoteDamage(const std::string& indexFile) noexcept;
[[nodiscard]] bool IsDamageNoted(const std::string& indexFile);
void ForgetDamage(const std::string& indexFile) noexcept;

// Reads everything in the index; false at the first thing that is damaged. keepGoing is asked
// often: when it says no, the answer is true. Throws sqlite::Error for anything else.
[[nodiscard]] bool IsWhole(IndexFile& index, const std::function<bool()>& keepGoing);

} // namespace engine
