// Locks on the file beside the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/IndexLock.h"

#include "engine/index/IndexFile.h"

#include <fcntl.h>
#include <sys/file.h>
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

int TakeFor(int file, int tries) {
    while (flock(file, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK || --tries == 0)
            return errno;
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
        m_holds = flock(m_file, LOCK_SH | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

ReaderHold::~ReaderHold() {
    if (m_file >= 0)
        close(m_file);
}

} // namespace engine
