// One worker process, seen from the pool: how it is started, interrupted and buried.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "workers/Process.h"

#include "workers/Protocol.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

namespace workers {

namespace {

constexpr int kGraceToExit = 1'000;  // ms, for one that closed its socket
constexpr int kGraceAfterKill = 500; // ms; longer only when it hangs in the kernel
constexpr std::size_t kErrorTail = 2'048;
constexpr std::size_t kLongestLastWords = 300;

[[noreturn]] void Throw(int error, const std::string& what) {
    throw std::system_error(error, std::generic_category(), what);
}

// A descriptor above those that the child gets, so that putting them in place hits no other.
Descriptor Lifted(Descriptor low) {
    if (low && low.Get() > kWorkerSocket)
        return low;
    const int error = errno;
    Descriptor high(low ? ::fcntl(low.Get(), F_DUPFD_CLOEXEC, kWorkerSocket + 1) : -1);
    if (!high)
        Throw(low ? errno : error, "no descriptor for a worker");
    return high;
}

struct FileActions {
    FileActions() { ::posix_spawn_file_actions_init(&actions); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    posix_spawn_file_actions_t actions{};
};

struct Attributes {
    Attributes() {
        ::posix_spawnattr_init(&attributes);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setsigdefault(&attributes, &all);
        // A session of its own: Ctrl+C at the terminal is for the program to answer.
        ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK |
                                                    POSIX_SPAWN_SETSIGDEF);
    }
    ~Attributes() { ::posix_spawnattr_destroy(&attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    posix_spawnattr_t attributes{};
};

// What libraries need to know of the outside; the rest (addresses, session keys) stays outside.
bool GoesAlong(std::string_view variable) {
    constexpr std::string_view kPrefixes[] = {"LANG=",
                                              "LANGUAGE=",
                                              "LC_",
                                              "TZ=",
                                              "LD_LIBRARY_PATH=",
                                              "ASAN_OPTIONS=",
                                              "UBSAN_OPTIONS=",
                                              "LSAN_OPTIONS=",
                                              "TESSDATA_PREFIX=",
                                              "MALLOC_",
                                              "GLIBC_TUNABLES="};
    return std::any_of(std::begin(kPrefixes), std::end(kPrefixes),
                       [&](std::string_view prefix) { return variable.starts_with(prefix); });
}

std::vector<char*> Environment() {
    std::vector<char*> environment;
    for (char** variable = environ; variable && *variable; ++variable)
        if (GoesAlong(*variable))
            environment.push_back(*variable);
    static char oneThread[] = "OMP_THREAD_LIMIT=1"; // the wall lets no thread begin
    environment.push_back(oneThread);
    environment.push_back(nullptr);
    return environment;
}

// The last line, fit to be shown: the process may have been taken over by its document.
std::string LastLine(std::string_view text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    if (last == std::string_view::npos)
        return {};
    text = text.substr(0, last + 1);
    const std::size_t lineBreak = text.rfind('\n');
    if (lineBreak != std::string_view::npos)
        text.remove_prefix(lineBreak + 1);
    std::string line(text.substr(0, kLongestLastWords));
    for (char& c : line)
        if (c < ' ' || c > '~')
            c = '?';
    return line;
}

Death Explain(int status) {
    if (WIFEXITED(status)) {
        const int code = WEXITSTATUS(status);
        if (code == kExitOutOfMemory)
            return {Ending::OutOfMemory, "the worker reached its memory cap"};
        return {Ending::Crashed, "the worker ended with exit code " + std::to_string(code)};
    }
    const int signal = WTERMSIG(status);
    if (signal == SIGKILL) // whoever killed it here knows why and does not ask
        return {Ending::OutOfMemory, "the worker was killed, probably for want of memory"};
    if (signal == SIGSYS)
        return {Ending::Crashed, "the worker tried a forbidden system call"};
    const char* name = ::sigdescr_np(signal);
    return {Ending::Crashed, "the worker died of signal " + std::to_string(signal) +
                                 (name ? std::string(" (") + name + ")" : std::string())};
}

} // namespace

Process::Process(const std::string& executable) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        Throw(errno, "no socket for a worker");
    m_socket = Descriptor(ends[0]);
    const Descriptor theirSocket = Lifted(Descriptor(ends[1]));
    std::array<int, 2> pipe{};
    // Never blocking: a talkative worker loses words, it does not hang.
    if (::pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        Throw(errno, "no pipe for a worker");
    m_errors = Descriptor(pipe[0]);
    const Descriptor theirErrors = Lifted(Descriptor(pipe[1]));
    const Descriptor nothing = Lifted(Descriptor(::open("/dev/null", O_RDWR | O_CLOEXEC)));

    FileActions files;
    ::posix_spawn_file_actions_adddup2(&files.actions, nothing.Get(), 0);
    ::posix_spawn_file_actions_adddup2(&files.actions, nothing.Get(), 1);
    ::posix_spawn_file_actions_adddup2(&files.actions, theirErrors.Get(), 2);
    ::posix_spawn_file_actions_adddup2(&files.actions, theirSocket.Get(), kWorkerSocket);
    ::posix_spawn_file_actions_addclosefrom_np(&files.actions, kWorkerSocket + 1);
    const Attributes attributes;
    std::string name = executable;
    std::array<char*, 2> arguments{name.data(), nullptr};
    const int error = ::posix_spawn(&m_pid, executable.c_str(), &files.actions,
                                    &attributes.attributes, arguments.data(), Environment().data());
    if (error != 0) {
        m_pid = -1;
        Throw(error, executable);
    }
    m_handle = Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, m_pid, 0)));
    if (!m_handle) {
        const int noHandle = errno;
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
        Throw(noHandle, "no handle of a worker");
    }
}

Process::~Process() {
    if (m_pid < 0)
        return;
    Interrupt();
    static_cast<void>(End());
}

void Process::Interrupt() const {
    if (m_handle)
        ::syscall(SYS_pidfd_send_signal, m_handle.Get(), SIGKILL, nullptr, 0);
    ::shutdown(m_socket.Get(), SHUT_RDWR);
}

void Process::DrainErrors() {
    std::array<char, 4'096> bytes;
    // Bounded: a process gone wild may write faster than this reads.
    for (int reads = 0; reads < 32; ++reads) {
        const ssize_t count = ::read(m_errors.Get(), bytes.data(), bytes.size());
        if (count <= 0)
            return;
        m_errorTail.append(bytes.data(), static_cast<std::size_t>(count));
        if (m_errorTail.size() > kErrorTail)
            m_errorTail.erase(0, m_errorTail.size() - kErrorTail);
    }
}

Death Process::End() {
    const bool endedItself = Wait(kGraceToExit);
    if (!endedItself) {
        Interrupt();
        if (!Wait(kGraceAfterKill)) {
            // It hangs in the kernel, on a share that went away for instance.
            std::thread([pid = m_pid] { ::waitpid(pid, nullptr, 0); }).detach();
            m_pid = -1;
            return {Ending::Crashed, "the worker hangs and cannot be ended"};
        }
    }
    int status = 0;
    pid_t buried = 0;
    do
        buried = ::waitpid(m_pid, &status, 0);
    while (buried < 0 && errno == EINTR);
    m_pid = -1;
    Death death{Ending::Crashed, "the worker closed its socket"};
    if (endedItself && buried > 0)
        death = Explain(status);
    const std::string words = LastWords();
    if (!words.empty())
        death.message += ": " + words;
    return death;
}

bool Process::Wait(int milliseconds) const {
    pollfd ended{m_handle.Get(), POLLIN, 0};
    int count = 0;
    do
        count = ::poll(&ended, 1, milliseconds);
    while (count < 0 && errno == EINTR);
    return count > 0;
}

std::string Process::LastWords() {
    DrainErrors();
    return LastLine(m_errorTail);
}

} // namespace workers
