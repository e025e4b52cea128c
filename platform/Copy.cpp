// Copying and moving one file, link or folder entry, with all that belongs to it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Copy.h"

#include "platform/CopyContent.h"
#include "platform/Draft.h"
#include "platform/Names.h"
#include "platform/Rename.h"

#include <QRandomGenerator>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {

OwnStatus FromStat(const struct stat& status) {
    OwnStatus own;
    own.kind = S_ISREG(status.st_mode)   ? OwnKind::File
               : S_ISDIR(status.st_mode) ? OwnKind::Folder
               : S_ISLNK(status.st_mode) ? OwnKind::Link
                                         : OwnKind::Special;
    own.size = status.st_size;
    own.allocated = status.st_blocks * 512LL;
    own.modifiedNs = status.st_mtim.tv_sec * 1'000'000'000LL + status.st_mtim.tv_nsec;
    own.device = status.st_dev;
    own.number = status.st_ino;
    return own;
}

CopyOutcome AtTarget(const SystemError& error) {
    return {error, true};
}

CopyOutcome LastAtSource() {
    return {SystemError::Last(), false};
}

// Whether the name still stands for what the person agreed to lose.
SystemError CheckReplaced(const QString& to, const OwnStatus& agreed) {
    SystemError error;
    const std::optional<OwnStatus> now = OwnStatusOf(to, &error);
    if (!now) {
        return error.code == ENOENT ? SystemError() : error;
    }
    const bool fits =
        now->IsUnchanged(agreed) && (now->kind == OwnKind::File || now->kind == OwnKind::Link);
    return fits ? SystemError() : SystemError::Of(EEXIST);
}

// The source as it was opened must be the source as it is left.
bool HasChanged(int file, const struct stat& before) {
    struct stat now {};
    return fstat(file, &now) != 0 || !FromStat(now).IsUnchanged(FromStat(before));
}

SystemError VerifySize(int file, qint64 size) {
    struct stat status {};
    if (fstat(file, &status) != 0) {
        return SystemError::Last();
    }
    return status.st_size == size ? SystemError() : SystemError::Of(EIO);
}

} // namespace

std::optional<OwnStatus> OwnStatusOf(const QString& path, SystemError* error) {
    struct stat status {};
    const bool found = lstat(EncodeName(path).constData(), &status) == 0;
    if (error) {
        *error = found ? SystemError() : SystemError::Last();
    }
    return found ? std::optional(FromStat(status)) : std::nullopt;
}

FileCopy::FileCopy() : m_draft(std::make_unique<Draft>()) {}
FileCopy::~FileCopy() = default;

CopyOutcome FileCopy::Fill(const QString& from, const QString& to, const CopyOptions& options) {
    // No link is followed and no pipe waited for, even when one took the file's place just now.
    const FileDescriptor source(open(EncodeName(from).constData(),
                                     O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!source.IsOpen() || fstat(source.Number(), &status) != 0) {
        return LastAtSource();
    }
    if (!S_ISREG(status.st_mode)) {
        return {SystemError::Of(EINVAL), false};
    }
    SystemError error = m_draft->Create(EncodeName(to), 0600, Draft::Kind::Nameless);
    if (!error.Ok()) {
        return AtTarget(error);
    }
    CopyOutcome outcome =
        CopyContent(source.Number(), m_draft->Number(), status.st_size, options.progress);
    if (!outcome.Ok()) {
        return outcome;
    }
    if (options.forMove && HasChanged(source.Number(), status)) {
        return {SystemError::Of(ESTALE), false};
    }
    error = CopyAttributes(source.Number(), m_draft->Number(), status, options.forMove);
    if (error.Ok() && options.forMove) {
        error = VerifySize(m_draft->Number(), status.st_size);
    }
    return AtTarget(error);
}

bool FileCopy::SyncDisk() const {
    // Far disks tell of lost writes only when each file is closed.
    return m_draft->IsNameless() && syncfs(m_draft->Number()) == 0;
}

SystemError FileCopy::Sync() {
    return m_draft->Finish();
}

SystemError FileCopy::Place(const QString& to, const CopyOptions& options, bool sync) {
    if (!options.replaces) {
        return m_draft->TakeNewName(EncodeName(to), sync);
    }
    const SystemError error = CheckReplaced(to, *options.replaces);
    return error.Ok() ? m_draft->TakePlaceOf(EncodeName(to), sync) : error;
}

CopyOutcome CopyFileEntry(const QString& from, const QString& to, const CopyOptions& options) {
    FileCopy copy;
    const CopyOutcome outcome = copy.Fill(from, to, options);
    if (!outcome.Ok()) {
        return outcome;
    }
    const SystemError error = copy.Sync();
    return AtTarget(error.Ok() ? copy.Place(to, options, options.forMove) : error);
}

CopyOutcome CopyLinkEntry(const QString& from, const QString& to, const CopyOptions& options) {
    char text[PATH_MAX];
    struct stat status {};
    const QByteArray source = EncodeName(from);
    const ssize_t length = readlink(source.constData(), text, sizeof text - 1);
    if (length < 0 || lstat(source.constData(), &status) != 0) {
        return LastAtSource();
    }
    text[length] = '\0';
    QByteArray target = EncodeName(to);
    if (options.replaces) {
        const SystemError error = CheckReplaced(to, *options.replaces);
        if (!error.Ok()) {
            return AtTarget(error);
        }
        const quint64 number = QRandomGenerator::system()->generate64();
        target = FolderOf(target) + "/.vms-" + QByteArray::number(number, 36) + ".tmp";
    }
    if (symlink(text, target.constData()) != 0) {
        return AtTarget(SystemError::Last());
    }
    const timespec times[2] = {status.st_atim, status.st_mtim};
    // Some file systems keep no times of links: nothing that anybody would miss.
    (void)utimensat(AT_FDCWD, target.constData(), times, AT_SYMLINK_NOFOLLOW);
    if (options.replaces && rename(target.constData(), EncodeName(to).constData()) != 0) {
        const SystemError error = SystemError::Last();
        unlink(target.constData());
        return AtTarget(error);
    }
    return options.forMove ? AtTarget(SyncFolder(FolderOf(target))) : CopyOutcome();
}

SystemError MakeFolder(const QString& path, unsigned mode) {
    return mkdir(EncodeName(path).constData(), mode) == 0 ? SystemError() : SystemError::Last();
}

CopyOutcome FinishFolder(const QString& from, const QString& to, bool forMove) {
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW;
    const FileDescriptor source(open(EncodeName(from).constData(), kFlags));
    struct stat status {};
    if (!source.IsOpen() || fstat(source.Number(), &status) != 0) {
        return LastAtSource();
    }
    const FileDescriptor target(open(EncodeName(to).constData(), kFlags));
    if (!target.IsOpen()) {
        return AtTarget(SystemError::Last());
    }
    const SystemError error = CopyAttributes(source.Number(), target.Number(), status, forMove);
    const bool failed =
        error.Ok() && fsync(target.Number()) != 0 && errno != EINVAL && errno != ENOTSUP;
    return AtTarget(failed ? SystemError::Last() : error);
}

SystemError MoveEntry(const QString& from, const QString& to, const CopyOptions& options) {
    if (!options.replaces) {
        return RenameToNewName(EncodeName(from), EncodeName(to));
    }
    if (const SystemError error = CheckReplaced(to, *options.replaces); !error.Ok()) {
        return error;
    }
    return rename(EncodeName(from).constData(), EncodeName(to).constData()) == 0
               ? SystemError()
               : SystemError::Last();
}

SystemError RemoveEntry(const QString& path, bool isFolder) {
    const QByteArray bytes = EncodeName(path);
    const int done = isFolder ? rmdir(bytes.constData()) : unlink(bytes.constData());
    return done == 0 || errno == ENOENT ? SystemError() : SystemError::Last();
}

bool IsWithin(const QString& folder, const QString& path) {
    const std::optional<OwnStatus> outer = OwnStatusOf(path);
    char real[PATH_MAX];
    if (!outer || outer->kind != OwnKind::Folder ||
        !realpath(EncodeName(folder).constData(), real)) {
        return false;
    }
    for (QByteArray part = real;; part = FolderOf(part)) {
        const std::optional<OwnStatus> status = OwnStatusOf(DecodeName(part));
        if (status && status->IsSameEntry(*outer)) {
            return true;
        }
        if (part == "/") {
            return false;
        }
    }
}

} // namespace platform
