// How long a run will still take, as far as that can be known.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>
#include <chrono>
#include <optional>

namespace velmora {

// Fed with the percentages of a run, which go by the bytes of the files found. `now` is any clock
// that only runs forward.
class TimeLeft {
  public:
    using Time = std::chrono::milliseconds;

    void Tell(int percent, Time now);
    // Nothing as long as there is too little to go by, and when the reading is over: what then
    // follows has no measure. Grows again when the run is slower than it was.
    [[nodiscard]] std::optional<Time> Left(Time now) const;

  private:
    int m_first = -1; // percentages, with the moment at which they were told
    int m_last = -1;
    Time m_firstAt{};
    Time m_lastAt{};
};

// "About 3 min left"; empty for nothing.
QString TimeLeftMessage(std::optional<TimeLeft::Time> left);

} // namespace velmora
