// How long a run will still take.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/TimeLeft.h"

#include "core/Messages.h"
#include "indexing/MessageIds.h"

namespace velmora {

namespace {

constexpr int kLeastPercent = 2; // on which an estimate may rest
constexpr TimeLeft::Time kLeastTime = std::chrono::seconds(3);
constexpr int kReadingOver = 99;

} // namespace

void TimeLeft::Tell(int percent, Time now) {
    // The clock runs from the first file on: looking for files has no percentage.
    if (percent <= 0 || percent < m_last) {
        *this = TimeLeft();
    }
    if (percent > 0 && percent != m_last) {
        if (m_first < 0) {
            m_first = percent;
            m_firstAt = now;
        }
        m_last = percent;
        m_lastAt = now;
    }
}

std::optional<TimeLeft::Time> TimeLeft::Left(Time now) const {
    const int done = m_last - m_first;
    if (m_first < 0 || done < kLeastPercent || now - m_firstAt < kLeastTime ||
        m_last >= kReadingOver) {
        return std::nullopt;
    }
    const Time atThisRate = (m_lastAt - m_firstAt) * (100 - m_last) / done - (now - m_lastAt);
    // The next percent has not come yet: faster than this it cannot have been.
    const Time atLeast = (now - m_firstAt) * (kReadingOver - m_last) / (done + 1);
    return std::max(atThisRate, atLeast);
}

QString TimeLeftMessage(std::optional<TimeLeft::Time> left) {
    if (!left) {
        return {};
    }
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(*left).count();
    if (seconds < 60) {
        return GetMessage(kSecondsLeft);
    }
    const auto minutes = (seconds + 30) / 60;
    return minutes < 60 ? GetMessage(kMinutesLeft, {QString::number(minutes)})
                        : GetMessage(kHoursLeft, {QString::number(minutes / 60),
                                                  QString::number(minutes % 60)});
}

} // namespace velmora
