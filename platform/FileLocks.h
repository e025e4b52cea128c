// Whether file locks in a folder keep other programs, on other computers too, from writing.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/MountTable.h"

#include <QString>

namespace platform {

enum class LockScope {
    Everywhere,  ///< all who open the file see them
    ThisMachine, ///< other computers on the same share do not see them
    Nowhere      ///< not even another program here does
};

struct LockTrust {
    LockScope scope = LockScope::Everywhere;
    QString why; ///< mount option, kind of file system or the system's words; may be empty
};

/// What can be told of byte-range locks in a folder (machine path). On a local disk they are taken
/// to work. On a share its mount options are read, then one lock is tried twice, which makes a file
/// in the folder for a moment; where none can be made, locks are taken to work, as nothing can be
/// written there anyway. May take as long as the share takes to answer.
[[nodiscard]] LockTrust LocksIn(const QString& folder);

/// What the mount options alone tell.
[[nodiscard]] LockTrust LocksAsMounted(const Mount& mount);

} // namespace platform
