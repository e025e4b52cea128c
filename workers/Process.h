// One worker process, seen from the pool: how it is started, interrupted and buried.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "workers/Descriptor.h"
#include "workers/Task.h"

#include <string>

#include <sys/types.h>

namespace workers {

// Why a process ended, for the task that it was serving.
struct Death {
    Ending ending = Ending::Crashed; // or OutOfMemory
    std::string message;
};

// The process has descriptors 0 and 1 on /dev/null, 2 on a pipe whose last line becomes part of
// the crash message, 3 on the socket, and no other; a session, signal state and environment of
// its own. It must be started by a thread that outlives it (the kernel kills it with that thread).
class Process {
  public:
    // Throws std::system_error when the executable cannot be started.
    explicit Process(const std::string& executable);
    // Kills the process when it still runs.
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    [[nodiscard]] int Socket() const { return m_socket.Get(); }
    // Kills the process and wakes whoever waits on the socket, even when the process cannot die
    // at once because it hangs in the kernel. The only member for other threads.
    void Interrupt() const;
    // Forgets what the process wrote to its stderr, so that the pipe never fills.
    void DrainErrors();
    // Waits for the end of a process that closed its socket, kills it when it does not come.
    [[nodiscard]] Death End();

  private:
    bool Wait(int milliseconds) const;
    [[nodiscard]] std::string LastWords();

    pid_t m_pid = -1;    // -1 once buried
    Descriptor m_handle; // pidfd: never means another process, as a reused number would
    Descriptor m_socket;
    Descriptor m_errors;
    std::string m_errorTail;
};

} // namespace workers
