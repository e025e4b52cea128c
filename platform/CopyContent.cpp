// The bytes of a file, and what the system keeps beside them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/CopyContent.h"

#include <QByteArray>
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

constexpr qint64 kPortion = 4 * 1024 * 1024;
// So much may wait in memory for a slow disk: the last sync, which nobody can cancel, stays short.
constexpr qint64 kUnsynced = 32 * 1024 * 1024;

CopyOutcome AtSource(int code) {
    return {SystemError::Of(code), false};
}

CopyOutcome AtTarget(int code) {
    return {SystemError::Of(code), true};
}

class ContentCopy {
  public:
    ContentCopy(int from, int to, const std::function<bool(qint64)>& progress)
        : m_from(from), m_to(to), m_progress(progress) {}

    CopyOutcome Run(qint64 size) {
        if (size > 0 && ioctl(m_to, FICLONE, m_from) == 0) {
            return Advance(size) ? CopyOutcome() : AtTarget(ECANCELED);
        }
        for (off_t at = 0; at < size;) {
            off_t data = lseek(m_from, at, SEEK_DATA);
            if (data < 0 && errno == ENXIO) {
                break; // nothing but a hole up to the end
            }
            off_t hole = data < 0 ? -1 : lseek(m_from, data, SEEK_HOLE);
            if (data < 0 || hole < 0) {
                data = at; // a file system that does not tell of holes
                hole = size;
            }
            if (!Advance(data - at)) {
                return AtTarget(ECANCELED);
            }
            at = data;
            const CopyOutcome outcome = Stretch(at, std::min<off_t>(hole, size));
            if (!outcome.Ok() || m_ended) {
                return outcome;
            }
        }
        return ftruncate(m_to, size) == 0 ? CopyOutcome() : AtTarget(errno);
    }

  private:
    // Copies from `at` to `end`, and moves `at` there.
    CopyOutcome Stretch(off_t& at, off_t end) {
        while (at < end) {
            const auto want = static_cast<size_t>(std::min<qint64>(kPortion, end - at));
            qint64 done = 0;
            const CopyOutcome outcome =
                m_byKernel ? ByKernel(at, want, done) : ByHand(at, want, done);
            if (!outcome.Ok()) {
                return outcome;
            }
            if (done == 0 && m_byKernel) {
                m_byKernel = false; // file systems that make their content up answer nothing here
                continue;
            }
            if (done == 0) {
                m_ended = true; // somebody has cut the file meanwhile
                return {};
            }
            at += done;
            WriteOut(at);
            if (!Advance(done)) {
                return AtTarget(ECANCELED);
            }
        }
        return {};
    }

    CopyOutcome ByKernel(off_t at, size_t want, qint64& done) {
        off_t in = at;
        off_t out = at;
        const ssize_t got = copy_file_range(m_from, &in, m_to, &out, want, 0);
        if (got >= 0) {
            done = got;
            return {};
        }
        if (errno == EINTR) {
            return ByHand(at, want, done);
        }
        if (errno == ENOSPC || errno == EDQUOT || errno == EFBIG) {
            return AtTarget(errno);
        }
        // Between file systems, and for whatever else the kernel does not do by itself. A failing
        // disk fails once more, and then tells which side it is.
        m_byKernel = false;
        return ByHand(at, want, done);
    }

    CopyOutcome ByHand(off_t at, size_t want, qint64& done) {
        m_buffer.resize(std::min<size_t>(want, 1024 * 1024));
        ssize_t got = 0;
        do {
            got = pread(m_from, m_buffer.data(), m_buffer.size(), at);
        } while (got < 0 && errno == EINTR);
        if (got < 0) {
            return AtSource(errno);
        }
        while (done < got) {
            const ssize_t put =
                pwrite(m_to, m_buffer.data() + done, static_cast<size_t>(got - done), at + done);
            if (put < 0 && errno != EINTR) {
                return AtTarget(errno);
            }
            done += std::max<ssize_t>(put, 0);
        }
        return {};
    }

    // Keeps the disk writing while the copy goes on.
    void WriteOut(off_t at) {
        if (at - m_started < kUnsynced) {
            return;
        }
        sync_file_range(m_to, m_started, at - m_started, SYNC_FILE_RANGE_WRITE);
        if (m_started > m_waited) {
            sync_file_range(m_to, m_waited, m_started - m_waited,
                            SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE |
                                SYNC_FILE_RANGE_WAIT_AFTER);
        }
        m_waited = m_started;
        m_started = at;
    }

    [[nodiscard]] bool Advance(qint64 bytes) const { return !m_progress || m_progress(bytes); }

    int m_from;
    int m_to;
    const std::function<bool(qint64)>& m_progress;
    std::vector<char> m_buffer;
    bool m_byKernel = true;
    bool m_ended = false;
    off_t m_started = 0;
    off_t m_waited = 0;
};

// What another file system, or a user without special rights, does not take.
bool MayBeLost(int code) {
    return code == ENOTSUP || code == EPERM || code == EACCES || code == EINVAL || code == ENODATA;
}

SystemError CopyExtended(int from, int to) {
    const ssize_t size = flistxattr(from, nullptr, 0);
    if (size <= 0) {
        return {};
    }
    QByteArray names(size, '\0');
    names.resize(std::max<ssize_t>(flistxattr(from, names.data(), static_cast<size_t>(size)), 0));
    for (const QByteArray& name : names.split('\0')) {
        // Labels and privileges of the system are for the new place to give.
        const bool isSystems = name.startsWith("security.") || name.startsWith("trusted.");
        const ssize_t length =
            name.isEmpty() || isSystems ? -1 : fgetxattr(from, name.constData(), nullptr, 0);
        if (length < 0) {
            continue;
        }
        QByteArray value(length, '\0');
        const ssize_t got =
            fgetxattr(from, name.constData(), value.data(), static_cast<size_t>(length));
        if (got >= 0 &&
            fsetxattr(to, name.constData(), value.constData(), static_cast<size_t>(got), 0) != 0 &&
            !MayBeLost(errno)) {
            return SystemError::Last();
        }
    }
    return {};
}

} // namespace

CopyOutcome CopyContent(int from, int to, qint64 size,
                        const std::function<bool(qint64)>& progress) {
    return ContentCopy(from, to, progress).Run(size);
}

SystemError CopyAttributes(int from, int to, const struct stat& status, bool withOwner) {
    mode_t mode = status.st_mode & 07777;
    const bool owned = withOwner && (fchown(to, status.st_uid, status.st_gid) == 0 ||
                                     fchown(to, static_cast<uid_t>(-1), status.st_gid) == 0);
    if (!owned || (withOwner && fchown(to, status.st_uid, static_cast<gid_t>(-1)) != 0)) {
        mode &= ~mode_t(S_ISUID | S_ISGID); // not the rights of somebody else
        struct stat made {};
        if (S_ISDIR(status.st_mode) && fstat(to, &made) == 0) {
            mode |= made.st_mode & S_ISGID; // a shared folder hands its group down
        }
    }
    if (const SystemError error = CopyExtended(from, to); !error.Ok()) {
        return error;
    }
    if (fchmod(to, mode) != 0 && !MayBeLost(errno)) {
        return SystemError::Last();
    }
    const timespec times[2] = {status.st_atim, status.st_mtim};
    return futimens(to, times) == 0 || MayBeLost(errno) ? SystemError() : SystemError::Last();
}

} // namespace platform
