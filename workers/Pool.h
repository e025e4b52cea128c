// A pool of worker processes that do dangerous work (parsing foreign documents) behind a wall.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "workers/Task.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace workers {

struct PoolOptions {
    std::string executable; // machine path of velmora-worker
    int workers = 0;        // 0: as many as there are cores
    // Bytes of writable memory that a worker may add to what it holds when it is ready.
    std::size_t memoryLimit = std::size_t{1} << 30;
    std::chrono::milliseconds timeLimit{60'000};    // waiting for one task's answer, summed up
    std::size_t answerLimit = std::size_t{4} << 30; // bytes of one task's answer, 8 a piece added
    int niceness = 5;                               // added to the program's own, 0 to 19
    // Sent to every worker when it starts, before the wall goes up: role settings by name.
    std::vector<std::pair<std::string, std::string>> settings;
};

// Worker processes start when first needed, are replaced after a crash, a hang or a cap, and are
// reused otherwise. Each serves one task at a time on a pool thread of its own. Thread-safe.
class Pool {
  public:
    explicit Pool(PoolOptions options);
    // Cancels what waits, ends the workers and waits for the threads.
    ~Pool();
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    // Queues a task; waits while twice as many tasks as workers are queued (not on the pool's
    // own threads, which would wait for themselves).
    void Add(std::unique_ptr<Task> task);
    // Waits until every task has ended.
    void Wait();
    // Kills what runs and drops what waits; each task ends with Cancelled. Returns at once: the
    // endings come on the pool's threads, after an OnFrame that is under way. Later tasks are
    // cancelled too, until Resume.
    void Cancel();
    void Resume();
    [[nodiscard]] int Workers() const;

    // Why no worker can be started at present; empty when nothing is known against it. Tasks end
    // with Crashed meanwhile, which is then not the fault of their documents.
    [[nodiscard]] std::string StartFailure() const;
    // The walls around the worker that was started last, in words; empty before the first.
    [[nodiscard]] std::string Walls() const;

  private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace workers
