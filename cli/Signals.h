// The signals that ask a long command to stop.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace velmora {

// While one lives, SIGINT, SIGTERM and SIGHUP are noted instead of ending the process. The second
// one ends it at once, as always: what has been committed stays.
class StopSignals {
  public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    [[nodiscard]] static bool Came();
};

// A reader of the output that goes away is an error to be seen, not the end of the process: an
// index that is being written must not be left for that.
void IgnoreClosedPipes();

} // namespace velmora
