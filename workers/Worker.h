// A worker as the pool uses it: greeted, given one task after the other, replaced when it fails.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "workers/Pool.h"
#include "workers/Process.h"
#include "workers/Protocol.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <string>

namespace workers {

// How a task ended, and whether the worker can take another one.
struct Outcome {
    Ending ending = Ending::Done;
    std::string message;
    bool reusable = false;
};

// Time spent in waiting for a worker, against a limit; other work does not count.
class Patience {
  public:
    explicit Patience(std::chrono::milliseconds limit) : m_left(limit) {}
    // Waits until the socket is ready for events; false when the time is used up.
    [[nodiscard]] bool Wait(int socket, short events);

  private:
    std::chrono::nanoseconds m_left;
};

class Worker {
  public:
    // Starts the process; throws std::system_error when that fails. Options outlive the worker.
    explicit Worker(const PoolOptions& options);

    // Sends the settings and waits until the worker is ready. The answer is empty, or why the
    // worker cannot be used. With success Walls() is known.
    [[nodiscard]] std::string Greet();
    [[nodiscard]] const std::string& Walls() const { return m_walls; }
    // Whether the worker still lives and has said nothing without being asked.
    [[nodiscard]] bool Idle();
    // Sends the task, job naming its role and request, and hands its answer on, piece by piece,
    // until cancelled is seen. Exceptions from the task pass through; the worker is then not to be
    // used any more.
    [[nodiscard]] Outcome Run(Task& task, Job job, int file, const std::atomic<bool>& cancelled);
    // See Process::Interrupt; for other threads too.
    void Interrupt() const { m_process.Interrupt(); }

  private:
    enum class Arrival : std::uint8_t { Bytes, Closed, TimedOut };

    [[nodiscard]] Arrival Send(std::string_view bytes, int file, Patience& patience);
    [[nodiscard]] Arrival Receive(Patience& patience);
    // The ending of a task when nothing more comes.
    [[nodiscard]] Outcome Lost(Arrival why);
    [[nodiscard]] Outcome Finish(const Frame& frame);
    // Hands out the frames that have come; an outcome ends the task.
    [[nodiscard]] std::optional<Outcome> HandOut(Task& task, std::size_t& answered,
                                                 const std::atomic<bool>& cancelled);

    const PoolOptions& m_options;
    Process m_process;
    FrameReader m_reader;
    TaskNumber m_task = kGreeting; // the last one sent
    std::string m_walls;
};

} // namespace workers
