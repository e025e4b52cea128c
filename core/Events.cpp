// The one place that gives way to the event loop.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Events.h"

#include "core/Globals.h"

#include <QCoreApplication>

namespace velmora {

void YieldToEvents() {
    // A copy: the hook may take itself out of force while it runs.
    if (const auto hook = Program().yieldToEvents) {
        hook();
    } else if (QCoreApplication::instance()) {
        QCoreApplication::processEvents();
    }
}

ScopedYield::ScopedYield(std::function<void()> hook)
    : m_covered(std::exchange(Program().yieldToEvents, std::move(hook))) {}

ScopedYield::~ScopedYield() {
    Program().yieldToEvents = std::move(m_covered);
}

} // namespace velmora
