// Runs a job in a process of its own.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "CrashJob.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace engine_test {

// What the child has told until it died.
struct Told {
    std::vector<std::string> lines; // "p" and the rows that a commit is to change, "c" behind it
    bool ended = false;
    std::int64_t calls = 0, steps = 0;
    std::string fault; // empty: none
};

// Returns when the child is gone. killAfter: none lets it run.
Told RunChild(const CrashJob& job, std::optional<std::chrono::microseconds> killAfter = {});

} // namespace engine_test
