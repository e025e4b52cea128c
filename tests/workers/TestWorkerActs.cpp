// What a process may try that was taken over by a hostile document.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "TestWorkerActs.h"

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

namespace {

int Error(long result) {
    return result < 0 ? errno : 0;
}

int Opened(int fd) {
    if (fd < 0)
        return errno;
    ::close(fd);
    return 0;
}

// The child ends at once with the exit code that the body gives.
int InChild(pid_t child) {
    if (child < 0)
        return errno;
    if (child == 0)
        ::_exit(0);
    ::waitpid(child, nullptr, 0);
    return 0;
}

int Thread(const std::string&, int) {
    pthread_t thread{};
    const int error = ::pthread_create(
        &thread, nullptr, [](void* p) { return p; }, nullptr);
    if (error == 0)
        ::pthread_join(thread, nullptr);
    return error;
}

int SharedMemory(const std::string&, int) {
    void* area = ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED)
        return errno;
    ::munmap(area, 4096);
    return 0;
}

int ListFolder(const std::string& folder, int) {
    DIR* opened = ::opendir(folder.c_str());
    if (!opened)
        return errno;
    ::closedir(opened);
    return 0;
}

// A copy of the file's descriptor can be passed on like this.
int PassOn(const std::string&, int file) {
    char byte = 'x';
    iovec part{&byte, 0};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(header), &file, sizeof file);
    return Error(::sendmsg(3, &message, MSG_NOSIGNAL));
}

int RaiseLimit(const std::string&, int) {
    rlimit limit{};
    ::getrlimit(RLIMIT_CPU, &limit);
    return Error(::setrlimit(RLIMIT_CPU, &limit));
}

} // namespace

const std::map<std::string, Act>& Acts() {
    using Folder = const std::string&;
    static const std::map<std::string, Act> acts = {
        {"network socket", [](Folder, int) { return Opened(::socket(AF_INET, SOCK_STREAM, 0)); }},
        {"local socket", [](Folder, int) { return Opened(::socket(AF_UNIX, SOCK_STREAM, 0)); }},
        {"netlink socket", [](Folder, int) { return Opened(::socket(AF_NETLINK, SOCK_RAW, 0)); }},
        {"fork", [](Folder, int) { return InChild(::fork()); }},
        {"clone",
         [](Folder, int) {
             return InChild(static_cast<pid_t>(::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0)));
         }},
        {"thread", Thread},
        {"read a file",
         [](Folder f, int) { return Opened(::open((f + "/secret").c_str(), O_RDONLY)); }},
        {"read the passwords", [](Folder, int) { return Opened(::open("/etc/passwd", O_RDONLY)); }},
        {"read a process", [](Folder, int) { return Opened(::open("/proc/1/stat", O_RDONLY)); }},
        {"reach a place", [](Folder f, int) { return Opened(::open(f.c_str(), O_PATH)); }},
        {"list a folder", ListFolder},
        {"make a file",
         [](Folder f, int) {
             return Opened(::open((f + "/new").c_str(), O_WRONLY | O_CREAT, 0600));
         }},
        {"append to a file",
         [](Folder f, int) {
             return Opened(::open((f + "/secret").c_str(), O_WRONLY | O_APPEND));
         }},
        {"make a nameless file",
         [](Folder f, int) { return Opened(::open(f.c_str(), O_RDWR | O_TMPFILE, 0600)); }},
        {"reopen for writing",
         [](Folder, int file) {
             const std::string path = "/proc/self/fd/" + std::to_string(file);
             return Opened(::open(path.c_str(), O_WRONLY));
         }},
        {"change permissions",
         [](Folder f, int) { return Error(::chmod((f + "/secret").c_str(), 0600)); }},
        {"change permissions of the file",
         [](Folder, int file) { return Error(::fchmod(file, 0600)); }},
        {"change times of the file",
         [](Folder, int file) { return Error(::futimens(file, nullptr)); }},
        {"rename",
         [](Folder f, int) {
             return Error(::rename((f + "/secret").c_str(), (f + "/secret").c_str()));
         }},
        {"unlink", [](Folder f, int) { return Error(::unlink((f + "/nothing").c_str())); }},
        {"link",
         [](Folder f, int) {
             return Error(::link((f + "/secret").c_str(), (f + "/linked").c_str()));
         }},
        {"make a folder", [](Folder f, int) { return Error(::mkdir((f + "/d").c_str(), 0700)); }},
        {"kill the parent", [](Folder, int) { return Error(::kill(::getppid(), 0)); }},
        {"signal the parent",
         [](Folder, int) { return Error(::syscall(SYS_tgkill, ::getppid(), ::getppid(), 0)); }},
        {"shared memory", SharedMemory},
        {"memory file", [](Folder, int) { return Opened(::memfd_create("m", 0)); }},
        {"system memory",
         [](Folder, int) {
             const int id = ::shmget(IPC_PRIVATE, 4096, IPC_CREAT | 0600);
             if (id >= 0)
                 ::shmctl(id, IPC_RMID, nullptr);
             return Error(id);
         }},
        {"pass the file on", PassOn},
        {"raise a limit", RaiseLimit},
    };
    return acts;
}
