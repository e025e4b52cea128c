// Refuses an archive on a share where file locks cannot be relied on.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/ShareLocks.h"

#include "platform/FileLocks.h"
#include "store/StoreError.h"

namespace velmora {

void RequireShareLocks(const QString& folder) {
    const platform::LockTrust trust = platform::LocksIn(folder);
    switch (trust.scope) {
    case platform::LockScope::Everywhere:
        return;
    case platform::LockScope::ThisMachine:
        throw StoreError(kLocksThisMachine, {folder, trust.why});
    case platform::LockScope::Nowhere:
        throw StoreError(kLocksNowhere, {folder});
    }
}

} // namespace velmora
