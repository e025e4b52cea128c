// What the machine tells about files and folders, reading and removing.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Files.h"

#include "platform/Names.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

void Tell(SystemError* error, const SystemError& what) {
    if (error) {
        *error = what;
    }
}

FileStatus FromStat(const struct stat& status, bool throughLink) {
    FileStatus result;
    if (S_ISDIR(status.st_mode)) {
        result.kind = throughLink ? EntryKind::FolderLink : EntryKind::Folder;
    } else if (S_ISREG(status.st_mode)) {
        result.kind = EntryKind::File;
    }
    result.size = status.st_size;
    result.modifiedNs = status.st_mtim.tv_sec * 1'000'000'000LL + status.st_mtim.tv_nsec;
    result.device = status.st_dev;
    result.number = status.st_ino;
    result.mode = status.st_mode & 07777;
    return result;
}

/// The status of a name in an open folder (or of a whole path, with AT_FDCWD); of a link that leads
/// nowhere the link's own. False with errno set when there is no such name.
bool StatusAt(int folder, const char* name, FileStatus& result) {
    struct stat own {};
    if (fstatat(folder, name, &own, AT_SYMLINK_NOFOLLOW) != 0) {
        return false;
    }
    struct stat target {};
    const bool isLink = S_ISLNK(own.st_mode);
    if (isLink && fstatat(folder, name, &target, 0) == 0) {
        result = FromStat(target, true);
    } else {
        result = FromStat(own, false);
    }
    return true;
}

EntryKind KindOf(unsigned char type) {
    return type == DT_DIR ? EntryKind::Folder : type == DT_REG ? EntryKind::File : EntryKind::Other;
}

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

// Every name of a folder but "." and "..", until `visit` answers false.
template <class Visit> SystemError VisitNames(const QString& path, Visit&& visit) {
    const std::unique_ptr<DIR, CloseFolder> folder(opendir(EncodeName(path).constData()));
    if (!folder) {
        return SystemError::Last();
    }
    for (;;) {
        errno = 0;
        const dirent* found = readdir(folder.get());
        if (!found) {
            return SystemError::Last();
        }
        const bool isName =
            std::strcmp(found->d_name, ".") != 0 && std::strcmp(found->d_name, "..") != 0;
        if (isName && !visit(folder.get(), *found)) {
            return {};
        }
    }
}

} // namespace

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
        Close();
        m_number = other.Release();
    }
    return *this;
}

int FileDescriptor::Release() {
    return std::exchange(m_number, -1);
}

SystemError FileDescriptor::Close() {
    const int number = Release();
    // An interrupted close has closed all the same: closing again could hit another thread's file.
    return number < 0 || close(number) == 0 || errno == EINTR ? SystemError() : SystemError::Last();
}

bool Exists(const QString& path) {
    struct stat status {};
    return lstat(EncodeName(path).constData(), &status) == 0;
}

bool IsFile(const QString& path) {
    const auto status = StatusOf(path);
    return status && status->kind == EntryKind::File;
}

bool IsFolder(const QString& path) {
    const auto status = StatusOf(path);
    return status && status->IsFolder();
}

bool IsWritableFolder(const QString& path) {
    return IsFolder(path) &&
           faccessat(AT_FDCWD, EncodeName(path).constData(), W_OK | X_OK, AT_EACCESS) == 0;
}

std::optional<FileStatus> StatusOf(const QString& path, SystemError* error) {
    FileStatus status;
    if (!StatusAt(AT_FDCWD, EncodeName(path).constData(), status)) {
        Tell(error, SystemError::Last());
        return std::nullopt;
    }
    Tell(error, {});
    return status;
}

FolderListing ListFolder(const QString& path) {
    FolderListing listing;
    listing.error = VisitFolder(path, [&](FolderEntry entry) {
        listing.entries.push_back(std::move(entry));
        return true;
    });
    return listing;
}

SystemError VisitFolder(const QString& path, const std::function<bool(FolderEntry)>& visit) {
    return VisitNames(path, [&](DIR* folder, const dirent& found) {
        FolderEntry entry;
        if (!StatusAt(dirfd(folder), found.d_name, entry)) {
            if (errno == ENOENT) {
                return true;
            }
            entry.kind = KindOf(found.d_type);
        }
        entry.name = DecodeName(found.d_name);
        return visit(std::move(entry));
    });
}

SystemError VisitSubFolders(const QString& path,
                            const std::function<bool(const QString& name)>& visit) {
    constexpr int kFilesBetweenCalls = 100;
    int files = 0;
    return VisitNames(path, [&](DIR* folder, const dirent& found) {
        bool isFolder = found.d_type == DT_DIR;
        if (found.d_type == DT_LNK || found.d_type == DT_UNKNOWN) {
            FileStatus status;
            isFolder = StatusAt(dirfd(folder), found.d_name, status) && status.IsFolder();
        }
        if (isFolder) {
            return visit(DecodeName(found.d_name));
        }
        return ++files % kFilesBetweenCalls != 0 || visit({});
    });
}

FileDescriptor OpenForReading(const QString& path, SystemError* error) {
    // Without O_NONBLOCK the opening of a pipe would wait for somebody who writes.
    FileDescriptor file(
        open(EncodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0) {
        Tell(error, SystemError::Last());
        return {};
    }
    if (!S_ISREG(status.st_mode)) {
        Tell(error, SystemError::Of(S_ISDIR(status.st_mode) ? EISDIR : EINVAL));
        return {};
    }
    Tell(error, {});
    return file;
}

FileContent ReadFile(const QString& path) {
    FileContent content;
    const FileDescriptor file = OpenForReading(path, &content.error);
    if (!file.IsOpen()) {
        return content;
    }
    char buffer[64 * 1024];
    for (;;) {
        const ssize_t got = read(file.Number(), buffer, sizeof buffer);
        if (got > 0) {
            content.bytes.append(buffer, got);
        } else if (got == 0) {
            return content;
        } else if (errno != EINTR) {
            content.error = SystemError::Last();
            content.bytes.clear();
            return content;
        }
    }
}

SystemError RemoveFile(const QString& path) {
    return unlink(EncodeName(path).constData()) == 0 || errno == ENOENT ? SystemError()
                                                                        : SystemError::Last();
}

SystemError CreateFolders(const QString& path, unsigned mode) {
    const QByteArray whole = EncodeName(path);
    if (whole.isEmpty()) {
        return SystemError::Of(ENOENT);
    }
    for (qsizetype end = 0; end < whole.size();) {
        end = whole.indexOf('/', end + 1);
        end = end < 0 ? whole.size() : end;
        const QByteArray part = whole.left(end);
        struct stat status {};
        if (mkdir(part.constData(), mode) == 0) {
            continue;
        }
        // Above the last part anything is good that can be passed, a
        // read-only file system included.
        const SystemError refused = SystemError::Last();
        if (stat(part.constData(), &status) != 0) {
            return refused;
        }
        if (!S_ISDIR(status.st_mode)) {
            return SystemError::Of(ENOTDIR);
        }
    }
    return {};
}

} // namespace platform
