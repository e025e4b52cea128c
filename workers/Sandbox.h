// The wall around a worker: what a process that was taken over by a document can still reach.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

namespace workers {

struct WallsReport {
    bool systemCalls = false; // seccomp: no network, programs, processes, writing
    int landlock = 0;         // version of Landlock that guards the files; 0: none
    bool relaxed = false;     // a build with sanitizers, which need some calls more

    // A line in English, such as "system calls filtered; files guarded by Landlock 2". It names
    // what stays reachable where a wall is missing.
    [[nodiscard]] std::string Describe() const;
};

// The walls that the running kernel offers; changes nothing.
[[nodiscard]] WallsReport AvailableWalls();

// Walls this process in for the rest of its life. Throws std::runtime_error when it has more than
// one thread, which not all walls would hold. Without Landlock (or with useLandlock false, for
// tests) no file can be opened by name at all.
WallsReport EnterWalls(bool useLandlock = true);

} // namespace workers
