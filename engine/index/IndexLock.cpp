// Locks on the file beside the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/IndexLock.h"

#include "engine/index/IndexFile.h"
#include "engine/index/Paths.h"
#include "platform/FileLocks.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

namespace engine {
namespace {

constexpr int kTries = 20;
constexpr auto kPause = std::chrono::milliseconds(50);

std::string LockPath(const std::string& indexPath) {
    return indexPath + ".lock";
}

// 0, or the errno value of the refusal; EWOULDBLOCK: somebody else has it.
int Lock(int file, short kind) {
    struct flock lock {};
    lock.l_type = kind;
    lock.l_whence = SEEK_SET; // all of the file
    if (fcntl(file, F_OFD_SETLK, &lock) == 0)
        return 0;
    return errno == EACCES ? EWOULDBLOCK : errno;
}

int TakeFor(int file, int tries) {
    for (int reason = 0; (reason = Lock(file, F_WRLCK)) != 0;) {
        if (reason != EWOULDBLOCK || --tries == 0)
            return reason;
        std::this_thread::sleep_for(kPause);
    }
    return 0;
}

} // namespace

WriterLock::WriterLock(const std::string& indexPath) {
    const std::string path = LockPath(indexPath);
    m_file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (m_file < 0)
        throw IndexError(errno == ENOSPC ? IndexFault::DiskFull : IndexFault::NoRights,
                         path + ": " + std::strerror(errno));
    const int reason = TakeFor(m_file, kTries);
    if (reason == 0)
        return;
    close(m_file);
    throw IndexError(reason == EWOULDBLOCK ? IndexFault::Busy : IndexFault::Other,
                     std::strerror(reason));
}

WriterLock::~WriterLock() {
    close(m_file);
}

ReaderHold::ReaderHold(const std::string& indexPath)
    : m_file(open(LockPath(indexPath).c_str(), O_RDONLY | O_CLOEXEC)) {
    if (m_file >= 0)
        m_holds = Lock(m_file, F_RDLCK) != EWOULDBLOCK;
}

void RequireLocks(const std::string& folder) {
    const platform::LockTrust trust = platform::LocksIn(PathText(folder));
    const std::string why = trust.why.isEmpty() ? "" : " (" + trust.why.toStdString() + ")";
    switch (trust.scope) {
    case platform::LockScope::Everywhere:
        return;
    case platform::LockScope::ThisMachine:
        throw IndexError(IndexFault::Other,
                         "other computers do not see the file locks of this share" + why);
    case platform::LockScope::Nowhere:
        throw IndexError(IndexFault::Other, "file locks do not work on this share" + why);
    }
}

ReaderHold::~ReaderHold() {
    if (m_file >= 0)
        close(m_file);
}

} // namespace engine
