// Answers for the C library where a share would answer differently.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/platform/PretendedShare.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace platform_test {
namespace {

std::atomic<bool> g_inForce = false;
std::atomic<PretendedShare::Locks> g_locks = PretendedShare::Locks::Work;

} // namespace

PretendedShare::PretendedShare(Locks locks) {
    g_locks = locks;
    g_inForce = true;
}

PretendedShare::~PretendedShare() {
    g_inForce = false;
    g_locks = Locks::Work;
}

} // namespace platform_test

// In place of the C library's, for the program and all libraries.
extern "C" int statfs64(const char* path, struct statfs64* about) {
    constexpr decltype(about->f_type) kNfs = 0x6969;
    const auto result = static_cast<int>(syscall(SYS_statfs, path, about));
    if (result == 0 && platform_test::g_inForce) {
        about->f_type = kNfs;
    }
    return result;
}

extern "C" int fcntl64(int file, int command, ...) {
    using Locks = platform_test::PretendedShare::Locks;
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    const Locks locks = platform_test::g_locks;
    if (locks != Locks::Work && command == F_OFD_SETLK) {
        errno = ENOLCK;
        return locks == Locks::Granted ? 0 : -1;
    }
    return static_cast<int>(syscall(SYS_fcntl, file, command, argument));
}
