// The desktop's trash, by the rules that all desktops share.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/SystemError.h"

#include <QString>

namespace platform {

struct TrashOutcome {
    SystemError error;
    /// This place has no trash that the entry could be moved to: a network share, a disk that may
    /// not be written to at its top. It is where it was; only removing for good is left.
    bool noTrash = false;
    QString trashed; ///< machine path in the trash

    [[nodiscard]] bool Ok() const { return error.Ok() && !noTrash; }
};

/// Moves a file, a link or a folder with all below it to the trash of its disk: the one in the home
/// folder, ".Trash/UID" or ".Trash-UID" at the top of the disk. Never copies, so it is quick, and
/// done or not done. Names may hold any bytes. On a network share a trash is used when there is one
/// and never made. A failing move (no rights to the folder) leaves no trace in the trash.
[[nodiscard]] TrashOutcome MoveToTrash(const QString& path);

} // namespace platform
