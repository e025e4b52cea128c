// The kernel's wall around system calls: seccomp.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "workers/SyscallFilter.h"

#include "workers/Protocol.h"

#include <fcntl.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <initializer_list>

namespace workers {

namespace {

// Lists to be read as such.
// clang-format off
constexpr const char* kAllowed[] = {
    // what is open already
    "read", "readv", "pread64", "preadv", "preadv2", "lseek", "fstat", "fadvise64", "readahead",
    "close", "close_range", "dup", "dup2", "dup3", "getdents64", "poll", "ppoll", "select",
    "pselect6",
    // memory; mmap has conditions
    "munmap", "mremap", "mprotect", "madvise", "brk",
    // time and waiting
    "clock_gettime", "clock_getres", "clock_nanosleep", "nanosleep", "gettimeofday", "time",
    "times", "restart_syscall", "sched_yield", "futex", "futex_time64",
    // itself
    "getpid", "gettid", "getppid", "getuid", "geteuid", "getgid", "getegid", "getcwd", "getcpu",
    "getrandom", "getrlimit", "getrusage", "sysinfo", "uname", "sched_getaffinity",
    "set_robust_list", "rseq", "membarrier",
    // signals to itself
    "rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "sigaltstack", "exit", "exit_group",
#ifdef VELMORA_SANITIZED
    // The sanitizers try addresses by writing them to a pipe, and look up their own names.
    "pipe", "pipe2", "write", "writev", "readlink", "readlinkat", "stat", "lstat", "access",
    "newfstatat", "prctl",
#endif
};

// No parser does any of these by accident.
constexpr const char* kDeadly[] = {
    "ptrace", "process_vm_readv", "process_vm_writev", "process_madvise", "pidfd_getfd", "kcmp",
    "bpf", "perf_event_open", "userfaultfd", "io_uring_setup", "io_uring_enter",
    "io_uring_register", "keyctl", "add_key", "request_key", "mount", "umount2", "pivot_root",
    "chroot", "setns", "unshare", "move_mount", "open_tree", "fsopen", "fsconfig", "fsmount",
    "fspick", "mount_setattr", "open_by_handle_at", "name_to_handle_at", "init_module",
    "finit_module", "delete_module", "kexec_load", "kexec_file_load", "reboot", "swapon",
    "swapoff", "acct", "quotactl", "iopl", "ioperm", "modify_ldt", "personality",
};
// clang-format on

// Rules of one filter; the first that the library does not take spoils the whole.
class Rules {
  public:
    Rules() : m_filter(::seccomp_init(SCMP_ACT_ERRNO(EPERM))) {
        Keep(m_filter ? 0 : -1);
        if (!m_ok)
            return;
        // Another architecture's calls mean other things under the same numbers.
        Keep(::seccomp_attr_set(m_filter, SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_KILL_PROCESS));
        Keep(::seccomp_attr_set(m_filter, SCMP_FLTATR_CTL_OPTIMIZE, 2)); // a tree, not a list
    }
    ~Rules() {
        if (m_filter)
            ::seccomp_release(m_filter);
    }
    Rules(const Rules&) = delete;
    Rules& operator=(const Rules&) = delete;

    // A call that this architecture or library does not know needs no rule.
    void Add(std::uint32_t action, const char* name,
             std::initializer_list<scmp_arg_cmp> conditions = {}) {
        const int call = ::seccomp_syscall_resolve_name(name);
        if (m_ok && call >= 0)
            Keep(::seccomp_rule_add_array(m_filter, action, call,
                                          static_cast<unsigned>(conditions.size()),
                                          conditions.begin()));
    }
    void Allow(const char* name, std::initializer_list<scmp_arg_cmp> conditions = {}) {
        Add(SCMP_ACT_ALLOW, name, conditions);
    }
    [[nodiscard]] bool Load() {
        if (m_ok)
            Keep(::seccomp_load(m_filter));
        return m_ok;
    }

  private:
    void Keep(int result) { m_ok = m_ok && result == 0; }

    scmp_filter_ctx m_filter;
    bool m_ok = true;
};

scmp_arg_cmp Is(unsigned argument, std::uint64_t value) {
    return {argument, SCMP_CMP_EQ, value, 0};
}

scmp_arg_cmp Bits(unsigned argument, std::uint64_t mask, std::uint64_t value) {
    return {argument, SCMP_CMP_MASKED_EQ, mask, value};
}

void AllowMemory(Rules& rules) {
    // Shared anonymous memory and growing stacks would not count against the memory cap.
    constexpr std::uint64_t kMask = MAP_SHARED | MAP_ANONYMOUS | MAP_GROWSDOWN;
    for (const std::uint64_t flags : {0, MAP_SHARED, MAP_ANONYMOUS})
        rules.Allow("mmap", {Bits(3, kMask, flags)});
}

void AllowOwnDescriptors(Rules& rules) {
#ifndef VELMORA_SANITIZED // which allows them as they are
    const scmp_arg_cmp outward{0, SCMP_CMP_LE, static_cast<scmp_datum_t>(kWorkerSocket), 0};
    rules.Allow("write", {outward});
    rules.Allow("writev", {outward});
#endif
    rules.Allow("recvmsg", {Is(0, static_cast<scmp_datum_t>(kWorkerSocket))});
    for (const int command : {F_DUPFD, F_DUPFD_CLOEXEC, F_GETFD, F_SETFD, F_GETFL})
        rules.Allow("fcntl", {Is(1, static_cast<scmp_datum_t>(command))});
    // What asks whether it writes to a terminal gets the answer of a file.
    rules.Add(SCMP_ACT_ERRNO(ENOTTY), "ioctl");
}

void AllowItself(Rules& rules) {
    rules.Allow("tgkill", {Is(0, static_cast<scmp_datum_t>(::getpid()))}); // abort
    rules.Allow("prlimit64", {Is(0, 0), Is(2, 0)});                        // asking only
    rules.Add(SCMP_ACT_ERRNO(ENOSYS), "clone3"); // the C library then tries clone, refused too
}

void AllowFiles(Rules& rules, Opening opening) {
    if (opening == Opening::Reading) {
        constexpr std::uint64_t kChanging =
            O_ACCMODE | O_CREAT | O_TRUNC | O_APPEND | (O_TMPFILE & ~O_DIRECTORY) | O_PATH;
        rules.Allow("open", {Bits(1, kChanging, O_RDONLY)});
        rules.Allow("openat", {Bits(2, kChanging, O_RDONLY)});
    }
    // The C library asks about an open file in this way.
#ifndef VELMORA_SANITIZED
    rules.Allow("newfstatat", {Bits(3, AT_EMPTY_PATH, AT_EMPTY_PATH)});
#endif
    rules.Allow("statx", {Bits(2, AT_EMPTY_PATH, AT_EMPTY_PATH)});
}

} // namespace

bool EnterSyscallFilter(Opening opening) {
    Rules rules;
    for (const char* name : kAllowed)
        rules.Allow(name);
    for (const char* name : kDeadly)
        rules.Add(SCMP_ACT_KILL_PROCESS, name);
    AllowMemory(rules);
    AllowOwnDescriptors(rules);
    AllowItself(rules);
    AllowFiles(rules, opening);
    return rules.Load();
}

} // namespace workers
