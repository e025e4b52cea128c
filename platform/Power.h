// Switching the machine off.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/SystemError.h"

namespace platform {

/// Whether this user may switch the machine off now, without a password. Asks the system's login
/// manager and waits a second for it at most.
[[nodiscard]] bool CanPowerOff();

/// Asks the login manager to switch off; it ends all programs in good order. Ok means that it
/// agreed. Without one, or without the right, that is the failure.
[[nodiscard]] SystemError PowerOff();

} // namespace platform
