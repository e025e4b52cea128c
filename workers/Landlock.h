// The kernel's wall around files: Landlock.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace workers {

// The version of Landlock that the running kernel offers; 0: none.
[[nodiscard]] int LandlockVersion();

// From now on this thread can open by name only what the system brings along (libraries, their
// data, fonts, time zones), for reading. PR_SET_NO_NEW_PRIVS must be set. False: the kernel does
// not do it and nothing has changed.
[[nodiscard]] bool EnterLandlock();

} // namespace workers
