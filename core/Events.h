// The one place that gives way to the event loop.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <functional>

namespace velmora {

// Lets pending events run: clicks, timers, repaints. A handler may run inside it, so the caller's
// state must be whole. Without an application it does nothing.
void YieldToEvents();

// Puts `hook` in the place of the event loop for the lifetime of this object, so that a test can
// act at exactly that point.
class ScopedYield {
  public:
    explicit ScopedYield(std::function<void()> hook);
    ~ScopedYield();
    ScopedYield(const ScopedYield&) = delete;
    ScopedYield& operator=(const ScopedYield&) = delete;

  private:
    std::function<void()> m_covered;
};

} // namespace velmora
