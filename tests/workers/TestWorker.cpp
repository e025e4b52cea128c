// A worker for the tests: one role serves well, the others do what hostile documents make of one.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "TestWorkerActs.h"

#include "workers/Child.h"
#include "workers/Pool.h"
#include "workers/Protocol.h"

#include <fcntl.h>
#include <iconv.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using workers::Answer;
using Settings = std::map<std::string, std::string>;

std::string folder;      // from the settings
std::string descriptors; // that were open before anything was done
std::string rehearsal;   // acts that are refused even without a wall

std::string Setting(const Settings& settings, const char* name) {
    const auto found = settings.find(name);
    return found == settings.end() ? std::string() : found->second;
}

[[noreturn]] void Stall() {
    for (;;)
        ::poll(nullptr, 0, -1);
}

void ListDescriptors() {
    for (int fd = 0; fd < 1024; ++fd)
        if (::fcntl(fd, F_GETFD) >= 0)
            descriptors += std::to_string(fd) + " ";
}

// All acts while nothing forbids them, to know that it is the wall that refuses them later.
void Rehearse() {
    const int file = ::open((folder + "/secret").c_str(), O_RDONLY);
    for (const auto& [name, act] : Acts())
        if (const int error = act(folder, file); error == EPERM || error == EACCES)
            rehearsal += name + "; ";
    ::close(file);
}

void Prepare(const Settings& settings) {
    ListDescriptors();
    folder = Setting(settings, "folder");
    if (settings.contains("rehearse"))
        Rehearse();
    if (const std::string log = Setting(settings, "start log"); !log.empty())
        std::ofstream(log, std::ios::app) << 'x';
    if (settings.contains("fail"))
        throw std::runtime_error(Setting(settings, "fail"));
    if (settings.contains("leave a thread"))
        std::thread([] { ::poll(nullptr, 0, -1); }).detach();
    if (settings.contains("hang at start"))
        Stall();
}

// "N SIZE SEED": N pieces of SIZE bytes, numbered and recognisable; then the file's bytes.
void Echo(int file, std::string_view request, Answer& answer) {
    int pieces = 0;
    int size = 0;
    int seed = 0;
    if (std::sscanf(std::string(request).c_str(), "%d %d %d", &pieces, &size, &seed) != 3)
        throw std::runtime_error("no such request: " + std::string(request));
    std::string piece;
    for (int i = 0; i < pieces; ++i) {
        piece.assign(static_cast<std::size_t>(size), static_cast<char>('a' + (seed + i) % 26));
        answer.Send(static_cast<std::uint8_t>(i), piece);
    }
    std::string content(4096, '\0');
    const ssize_t count = ::read(file, content.data(), content.size());
    answer.Send(200, std::string_view(content).substr(0, static_cast<std::size_t>(count)));
}

// A piece for each byte that the file, a pipe, has to give, until an 'e'.
void Step(int file, std::string_view, Answer& answer) {
    for (char byte = 0; ::read(file, &byte, 1) == 1 && byte != 'e';)
        answer.Send(1, std::string(40'000, byte));
}

void Tell(int, std::string_view request, Answer& answer) {
    if (request == "pid")
        answer.Send(0, std::to_string(::getpid()));
    else if (request == "descriptors")
        answer.Send(0, descriptors);
    else if (request == "rehearsal")
        answer.Send(0, rehearsal);
    else if (request == "environment")
        for (char** variable = environ; *variable; ++variable)
            answer.Send(0, std::string(*variable) + "\n");
}

void Try(int file, std::string_view request, Answer& answer) {
    answer.Send(0, std::to_string(Acts().at(std::string(request))(folder, file)));
}

std::string Converted(const char* from, std::string text) {
    const iconv_t converter = ::iconv_open("UTF-8", from);
    if (converter == reinterpret_cast<iconv_t>(-1))
        return "no converter";
    std::string result(64, '\0');
    char* in = text.data();
    char* out = result.data();
    std::size_t inLeft = text.size();
    std::size_t outLeft = result.size();
    ::iconv(converter, &in, &inLeft, &out, &outLeft);
    ::iconv_close(converter);
    result.resize(result.size() - outLeft);
    return result;
}

// What parsers rightly do behind the wall.
void Harmless(int file, std::string_view request, Answer& answer) {
    if (request == "convert")
        answer.Send(0, Converted("BIG5", "\xA4\xA4"));
    else if (request == "stat") {
        struct stat about {};
        answer.Send(0, ::fstat(file, &about) == 0 ? std::to_string(about.st_size) : "refused");
    } else if (request == "system data") {
        const int opened = ::open("/usr/share", O_RDONLY | O_DIRECTORY);
        answer.Send(0, opened >= 0 ? "read" : "refused");
        ::close(opened);
    } else if (request == "map") {
        // Larger than the memory cap, by far.
        struct stat about {};
        ::fstat(file, &about);
        const auto size = static_cast<std::size_t>(about.st_size);
        void* bytes = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
        if (bytes == MAP_FAILED)
            throw std::runtime_error("cannot map");
        answer.Send(0, std::string_view(static_cast<char*>(bytes) + size - 4, 4));
        ::munmap(bytes, size);
    }
}

void WriteRaw(std::string_view bytes) {
    if (::write(workers::kWorkerSocket, bytes.data(), bytes.size()) < 0)
        ::_exit(9);
}

workers::TaskNumber task = workers::kGreeting; // as a hostile one can find out

std::string RawEnd() {
    std::string bytes;
    const std::string payload = workers::Encode(workers::End{});
    workers::AppendHeader(bytes, {workers::FrameKind::End, 0, task, payload});
    return bytes + payload;
}

void FillMemory(bool swallow) {
    std::vector<std::string> hoard;
    try {
        for (;;)
            hoard.emplace_back(std::size_t{1} << 20, 'x');
    } catch (const std::bad_alloc&) {
        hoard.clear();
        if (!swallow)
            throw;
    }
    throw std::runtime_error("a library gives up"); // its own words for what happened
}

const std::map<std::string, void (*)(Answer&)>& Manners() {
    static const std::map<std::string, void (*)(Answer&)> manners = {
        {"stall", [](Answer&) { Stall(); }},
        {"spin",
         [](Answer&) {
             for (;;)
                 static_cast<void>(::getppid());
         }},
        {"begin and stall",
         [](Answer& a) {
             a.Send(1, std::string(70'000, 'b')); // too large to be gathered
             Stall();
         }},
        {"segmentation fault", [](Answer&) { ::raise(SIGSEGV); }},
        {"abort",
         [](Answer&) {
             std::fputs("first words\nlast words\x1b[0m\n", stderr);
             std::abort();
         }},
        {"uncaught", [](Answer& a) { [&]() noexcept { Echo(-1, "out", a); }(); }},
        {"exit in the middle",
         [](Answer& a) {
             a.Send(1, std::string(70'000, 'b'));
             ::_exit(0);
         }},
        {"close the socket",
         [](Answer&) {
             ::close(3);
             Stall();
         }},
        {"refuse", [](Answer&) { throw std::runtime_error("page 3 is damaged"); }},
        {"throw a number", [](Answer&) { throw 7; }},
        {"endless",
         [](Answer& a) {
             for (;;)
                 a.Send(1, std::string(50'000, 'e'));
         }},
        {"endless nothing",
         [](Answer& a) {
             for (;;)
                 a.Send(1, {});
         }},
        {"too large a piece", [](Answer& a) { a.Send(1, std::string(80u << 20, 'l')); }},
        {"use much memory",
         [](Answer&) {
             std::vector<std::string> pieces(100, std::string(std::size_t{1} << 20, 'u'));
             if (pieces[99][5] != 'u')
                 std::abort();
         }},
        {"leak",
         [](Answer&) {
             static std::vector<std::string> leak;
             leak.resize(100, std::string(std::size_t{1} << 20, 'u'));
         }},
        {"fill the memory", [](Answer&) { FillMemory(false); }},
        {"fill the memory and hide it", [](Answer&) { FillMemory(true); }},
        {"fill the memory, no way out", [](Answer&) { []() noexcept { FillMemory(false); }(); }},
        {"too much at once", [](Answer&) { std::string(std::size_t{1} << 40, 'x'); }},
        {"noise",
         [](Answer&) {
             WriteRaw("HTTP/1.1 200 OK\r\n\r\n");
             Stall();
         }},
        {"a pool's word",
         [](Answer&) {
             std::string bytes;
             workers::AppendHeader(bytes, {workers::FrameKind::Ready, 0, task, {}});
             WriteRaw(bytes);
             Stall();
         }},
        {"go on after the end",
         [](Answer&) {
             WriteRaw(RawEnd() + RawEnd());
             Stall();
         }},
        {"answer to nothing",
         [](Answer&) {
             task += 5;
             WriteRaw(RawEnd());
             Stall();
         }},
        {"answer twice", [](Answer&) { WriteRaw(RawEnd()); }},
        {"talk much",
         [](Answer&) {
             const std::string line(1000, 't');
             for (int i = 0; i < 500; ++i)
                 std::fprintf(stderr, "%s\n", line.c_str());
         }},
        {"trace", [](Answer&) { ::syscall(SYS_ptrace, 0, 0, 0, 0); }},
#ifdef __x86_64__
        {"foreign call", [](Answer&) { ::syscall(0x40000000L | SYS_getpid); }}, // x32
#else
        {"foreign call", [](Answer&) { ::syscall(SYS_ptrace, 0, 0, 0, 0); }},
#endif
        {"mount", [](Answer&) { ::syscall(SYS_mount, "a", "b", "c", 0, 0); }},
        {"read the parent",
         [](Answer&) { ::syscall(SYS_process_vm_readv, ::getppid(), nullptr, 0, nullptr, 0, 0); }},
        {"start a program",
         [](Answer& a) {
             char name[] = "/bin/true";
             char* arguments[] = {name, nullptr};
             ::execv(name, arguments);
             a.Send(0, std::to_string(errno));
         }},
        {"outlive the parent",
         [](Answer& a) {
             a.Send(0, std::to_string(::prctl(PR_SET_PDEATHSIG, 0) == 0 ? 0 : errno));
         }},
    };
    return manners;
}

void Misbehave(int, std::string_view request, Answer& answer) {
    Manners().at(std::string(request))(answer);
}

// Prints the number of a worker, and keeps it busy or idle until the program is killed.
class Announce : public workers::Task {
  public:
    explicit Announce(std::string request) : m_request(std::move(request)) {}
    std::string Role() const override { return m_request == "pid" ? "tell" : "announce"; }
    int Open() override { return ::open("/dev/null", O_RDONLY); }
    std::string Request() override { return m_request; }
    void OnFrame(std::uint8_t, std::string_view payload) override {
        std::printf("%s\n", std::string(payload).c_str());
        std::fflush(stdout);
    }
    void OnEnd(workers::Ending, const std::string&) override {}

  private:
    std::string m_request;
};

// The test kills this program, hard, and looks what becomes of its workers.
int PlayParent(const std::string& request) {
    workers::PoolOptions options;
    options.executable = std::filesystem::read_symlink("/proc/self/exe");
    options.workers = 1;
    workers::Pool pool(std::move(options));
    pool.Add(std::make_unique<Announce>(request));
    Stall();
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1)
        return PlayParent(argv[1]);
    // Large enough not to wait for more.
    const auto announce = [](int, std::string_view, Answer& answer) {
        answer.Send(0, std::to_string(::getpid()) + std::string(40'000, ' '));
        Stall();
    };
    std::map<std::string, workers::Role> roles = {
        {"echo", {Prepare, Echo}},        {"tell", {nullptr, Tell}},
        {"try", {nullptr, Try}},          {"harmless", {nullptr, Harmless}},
        {"step", {nullptr, Step}},        {"misbehave", {nullptr, Misbehave}},
        {"announce", {nullptr, announce}}};
    for (auto& [name, role] : roles)
        role.serve = [serve = role.serve](int file, std::string_view request, Answer& answer) {
            ++task;
            serve(file, request, answer);
        };
    return workers::RunWorker(roles);
}
