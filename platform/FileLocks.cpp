// Asks mount options and tries a lock to find out whether locks can be relied on.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/FileLocks.h"

#include "platform/Files.h"
#include "platform/Names.h"
#include "platform/Temporary.h"

#include <QFileInfo>
#include <cerrno>
#include <fcntl.h>

namespace platform {

namespace {

/// File systems in user space that leave locks to the kernel they run on.
constexpr const char* kLocalLocks[] = {"afs",          "fuse.sshfs",    "fuse.rclone",
                                       "fuse.s3fs",    "fuse.davfs2",   "fuse.gvfsd-fuse",
                                       "fuse.gcsfuse", "fuse.curlftpfs"};

LockTrust SeenHereOnly(const QByteArray& why) {
    return {LockScope::ThisMachine, QString::fromLatin1(why)};
}

/// The mount that a folder lies on; of several on the same place the last counts.
Mount MountOf(const QString& folder) {
    const QByteArray path = EncodeName(folder);
    Mount best;
    for (const Mount& mount : CurrentMounts()) {
        const QByteArray& place = mount.mountPoint;
        const bool covers = place == "/" || path == place || path.startsWith(place + '/');
        if (covers && place.size() >= best.mountPoint.size()) {
            best = mount;
        }
    }
    return best;
}

/// 0, or the errno value of the refusal. Locks of an open file, not of the process: a second
/// descriptor of this very process is then as strange as one of another computer.
int TryLock(const FileDescriptor& file) {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_len = 1;
    return fcntl(file.Number(), F_OFD_SETLK, &lock) == 0 ? 0 : errno;
}

LockTrust TryLocks(const QString& file) {
    const QByteArray path = EncodeName(file);
    const FileDescriptor first(open(path.constData(), O_RDWR | O_CLOEXEC));
    const FileDescriptor second(open(path.constData(), O_RDWR | O_CLOEXEC));
    if (!first.IsOpen() || !second.IsOpen()) {
        return {};
    }
    if (const int refusal = TryLock(first); refusal != 0) {
        return {LockScope::Nowhere, SystemError::Of(refusal).text};
    }
    const int refusal = TryLock(second);
    return {refusal == EAGAIN || refusal == EACCES ? LockScope::Everywhere : LockScope::Nowhere,
            {}};
}

} // namespace

LockTrust LocksAsMounted(const Mount& mount) {
    const QList<QByteArray> options = mount.options.split(',');
    const bool nfs = mount.type == "nfs" || mount.type == "nfs4";
    const bool smb = mount.type == "cifs" || mount.type == "smb3";
    for (const char* option : {"nolock", "local_lock=all", "local_lock=posix"}) {
        if (nfs && options.contains(option)) {
            return SeenHereOnly(option);
        }
    }
    if (smb && options.contains("nobrl")) {
        return SeenHereOnly("nobrl");
    }
    for (const char* type : kLocalLocks) {
        if (mount.type == type) {
            return SeenHereOnly(mount.type);
        }
    }
    return {};
}

LockTrust LocksIn(const QString& folder) {
    if (!IsNetworkFileSystem(folder)) {
        return {};
    }
    const QString real = QFileInfo(folder).canonicalFilePath(); // empty where Qt cannot name it
    const LockTrust mounted = LocksAsMounted(MountOf(real.isEmpty() ? folder : real));
    if (mounted.scope != LockScope::Everywhere) {
        return mounted;
    }
    const CreatedFile file = CreateTemporaryFile(folder);
    if (!file.error.Ok()) {
        return {};
    }
    const LockTrust tried = TryLocks(file.path);
    (void)RemoveFile(file.path);
    return tried;
}

} // namespace platform
