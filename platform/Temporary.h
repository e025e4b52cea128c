// Temporary files, private to the user.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/Files.h"

namespace platform {

/// The machine path of the user's own temporary folder, without a closing slash: "velmora-UID"
/// under $TMPDIR or /tmp, created when missing. It belongs to this user and is closed to all
/// others, so that a fixed name in it is safe; where somebody else holds that name, a folder of
/// this process is made.
[[nodiscard]] QString TemporaryFolder();

/// Makes an empty file of a new name, "vms" + letters + ".tmp",
/// mode 0600. Nobody removes it but the caller.
[[nodiscard]] CreatedFile CreateTemporaryFile(const QString& folder = TemporaryFolder());

} // namespace platform
