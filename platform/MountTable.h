// The mount table: on which folder a network share lies, and what kind of file system a device is.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

namespace platform {

/// One mounted file system.
struct Mount {
    QByteArray mountPoint; ///< bytes of the machine path
    QByteArray type;       ///< "ext4", "cifs", "nfs4", "fuse.sshfs"
    QString
        share; ///< logical path of what is mounted ("\\server\share\sub"); empty for a local one
    quint64 device = 0; ///< st_dev of files in it
    QByteArray source{};  ///< "/dev/sda1", "//server/share", "server:/export"
    QByteArray options{}; ///< of the file system, by commas: "rw,vers=4.2,local_lock=none"
};

/// Reads text in the form of /proc/self/mountinfo. Lines that are not understood are left out.
[[nodiscard]] std::vector<Mount> ParseMountTable(const QByteArray& text);

/// The mounts of this process now. Read again only after the system says that the table changed.
[[nodiscard]] std::vector<Mount> CurrentMounts();

struct SharePlace {
    QByteArray mountPoint; ///< empty when the share is not mounted
    QString rest; ///< what of the path lies below the mount point, logical, no leading back-slash
};

/// Where a network path lies ("\\SERVER\SHARE\X", any case). The mount that covers most of the path
/// wins, of two on the same folder the later one.
[[nodiscard]] SharePlace FindShare(const std::vector<Mount>& mounts, const QString& networkPath);

} // namespace platform
