// The desktop's trash, by the rules that all desktops share.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Trash.h"

#include "platform/Draft.h"
#include "platform/Files.h"
#include "platform/Names.h"
#include "platform/Rename.h"

#include <QDateTime>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr const char* kInfoEnding = ".trashinfo";
constexpr int kMostTries = 10'000;

struct TrashFolder {
    QByteArray path;      // empty: there is none
    QByteArray topOfDisk; // paths in its notes are relative to this; empty in the home folder
};

bool StatOf(const QByteArray& path, struct stat& status) {
    return lstat(path.constData(), &status) == 0;
}

// The folder with links resolved, and the last name as it is.
QByteArray RealPath(const QByteArray& path) {
    char real[PATH_MAX];
    if (!realpath(FolderOf(path).constData(), real)) {
        return {};
    }
    const QByteArray folder = real;
    return (folder == "/" ? folder : folder + '/') + path.mid(path.lastIndexOf('/') + 1);
}

QByteArray HomeTrash() {
    QByteArray data = qgetenv("XDG_DATA_HOME");
    if (!data.startsWith('/')) {
        data = qgetenv("HOME") + "/.local/share";
    }
    return data.startsWith('/') ? data + "/Trash" : QByteArray();
}

// A folder of this user's own, closed to others; made when `mayMake`.
bool IsOwnFolder(const QByteArray& path, bool mayMake) {
    if (mayMake) {
        (void)mkdir(path.constData(), 0700);
    }
    struct stat status {};
    return StatOf(path, status) && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

bool HasParts(const QByteArray& trash) {
    return IsOwnFolder(trash + "/files", true) && IsOwnFolder(trash + "/info", true);
}

QByteArray TopOfDisk(const QByteArray& path, dev_t device) {
    QByteArray top = FolderOf(path);
    struct stat status {};
    while (top != "/" && StatOf(FolderOf(top), status) && status.st_dev == device) {
        top = FolderOf(top);
    }
    return top;
}

TrashFolder HomeTrashFor(dev_t device) {
    const QByteArray trash = HomeTrash();
    struct stat status {};
    if (trash.isEmpty() || !CreateFolders(DecodeName(trash), 0700).Ok() ||
        stat(trash.constData(), &status) != 0 || status.st_dev != device || !HasParts(trash)) {
        return {};
    }
    return {trash, {}};
}

TrashFolder DiskTrashFor(const QByteArray& path, dev_t device) {
    const QByteArray top = TopOfDisk(path, device);
    const QByteArray base = top == "/" ? QByteArray() : top;
    const QByteArray user = QByteArray::number(geteuid());
    const bool mayMake = !IsNetworkFileSystem(DecodeName(top));
    // The shared one must be a folder itself and sticky: else anybody could lead it elsewhere.
    struct stat shared {};
    if (StatOf(base + "/.Trash", shared) && S_ISDIR(shared.st_mode) && (shared.st_mode & S_ISVTX)) {
        const QByteArray trash = base + "/.Trash/" + user;
        if (IsOwnFolder(trash, mayMake) && HasParts(trash)) {
            return {trash, base + '/'};
        }
    }
    const QByteArray trash = base + "/.Trash-" + user;
    return IsOwnFolder(trash, mayMake) && HasParts(trash) ? TrashFolder{trash, base + '/'}
                                                          : TrashFolder();
}

QByteArray NoteFor(const QByteArray& path, const TrashFolder& trash) {
    const QByteArray shown =
        path.startsWith(trash.topOfDisk) ? path.mid(trash.topOfDisk.size()) : path;
    const QString now =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
    return "[Trash Info]\nPath=" + shown.toPercentEncoding("/") +
           "\nDeletionDate=" + now.toLatin1() + '\n';
}

// A name for try N ("a.txt", "a.txt.2", …), short enough for its note.
QByteArray TrashName(const QByteArray& name, int number) {
    const QByteArray added = number == 1 ? QByteArray() : '.' + QByteArray::number(number);
    const auto room =
        static_cast<qsizetype>(NAME_MAX) - qsizetype(qstrlen(kInfoEnding)) - added.size();
    return name.left(room) + added;
}

// Makes the note; EEXIST when the name is taken.
SystemError WriteNote(const QByteArray& file, const QByteArray& text) {
    FileDescriptor note(open(file.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!note.IsOpen()) {
        return SystemError::Last();
    }
    const ssize_t written =
        write(note.Number(), text.constData(), static_cast<size_t>(text.size()));
    SystemError error;
    if (written != text.size()) {
        error = written < 0 ? SystemError::Last() : SystemError::Of(ENOSPC);
    } else if (fsync(note.Number()) != 0) {
        error = SystemError::Last();
    }
    if (!error.Ok()) {
        unlink(file.constData());
    }
    return error;
}

TrashOutcome MoveInto(const TrashFolder& trash, const QByteArray& path) {
    const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
    const QByteArray note = NoteFor(path, trash);
    for (int number = 1; number <= kMostTries; ++number) {
        const QByteArray free = TrashName(name, number);
        const QByteArray info = trash.path + "/info/" + free + kInfoEnding;
        SystemError error = WriteNote(info, note);
        if (error.Ok()) {
            const QByteArray place = trash.path + "/files/" + free;
            error = RenameToNewName(path, place);
            if (error.Ok()) {
                return {{}, false, DecodeName(place)};
            }
            unlink(info.constData());
        }
        if (error.code != EEXIST) {
            return {error, false, {}};
        }
    }
    return {SystemError::Of(EEXIST), false, {}};
}

} // namespace

TrashOutcome MoveToTrash(const QString& path) {
    const QByteArray real = RealPath(EncodeName(path));
    struct stat status {};
    if (real.isEmpty() || !StatOf(real, status)) {
        return {SystemError::Last(), false, {}};
    }
    struct stat folder {};
    (void)StatOf(FolderOf(real), folder);
    // A folder on which another disk lies is of that disk, but its name is not. Files are asked by
    // their folder: layered file systems give them other numbers.
    if (S_ISDIR(status.st_mode) && folder.st_dev != status.st_dev) {
        return {SystemError::Of(EBUSY), false, {}};
    }
    // Where the same disk is mounted twice, one trash cannot be reached and the other can.
    for (const bool home : {true, false}) {
        const TrashFolder trash =
            home ? HomeTrashFor(folder.st_dev) : DiskTrashFor(real, folder.st_dev);
        if (trash.path.isEmpty()) {
            continue;
        }
        TrashOutcome outcome = MoveInto(trash, real);
        if (outcome.error.code != EXDEV) {
            return outcome;
        }
    }
    return {{}, true, {}};
}

} // namespace platform
