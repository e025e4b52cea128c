// Writing files so that a name never holds half a content.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Draft.h"
#include "platform/Files.h"
#include "platform/Names.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace platform {

namespace {

/// Gives the new file the owner, group, mode and access list of
/// the old one, as far as this user may.
SystemError TakeRights(int file, const QByteArray& oldPath, const struct stat& old) {
    mode_t mode = old.st_mode & 07777;
    if (fchown(file, old.st_uid, old.st_gid) != 0 &&
        fchown(file, static_cast<uid_t>(-1), old.st_gid) != 0) {
        // Another group must not get what was granted to the old one, beyond what everybody has.
        mode = (mode & ~mode_t(S_IRWXG)) | (mode & S_IRWXG & ((mode & S_IRWXO) << 3));
        return fchmod(file, mode) == 0 ? SystemError() : SystemError::Last();
    }
    if (fchmod(file, mode) != 0) {
        return SystemError::Last();
    }
    constexpr const char* kAccessList = "system.posix_acl_access";
    char list[4096];
    const ssize_t size = getxattr(oldPath.constData(), kAccessList, list, sizeof list);
    if (size > 0 && fsetxattr(file, kAccessList, list, static_cast<size_t>(size), 0) != 0 &&
        errno != ENOTSUP) {
        return SystemError::Last();
    }
    return {};
}

/// The file behind symbolic links; the path itself when there is none.
SystemError FollowLinks(QByteArray& path) {
    struct stat status {};
    if (lstat(path.constData(), &status) != 0 || !S_ISLNK(status.st_mode)) {
        return {};
    }
    char target[PATH_MAX];
    if (!realpath(path.constData(), target)) {
        return SystemError::Last();
    }
    path = target;
    return {};
}

/// Whether the file may be replaced: what this user may not write stays as it is.
SystemError CheckReplaceable(const QByteArray& path, const struct stat& status) {
    if (!S_ISREG(status.st_mode)) {
        return SystemError::Of(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    return faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) == 0 ? SystemError()
                                                                        : SystemError::Last();
}

SystemError CopyContent(int from, const Draft& to) {
    char buffer[64 * 1024];
    for (;;) {
        const ssize_t got = read(from, buffer, sizeof buffer);
        if (got == 0) {
            return {};
        }
        if (got < 0 && errno != EINTR) {
            return SystemError::Last();
        }
        if (const SystemError error = to.Write(buffer, std::max<ssize_t>(got, 0)); !error.Ok()) {
            return error;
        }
    }
}

} // namespace

SystemError ReplaceFile(const QString& path, const QByteArray& bytes) {
    QByteArray target = EncodeName(path);
    if (target.isEmpty()) {
        return SystemError::Of(ENOENT);
    }
    if (const SystemError error = FollowLinks(target); !error.Ok()) {
        return error;
    }
    struct stat old {};
    const bool isThere = lstat(target.constData(), &old) == 0;
    if (isThere) {
        if (const SystemError error = CheckReplaceable(target, old); !error.Ok()) {
            return error;
        }
    }
    Draft draft;
    SystemError error = draft.Create(target, isThere ? 0600 : 0666);
    if (error.Ok()) {
        error = draft.Write(bytes.constData(), bytes.size());
    }
    if (error.Ok() && isThere) {
        error = TakeRights(draft.Number(), target, old);
    }
    if (error.Ok()) {
        error = draft.Finish();
    }
    return error.Ok() ? draft.TakePlaceOf(target) : error;
}

SystemError CopyToNewFile(const QString& from, const QString& to) {
    const QByteArray target = EncodeName(to);
    if (target.isEmpty()) {
        return SystemError::Of(ENOENT);
    }
    if (Exists(to)) {
        return SystemError::Of(EEXIST);
    }
    SystemError error;
    const FileDescriptor source = OpenForReading(from, &error);
    Draft draft;
    if (error.Ok()) {
        error = draft.Create(target, 0666);
    }
    if (error.Ok()) {
        error = CopyContent(source.Number(), draft);
    }
    if (error.Ok()) {
        error = draft.Finish();
    }
    return error.Ok() ? draft.TakeNewName(target) : error;
}

} // namespace platform
