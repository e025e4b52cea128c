// Giving a file or folder another name, without ever taking a name from another one.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Rename.h"

#include "platform/Draft.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "platform/Names.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

SystemError PlainRename(const QByteArray& from, const QByteArray& to) {
    return rename(from.constData(), to.constData()) == 0 ? SystemError() : SystemError::Last();
}

// What the folder's new name is given to first is empty, and of our making.
SystemError RenameFolder(const QByteArray& from, const QByteArray& to) {
    if (mkdir(to.constData(), 0700) != 0) {
        return SystemError::Last();
    }
    const SystemError error = PlainRename(from, to);
    if (!error.Ok()) {
        rmdir(to.constData());
    }
    return error;
}

SystemError RenameFile(const QByteArray& from, const QByteArray& to) {
    if (link(from.constData(), to.constData()) == 0) {
        return unlink(from.constData()) == 0 ? SystemError() : SystemError::Last();
    }
    if (errno != EPERM && errno != ENOTSUP && errno != ENOSYS && errno != EMLINK) {
        return SystemError::Last();
    }
    // A file system without second names: hold the name with an empty file.
    const FileDescriptor place(open(to.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!place.IsOpen()) {
        return SystemError::Last();
    }
    const SystemError error = PlainRename(from, to);
    if (!error.Ok()) {
        unlink(to.constData());
    }
    return error;
}

// Whether the folder really holds this spelling.
bool HasSpelling(const QByteArray& path) {
    const FolderListing listing = ListFolder(DecodeName(FolderOf(path)));
    const QString name = DecodeName(path.mid(path.lastIndexOf('/') + 1));
    return !listing.error.Ok() ||
           std::any_of(listing.entries.begin(), listing.entries.end(),
                       [&](const FolderEntry& entry) { return entry.name == name; });
}

bool IsSameEntry(const QByteArray& a, const QByteArray& b) {
    struct stat first {};
    struct stat second {};
    return lstat(a.constData(), &first) == 0 && lstat(b.constData(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

} // namespace

SystemError RenameToNewName(const QByteArray& from, const QByteArray& to) {
    if (renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0) {
        return {};
    }
    // Older network file systems do not know the flag.
    if (errno != EINVAL && errno != ENOSYS) {
        return SystemError::Last();
    }
    struct stat status {};
    if (lstat(from.constData(), &status) != 0) {
        return SystemError::Last();
    }
    return S_ISDIR(status.st_mode) ? RenameFolder(from, to) : RenameFile(from, to);
}

SystemError RenameEntry(const QString& from, const QString& to) {
    const QByteArray oldPath = EncodeName(from);
    const QByteArray newPath = EncodeName(to);
    if (oldPath.isEmpty() || newPath.isEmpty()) {
        return SystemError::Of(ENOENT);
    }
    if (oldPath == newPath) {
        return {};
    }
    const SystemError error = RenameToNewName(oldPath, newPath);
    const bool onlyCase = error.code == EEXIST && Capitals(from) == Capitals(to) &&
                          IsSameEntry(oldPath, newPath) && !HasSpelling(newPath);
    return onlyCase ? PlainRename(oldPath, newPath) : error;
}

} // namespace platform
