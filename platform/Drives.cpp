// Picks the drives out of the mount table and finds their labels.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Drives.h"

#include "platform/Names.h"

#include <QDir>
#include <QFileInfo>
#include <map>

namespace platform {

namespace {

template <std::size_t N> bool IsOneOf(const QByteArray& text, const char* const (&list)[N]) {
    return std::any_of(std::begin(list), std::end(list),
                       [&](const char* each) { return text == each; });
}

bool IsNetwork(const Mount& mount) {
    static constexpr const char* kTypes[] = {
        "nfs",   "nfs4",       "cifs",        "smb3",        "ncpfs",
        "9p",    "virtiofs",   "vboxsf",      "afs",         "ceph",
        "davfs", "fuse.sshfs", "fuse.rclone", "fuse.davfs2", "fuse.glusterfs"};
    return !mount.share.isEmpty() || IsOneOf(mount.type, kTypes);
}

/// Places where the system keeps its own, whatever is mounted there.
bool IsSystemPlace(const QByteArray& path) {
    static constexpr const char* kFolders[] = {"boot", "dev", "efi", "etc", "proc",
                                               "snap", "sys", "tmp", "usr", "var"};
    const QByteArray first = path.mid(1, path.indexOf('/', 1) - 1);
    return IsOneOf(path.indexOf('/', 1) < 0 ? path.mid(1) : first, kFolders) ||
           (path.startsWith("/run/") && !path.startsWith("/run/media/"));
}

bool IsDrive(const Mount& mount) {
    if (mount.mountPoint == "/") {
        return true;
    }
    static constexpr const char* kPools[] = {"btrfs", "zfs", "bcachefs", "fuseblk"};
    const bool disk = (mount.source.startsWith("/dev/") && mount.type != "squashfs") ||
                      IsOneOf(mount.type, kPools);
    return (disk || IsNetwork(mount)) && !IsSystemPlace(mount.mountPoint);
}

/// "My\x20disk", as the device manager writes names.
QString Unescape(const QString& name) {
    QString text;
    for (qsizetype i = 0; i < name.size(); ++i) {
        bool isNumber = false;
        const auto code = name.mid(i, 2) == QLatin1String("\\x")
                              ? name.mid(i + 2, 2).toUShort(&isNumber, 16)
                              : ushort{0};
        text += isNumber ? QChar(code) : name[i];
        i += isNumber ? 3 : 0;
    }
    return text;
}

QHash<QByteArray, QString> CurrentLabels() {
    QHash<QByteArray, QString> labels;
    const QDir folder(QStringLiteral("/dev/disk/by-label"));
    for (const QFileInfo& link : folder.entryInfoList(QDir::System | QDir::Files)) {
        labels[link.symLinkTarget().toUtf8()] = Unescape(link.fileName());
    }
    return labels;
}

} // namespace

std::vector<Drive> DrivesOf(const std::vector<Mount>& mounts,
                            const QHash<QByteArray, QString>& labels) {
    std::map<QByteArray, Drive> drives; // of several on one place the last is the one seen
    for (const Mount& mount : mounts) {
        drives.erase(mount.mountPoint);
        if (IsDrive(mount)) {
            Drive drive{DecodeName(mount.mountPoint), labels.value(mount.source), IsNetwork(mount)};
            if (drive.label.isEmpty()) {
                drive.label = drive.path.section(u'/', -1);
            }
            drives[mount.mountPoint] = drive;
        }
    }
    std::vector<Drive> list;
    for (auto& [path, drive] : drives) {
        list.push_back(std::move(drive));
    }
    return list;
}

std::vector<Drive> CurrentDrives() {
    return DrivesOf(CurrentMounts(), CurrentLabels());
}

} // namespace platform
