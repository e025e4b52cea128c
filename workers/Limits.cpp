// What a worker process may use up: memory, files, processor; and when it goes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "workers/Limits.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <string>
#include <vector>

namespace workers {

namespace {

constexpr rlim_t kDescriptors = 128;
// Resident memory above the start from which free memory is given back after a task.
constexpr std::uint64_t kTidyStep = std::uint64_t{64} << 20;
constexpr const char* kOutOfMemoryScore = "600"; // of 1000

enum Statm : std::size_t { kResident = 1, kData = 5 };

// A number of /proc/self/statm, in bytes; 0 when it cannot be read.
std::uint64_t Read(int statm, std::size_t field) {
    std::array<char, 128> text{};
    const ssize_t count = ::pread(statm, text.data(), text.size(), 0);
    const char* at = text.data();
    const char* end = at + std::max<ssize_t>(count, 0);
    for (; field > 0 && at != end; ++at)
        if (*at == ' ')
            --field;
    std::uint64_t pages = 0;
    std::from_chars(at, end, pages);
    return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

Descriptor OpenStatm() {
    return Descriptor(::open("/proc/self/statm", O_RDONLY | O_CLOEXEC));
}

void Limit(__rlimit_resource_t resource, rlim_t value) {
    rlimit limit{};
    ::getrlimit(resource, &limit);
    limit.rlim_max = std::min(limit.rlim_max, value);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(resource, &limit);
}

// Writable memory only: a document that is mapped to be read costs nothing of it, however large
// it is.
void LimitMemory([[maybe_unused]] std::uint64_t memory) {
#ifndef VELMORA_SANITIZED // whose own report of a failed allocation hangs when it gets no memory
    const Descriptor statm = OpenStatm();
    const std::uint64_t start = statm ? Read(statm.Get(), kData) : 0;
    Limit(RLIMIT_DATA, std::max<std::uint64_t>(start + memory, memory));
#endif
}

} // namespace

void FollowTheParent() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // SIGPIPE: a pool that is gone is seen by the failing write.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGPIPE, SIGXFSZ})
        ::signal(signal, SIG_IGN);
}

void SetLimits(std::uint64_t memory, int niceness) {
    Limit(RLIMIT_CORE, 0);
    Limit(RLIMIT_FSIZE, 0);
    Limit(RLIMIT_NPROC, 0);
    Limit(RLIMIT_MSGQUEUE, 0);
    Limit(RLIMIT_MEMLOCK, 0);
    Limit(RLIMIT_NOFILE, kDescriptors);
    LimitMemory(memory);
    ::setpriority(PRIO_PROCESS, 0, ::getpriority(PRIO_PROCESS, 0) + niceness);
    const Descriptor score(::open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
    if (score &&
        ::write(score.Get(), kOutOfMemoryScore, std::string_view(kOutOfMemoryScore).size()) < 0)
        return; // a matter of manners only
}

MemoryWatch::MemoryWatch(std::uint64_t memoryLimit) : m_statm(OpenStatm()) {
    const std::uint64_t start = Resident();
    m_tidyAt = start + kTidyStep;
    m_retireAt = start + std::max(memoryLimit / 4, kTidyStep);
}

bool MemoryWatch::TidyUp() {
    if (Resident() <= m_tidyAt)
        return false;
    ::malloc_trim(0);
    const std::uint64_t left = Resident();
    m_tidyAt = std::max(m_tidyAt, left + kTidyStep);
    return left > m_retireAt;
}

std::uint64_t MemoryWatch::Resident() const {
    return m_statm ? Read(m_statm.Get(), kResident) : 0;
}

} // namespace workers
