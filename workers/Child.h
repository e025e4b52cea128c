// The worker's side: serves tasks from the pool until the pool goes away.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace workers {

// Sends pieces of an answer. The end of the role's function ends the answer; an exception
// from it ends the task with Refused and what() as message (bad_alloc: OutOfMemory).
class Answer {
  public:
    virtual ~Answer() = default;
    // One piece, copied or sent before the call returns; small ones travel together. A payload
    // above 64 MiB throws std::length_error. Ends the process when the pool is gone.
    virtual void Send(std::uint8_t type, std::string_view payload) = 0;
};

struct Role {
    // Called once with the pool's settings, before the wall goes up: load what needs files, and
    // leave no thread running. An exception tells the pool that no worker can be started.
    std::function<void(const std::map<std::string, std::string>& settings)> prepare;
    // One task: an open file (closed by the caller) and the request.
    std::function<void(int file, std::string_view request, Answer& answer)> serve;
};

// main() of a worker: speaks on the socket inherited as descriptor 3, walls the process in
// (no network, no new programs, processes or threads, no writing of files, reading only of the
// system's own libraries and data, none by name where the kernel has no Landlock) and serves.
// Either member of a role may be empty. Returns the process's exit code.
int RunWorker(const std::map<std::string, Role>& roles);

} // namespace workers
