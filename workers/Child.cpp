// The worker's side: main() of a worker, from the greeting to the last task.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "workers/Child.h"

#include "workers/Descriptor.h"
#include "workers/Limits.h"
#include "workers/Protocol.h"
#include "workers/Sandbox.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <string>

namespace workers {

namespace {

constexpr std::size_t kLongestMessage = 16'384;

// Set when the memory cap was met during the task under way, whatever a library makes of it.
bool memoryCapMet = false;

void OnNoMemory() {
    memoryCapMet = true;
    throw std::bad_alloc();
}

void OnTerminate() {
    if (memoryCapMet)
        ::_exit(kExitOutOfMemory);
    if (const std::exception_ptr current = std::current_exception()) {
        try {
            std::rethrow_exception(current);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "uncaught: %s\n", error.what());
        } catch (...) {
            std::fprintf(stderr, "uncaught exception\n");
        }
    }
    std::abort();
}

struct Received {
    Frame frame;
    Descriptor file;
};

// The pool's messages, one at a time: it never sends a second one before the first is answered.
class Inbox {
  public:
    // Waits for the next message; nothing when the pool is gone.
    std::optional<Received> Next() {
        Received received;
        for (;;) {
            switch (m_reader.Next(received.frame)) {
            case FrameReader::Cut::Frame:
                return received;
            case FrameReader::Cut::Broken:
                return std::nullopt;
            case FrameReader::Cut::NeedMore:
                break;
            }
            if (!Receive(received.file))
                return std::nullopt;
        }
    }

  private:
    bool Receive(Descriptor& file) {
        const std::span<char> space = m_reader.Space();
        iovec part{space.data(), space.size()};
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        ssize_t count = 0;
        do
            count = ::recvmsg(kWorkerSocket, &message, MSG_CMSG_CLOEXEC);
        while (count < 0 && errno == EINTR);
        if (count <= 0)
            return false;
        m_reader.Added(static_cast<std::size_t>(count));
        const cmsghdr* header = CMSG_FIRSTHDR(&message);
        if (header && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS) {
            int received = -1;
            std::memcpy(&received, CMSG_DATA(header), sizeof received);
            file = Descriptor(received);
        }
        return true;
    }

    FrameReader m_reader;
};

class SocketAnswer : public Answer {
  public:
    SocketAnswer(FrameWriter& out, TaskNumber task) : m_out(out), m_task(task) {}
    void Send(std::uint8_t type, std::string_view payload) override {
        m_out.Put({FrameKind::Piece, type, m_task, payload});
    }

  private:
    FrameWriter& m_out;
    TaskNumber m_task;
};

class Session {
  public:
    explicit Session(const std::map<std::string, Role>& roles) : m_roles(roles) {}
    int Run();

  private:
    bool Prepare(const Hello& hello);
    void Serve(const Received& received);
    void Close(Verdict verdict, std::string_view message, bool retire);

    const std::map<std::string, Role>& m_roles;
    Inbox m_inbox;
    FrameWriter m_out{kWorkerSocket};
    TaskNumber m_task = kGreeting; // under way
    std::optional<MemoryWatch> m_memory;
};

int Session::Run() {
    const auto greeting = m_inbox.Next();
    Hello hello;
    if (!greeting || greeting->frame.kind != FrameKind::Hello ||
        !Decode(greeting->frame.payload, hello))
        return 1;
    if (!Prepare(hello))
        return 1;
    while (const auto received = m_inbox.Next()) {
        m_task = received->frame.task;
        Serve(*received);
    }
    return 0;
}

bool Session::Prepare(const Hello& hello) {
    try {
        for (const auto& [name, role] : m_roles)
            if (role.prepare)
                role.prepare(hello.settings);
        m_memory.emplace(hello.memoryLimit);
        SetLimits(hello.memoryLimit, static_cast<int>(hello.niceness));
        const std::string walls = EnterWalls().Describe();
        m_out.Put({FrameKind::Ready, 0, kGreeting, walls});
        m_out.Flush();
        return true;
    } catch (const std::exception& error) {
        Close(Verdict::Refused, error.what(), true);
        return false;
    }
}

void Session::Serve(const Received& received) {
    Job job;
    if (!Decode(received.frame, job) || !received.file) {
        Close(Verdict::Refused, "the worker did not get the file", true);
        return;
    }
    const auto role = m_roles.find(std::string(job.role));
    if (role == m_roles.end() || !role->second.serve) {
        Close(Verdict::Refused, "the worker has no role of this name", false);
        return;
    }
    memoryCapMet = false;
    try {
        SocketAnswer answer(m_out, m_task);
        role->second.serve(received.file.Get(), job.request, answer);
        Close(Verdict::Done, {}, m_memory->TidyUp());
    } catch (const std::bad_alloc&) {
        Close(Verdict::OutOfMemory, {}, true);
    } catch (const std::exception& error) {
        Close(memoryCapMet ? Verdict::OutOfMemory : Verdict::Refused, error.what(),
              m_memory->TidyUp());
    } catch (...) {
        Close(Verdict::Refused, "an exception of unknown kind", true);
    }
}

void Session::Close(Verdict verdict, std::string_view message, bool retire) {
    const End end{verdict, retire,
                  verdict == Verdict::OutOfMemory ? std::string_view()
                                                  : message.substr(0, kLongestMessage)};
    const std::string payload = Encode(end);
    m_out.Put({FrameKind::End, 0, m_task, payload});
    m_out.Flush();
}

bool StartedByPool() {
    int type = 0;
    socklen_t size = sizeof type;
    return ::getsockopt(kWorkerSocket, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
}

} // namespace

int RunWorker(const std::map<std::string, Role>& roles) {
    if (!StartedByPool()) {
        std::fputs("This program is started by others; it does nothing by itself.\n", stderr);
        return 2;
    }
    FollowTheParent();
    std::set_new_handler(OnNoMemory);
    std::set_terminate(OnTerminate);
    const int code = Session(roles).Run();
#ifdef VELMORA_SANITIZED
    ::_exit(code); // the search for leaks at exit needs calls that the wall refuses
#endif
    return code;
}

} // namespace workers
