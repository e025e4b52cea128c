// What carrying and removing have in common: progress, cancelling, and asking after a failure.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/Carrier.h"

#include <optional>
#include <set>
#include <utility>

namespace platform {

/// Thrown from any depth when the person cancels; never leaves Carrier.h's functions.
struct CarryCancelled {};

class CarryJob {
  public:
    CarryJob(CarryObserver& observer, CarryResult& result)
        : m_observer(observer), m_result(result) {}

  protected:
    /// Runs the step again until it is done or skipped. `work` answers a CopyOutcome or
    /// SystemError. False when it is skipped.
    template <class Work> [[nodiscard]] bool Try(CarryStep step, const QString& path, Work&& work) {
        for (;;) {
            const SystemError error = work();
            if (error.Ok()) {
                return true;
            }
            if (!AskRetry({step, path, error, 0, 0})) {
                return false;
            }
        }
    }
    /// True: again. False: skipped, and counted.
    [[nodiscard]] bool AskRetry(const Problem& problem);

    void Show(const QString& from, const QString& to);
    void Tell() {
        if (!m_observer.ShowProgress(m_progress)) {
            throw CarryCancelled();
        }
    }

    /// The names in a folder; nothing when it cannot be read and is skipped.
    [[nodiscard]] std::optional<QStringList> Names(const QString& folder);
    /// Adds what lies at the path to the totals. What cannot be read shows itself later.
    void Count(const QString& path);

    CarryObserver& m_observer;
    CarryResult& m_result;
    CarryProgress m_progress;
    qint64 m_needed = 0; ///< bytes of the disk for what was counted

  private:
    std::set<std::pair<CarryStep, int>> m_skipAll;
};

} // namespace platform
