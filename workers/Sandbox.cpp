// The wall around a worker: what a process that was taken over by a document can still reach.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "workers/Sandbox.h"

#include "workers/Landlock.h"
#include "workers/SyscallFilter.h"

#include <seccomp.h>
#include <sys/prctl.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace workers {

namespace {

#ifdef VELMORA_SANITIZED
constexpr bool kRelaxed = true;
#else
constexpr bool kRelaxed = false;
#endif

void RequireOneThread() {
    std::error_code error;
    const std::filesystem::directory_iterator threads("/proc/self/task", error);
    if (!error && std::distance(threads, {}) > 1)
        throw std::runtime_error("a worker must not have threads of its own");
}

} // namespace

std::string WallsReport::Describe() const {
    std::string text;
    if (systemCalls)
        text = "system calls filtered";
    else
        text = "system calls not filtered (network and programs stay reachable)";
    if (landlock > 0)
        text += "; files guarded by Landlock " + std::to_string(landlock);
    else if (systemCalls)
        text += "; no file can be opened by name";
    else
        text += "; files not guarded";
    if (relaxed)
        text += "; relaxed for sanitizers";
    return text;
}

WallsReport AvailableWalls() {
    // Killing the process is the newest of the actions that the filter uses.
    return {::seccomp_api_get() >= 3, LandlockVersion(), kRelaxed};
}

WallsReport EnterWalls(bool useLandlock) {
    RequireOneThread();
    WallsReport report;
    report.relaxed = kRelaxed;
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return report;
#ifndef VELMORA_SANITIZED // whose reports read /proc
    // No core reaches a collector of crashes: it would hold the document.
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
#endif
    if (useLandlock && EnterLandlock())
        report.landlock = LandlockVersion();
    report.systemCalls =
        EnterSyscallFilter(report.landlock > 0 ? Opening::Reading : Opening::Refused);
    return report;
}

} // namespace workers
