// What a shell operation shows: its progress in figures, its conflicts and problems in words.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/ShellOperation.h"

#include <QString>
#include <deque>
#include <optional>

namespace velmora {

// The rate of the last seconds, and what is left by it.
class RateMeter {
  public:
    // `nowMs`: any clock that only goes forward.
    void Add(qint64 bytes, qint64 nowMs);
    // Nothing before there are two seconds to judge by, or when nothing moves.
    [[nodiscard]] std::optional<qint64> BytesPerSecond() const;

  private:
    struct Sample {
        qint64 bytes;
        qint64 ms;
    };
    std::deque<Sample> m_samples;
};

[[nodiscard]] QString ShellTitle(ShellWork work);
// "3 of 12 files, 4.5 Mb of 80 Mb".
[[nodiscard]] QString ProgressText(const platform::CarryProgress& progress);
// "2 Mb per second, about 3 min left"; empty as long as nothing can be said.
[[nodiscard]] QString RateText(const platform::CarryProgress& progress, const RateMeter& rate);
// Thousandths; nothing while the total is not known.
[[nodiscard]] std::optional<int> ProgressPart(const platform::CarryProgress& progress);

[[nodiscard]] QString ConflictText(const platform::Conflict& conflict);
// Size and date; of a folder the date alone.
[[nodiscard]] QString SideText(const platform::CarrySide& side);
[[nodiscard]] QString ProblemText(const platform::Problem& problem);

// A name or path in one line, whatever characters it holds.
[[nodiscard]] QString OneLine(const QString& path);

} // namespace velmora
