// A new file that gets its name only when it is whole and safe on the disk.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Draft.h"

#include "platform/Rename.h"

#include <QRandomGenerator>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

namespace {

// The target's own name may be as long as names can be: it has no place in this one.
QByteArray TemporaryName(const QByteArray& folder) {
    const quint64 number = QRandomGenerator::system()->generate64();
    return folder + "/.vms-" + QByteArray::number(number, 36) + ".tmp";
}

// A nameless file gets its name through the process's list of open files.
bool CanNameLater() {
    static const bool can = access("/proc/self/fd", X_OK) == 0;
    return can;
}

} // namespace

QByteArray FolderOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? QByteArray(".") : slash == 0 ? QByteArray("/") : path.left(slash);
}

SystemError SyncFolder(const QByteArray& folder) {
    const FileDescriptor opened(open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const bool failed = opened.IsOpen() && fsync(opened.Number()) != 0 && errno != EINVAL &&
                        errno != ENOTSUP && errno != EROFS;
    return failed ? SystemError::Last() : SystemError();
}

Draft::~Draft() {
    if (!m_path.isEmpty()) {
        unlink(m_path.constData());
    }
}

SystemError Draft::Create(const QByteArray& target, mode_t mode, Kind kind) {
    const QByteArray folder = FolderOf(target);
    if (kind == Kind::Nameless && CanNameLater()) {
        m_file = FileDescriptor(open(folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
        m_nameless = m_file.IsOpen();
    }
    return m_nameless ? SystemError() : CreateNamed(folder, mode);
}

SystemError Draft::CreateNamed(const QByteArray& folder, mode_t mode) {
    do {
        const QByteArray path = TemporaryName(folder);
        m_file =
            FileDescriptor(open(path.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        if (m_file.IsOpen()) {
            m_path = path;
            return {};
        }
    } while (errno == EEXIST);
    return SystemError::Last();
}

SystemError Draft::Write(const char* bytes, qint64 size) const {
    while (size > 0) {
        const ssize_t written = write(m_file.Number(), bytes, static_cast<size_t>(size));
        if (written < 0 && errno != EINTR) {
            return SystemError::Last();
        }
        bytes += std::max<ssize_t>(written, 0);
        size -= std::max<ssize_t>(written, 0);
    }
    return {};
}

SystemError Draft::Finish() {
    if (fsync(m_file.Number()) != 0) {
        return SystemError::Last();
    }
    // Closed, a nameless file would be gone.
    return m_nameless ? SystemError() : m_file.Close();
}

SystemError Draft::TakePlaceOf(const QByteArray& target, bool sync) {
    if (m_nameless) {
        if (const SystemError error = GiveTemporaryName(FolderOf(target)); !error.Ok()) {
            return error;
        }
    }
    return rename(m_path.constData(), target.constData()) == 0 ? Placed(target, sync)
                                                               : SystemError::Last();
}

SystemError Draft::TakeNewName(const QByteArray& target, bool sync) {
    if (m_nameless) {
        const SystemError error = LinkNameless(target);
        return error.Ok() ? Placed(target, sync) : error;
    }
    const SystemError error = RenameToNewName(m_path, target);
    return error.Ok() ? Placed(target, sync) : error;
}

SystemError Draft::LinkNameless(const QByteArray& target) const {
    const QByteArray self = "/proc/self/fd/" + QByteArray::number(m_file.Number());
    return linkat(AT_FDCWD, self.constData(), AT_FDCWD, target.constData(), AT_SYMLINK_FOLLOW) == 0
               ? SystemError()
               : SystemError::Last();
}

SystemError Draft::GiveTemporaryName(const QByteArray& folder) {
    for (;;) {
        const QByteArray path = TemporaryName(folder);
        const SystemError error = LinkNameless(path);
        if (error.Ok()) {
            m_path = path;
            m_nameless = false;
        }
        if (error.code != EEXIST) {
            return error;
        }
    }
}

SystemError Draft::Placed(const QByteArray& target, bool sync) {
    m_path.clear();
    m_nameless = false;
    return sync ? SyncFolder(FolderOf(target)) : SystemError();
}

} // namespace platform
