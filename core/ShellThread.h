// Runs file work in a thread and carries its progress and questions over to the interface thread.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/ShellOperation.h"

#include <functional>

namespace velmora {

using ShellWorkFunction = std::function<void(platform::CarryObserver&, platform::CarryResult&)>;

// Comes back when the work is over; lets events run meanwhile. `view` may be null. What the work
// throws is thrown here, with `result` telling what is done.
void RunShellWork(const ShellWorkFunction& work, ShellView* view, platform::CarryResult& result);

} // namespace velmora
