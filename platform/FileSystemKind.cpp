// What the file system under a path is: near or far, how much room, which device.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/FileSystemKind.h"

#include "platform/Files.h"
#include "platform/MountTable.h"
#include "platform/Names.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>

namespace platform {

namespace {

/// The path itself or the deepest folder above it that exists.
QByteArray DeepestExisting(const QString& path) {
    QByteArray part = EncodeName(path);
    struct stat status {};
    while (!part.isEmpty() && stat(part.constData(), &status) != 0) {
        const qsizetype slash = part.lastIndexOf('/');
        part = slash > 0                       ? part.left(slash)
               : slash == 0 && part.size() > 1 ? QByteArray("/")
                                               : QByteArray();
    }
    return part;
}

/// A disk that a program in user space drives (as some do for foreign file systems) is "fuseblk".
bool IsDrivenDisk(const QByteArray& path) {
    struct stat status {};
    if (stat(path.constData(), &status) != 0) {
        return false;
    }
    const std::vector<Mount> mounts = CurrentMounts();
    return std::any_of(mounts.begin(), mounts.end(), [&](const Mount& mount) {
        return mount.device == status.st_dev && mount.type == "fuseblk";
    });
}

} // namespace

bool IsNetworkMagic(long type) {
    // The numbers are those of the kernel's statfs; the type is signed or not by architecture.
    switch (static_cast<unsigned>(type)) {
    case 0x6969:     // NFS
    case 0x517B:     // SMB
    case 0xFF534D42: // CIFS
    case 0xFE534D42: // SMB 2 and 3
    case 0x564C:     // NCP
    case 0x73757245: // Coda
    case 0x5346414F: // AFS
    case 0x6B414653: // AFS of the kernel
    case 0x00C36400: // Ceph
    case 0x01021997: // 9P, folders of a host machine
    case 0x0BD00BD0: // Lustre
    case 0x47504653: // GPFS
    case 0x7461636F: // OCFS2
    case 0x01161970: // GFS2
    case kFuseMagic:
        return true;
    default:
        return false;
    }
}

bool IsNetworkFileSystem(const QString& path) {
    const QByteArray existing = DeepestExisting(path);
    struct statfs system {};
    if (statfs(existing.constData(), &system) != 0 || !IsNetworkMagic(system.f_type)) {
        return false;
    }
    return system.f_type != kFuseMagic || !IsDrivenDisk(existing);
}

qint64 FreeSpace(const QString& path) {
    struct statvfs system {};
    if (statvfs(DeepestExisting(path).constData(), &system) != 0) {
        return -1;
    }
    return static_cast<qint64>(system.f_bavail) * static_cast<qint64>(system.f_frsize);
}

std::optional<quint64> DeviceOf(const QString& path) {
    struct stat status {};
    if (stat(EncodeName(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    return status.st_dev;
}

} // namespace platform
