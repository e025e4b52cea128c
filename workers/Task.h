// What a worker process is asked to do, seen from the process that asks.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace workers {

enum class Ending : std::uint8_t {
    Done,
    Refused,    // the role itself reports a failure; message holds its words
    CannotOpen, // Open() gave no read-only file; message holds the system's words
    Crashed,  // the worker died or could not be started; message names signal, exit code or reason
    TimedOut, // no answer within the time limit; the worker was killed
    OutOfMemory, // the worker reached its memory cap, or the system killed it
    BadAnswer,   // the worker broke the protocol or sent more than the cap
    Cancelled,   // Open may not have been called
};

// One job. The pool calls all members on one of its own threads, in this order:
// Open, Role, Request, OnFrame any number of times, OnEnd exactly once (also when Open fails or
// was never called). An exception from any but OnEnd ends the task with Refused and what() as
// message; OnEnd must not throw. Members may call Pool::Add and Pool::Cancel, not Pool::Wait.
class Task {
  public:
    virtual ~Task() = default;
    // Name of the role in the worker, such as "read".
    [[nodiscard]] virtual std::string Role() const = 0;
    // Opens the file that the worker is to get, read-only, and returns its descriptor, which
    // the pool closes. -1 with errno set: the task ends with CannotOpen.
    [[nodiscard]] virtual int Open() = 0;
    // The role's own request, up to 63 MiB.
    [[nodiscard]] virtual std::string Request() = 0;
    // A piece of the answer: one call for each Answer::Send, in the same order; the bytes are
    // gone when it returns. May block: the worker then waits, and the time does not count
    // against its limit. A worker that dies may take up to 64 KiB of unsent pieces along.
    virtual void OnFrame(std::uint8_t type, std::string_view payload) = 0;
    // message is a short English clause; empty for Done and Cancelled.
    virtual void OnEnd(Ending ending, const std::string& message) = 0;
};

} // namespace workers
