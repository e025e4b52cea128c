// What a worker process may use up: memory, files, processor; and when it goes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "workers/Descriptor.h"

#include <cstddef>
#include <cstdint>

namespace workers {

// The kernel kills this process with the thread that started it; signals meant for a session are
// the program's to answer.
void FollowTheParent();

// Caps for the rest of the process's life: memory bytes of writable memory above what it has now,
// no written files, no core files, no new processes, few descriptors; a lower priority, and first
// in the row when the system runs out of memory. A build with sanitizers has no cap on memory.
void SetLimits(std::uint64_t memory, int niceness);

// Resident memory of this process, and what is done when a task left much behind.
class MemoryWatch {
  public:
    // Opens what it needs; from then on it works behind the wall.
    explicit MemoryWatch(std::uint64_t memoryLimit);
    // To be asked after each task: gives free memory back to the system. True: so much remains
    // that this process should be replaced.
    [[nodiscard]] bool TidyUp();

  private:
    [[nodiscard]] std::uint64_t Resident() const;

    Descriptor m_statm;
    std::uint64_t m_tidyAt = 0;   // bytes
    std::uint64_t m_retireAt = 0; // bytes
};

} // namespace workers
