// The mounted file systems that a person would call a drive.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/MountTable.h"

#include <QHash>
#include <QString>
#include <vector>

namespace platform {

struct Drive {
    QString path;         ///< machine path where it is mounted
    QString label;        ///< the volume's label, else the last part of the path; empty for "/"
    bool network = false; ///< lies on another machine
    friend bool operator==(const Drive&, const Drive&) = default;
};

/// Disks, sticks and shares; no system folders, no pseudo file systems. In the order of paths.
/// `labels`: by device as the mount table names it ("/dev/sda1"). Touches none of the drives.
[[nodiscard]] std::vector<Drive> DrivesOf(const std::vector<Mount>& mounts,
                                          const QHash<QByteArray, QString>& labels);

/// Those of this machine now.
[[nodiscard]] std::vector<Drive> CurrentDrives();

} // namespace platform
