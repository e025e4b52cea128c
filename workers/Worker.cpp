// A worker as the pool uses it: greeted, given one task after the other, replaced when it fails.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "workers/Worker.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

namespace workers {

namespace {

// For loading what the roles need; generous, because a busy machine is no fault of the worker.
constexpr std::chrono::seconds kStartLimit{60};

Outcome Broken(const std::string& how) {
    return {Ending::BadAnswer, how, false};
}

} // namespace

bool Patience::Wait(int socket, short events) {
    using namespace std::chrono;
    while (m_left.count() > 0) {
        const auto before = steady_clock::now();
        const auto wait = std::min<std::int64_t>(ceil<milliseconds>(m_left).count(),
                                                 std::numeric_limits<int>::max());
        pollfd ready{socket, events, 0};
        const int count = ::poll(&ready, 1, static_cast<int>(wait));
        m_left -= steady_clock::now() - before;
        if (count > 0)
            return true;
    }
    return false;
}

Worker::Worker(const PoolOptions& options) : m_options(options), m_process(options.executable) {}

std::string Worker::Greet() {
    Hello hello;
    hello.memoryLimit = m_options.memoryLimit;
    hello.niceness = m_options.niceness;
    hello.settings.insert(m_options.settings.begin(), m_options.settings.end());
    const std::string payload = Encode(hello);
    std::string bytes;
    AppendHeader(bytes, {FrameKind::Hello, 0, kGreeting, payload});
    bytes += payload;

    Patience patience{kStartLimit};
    Arrival arrival = Send(bytes, -1, patience);
    Frame frame;
    while (arrival == Arrival::Bytes) {
        const FrameReader::Cut cut = m_reader.Next(frame);
        if (cut == FrameReader::Cut::Broken)
            return "it does not speak as a worker does";
        if (cut == FrameReader::Cut::NeedMore) {
            arrival = Receive(patience);
            continue;
        }
        End end;
        if (frame.kind == FrameKind::End && Decode(frame.payload, end))
            return std::string(end.message);
        if (frame.kind != FrameKind::Ready)
            return "it does not speak as a worker does";
        m_walls = frame.payload;
        return {};
    }
    const std::string why = Lost(arrival).message;
    return why.empty() ? "it does not start" : why;
}

bool Worker::Idle() {
    char byte = 0;
    const ssize_t count = ::recv(m_process.Socket(), &byte, 1, MSG_DONTWAIT | MSG_PEEK);
    const bool silent = count < 0 && errno == EAGAIN;
    m_process.DrainErrors();
    return silent && m_reader.Empty();
}

Outcome Worker::Run(Task& task, Job job, int file, const std::atomic<bool>& cancelled) {
    Patience patience(m_options.timeLimit);
    job.task = ++m_task;
    if (const Arrival sent = Send(EncodeFrame(job), file, patience); sent != Arrival::Bytes)
        return Lost(sent);
    std::size_t answered = 0;
    for (;;) {
        if (const auto outcome = HandOut(task, answered, cancelled))
            return *outcome;
        if (const Arrival arrival = Receive(patience); arrival != Arrival::Bytes)
            return cancelled ? Outcome{Ending::Cancelled, {}, false} : Lost(arrival);
    }
}

std::optional<Outcome> Worker::HandOut(Task& task, std::size_t& answered,
                                       const std::atomic<bool>& cancelled) {
    Frame frame;
    for (;;) {
        if (cancelled)
            return Outcome{Ending::Cancelled, {}, false};
        switch (m_reader.Next(frame)) {
        case FrameReader::Cut::NeedMore:
            return std::nullopt;
        case FrameReader::Cut::Broken:
            return Broken("the worker broke the protocol");
        case FrameReader::Cut::Frame:
            break;
        }
        answered += kHeaderSize + frame.payload.size();
        if (frame.kind != FrameKind::End && answered > m_options.answerLimit)
            return Broken("the answer is larger than " + std::to_string(m_options.answerLimit) +
                          " bytes");
        if (frame.task == static_cast<TaskNumber>(m_task - 1))
            continue; // the one before did not know when to stop
        if (frame.task != m_task)
            return Broken("the worker broke the protocol");
        if (frame.kind == FrameKind::End)
            return Finish(frame);
        if (frame.kind != FrameKind::Piece)
            return Broken("the worker broke the protocol");
        task.OnFrame(frame.type, frame.payload);
    }
}

Outcome Worker::Finish(const Frame& frame) {
    End end;
    if (!Decode(frame.payload, end))
        return Broken("the worker broke the protocol");
    if (!m_reader.Empty())
        return Broken("the worker went on after the end of its answer");
    Outcome outcome{Ending::Done, {}, !end.retire};
    if (end.verdict == Verdict::OutOfMemory)
        outcome = {Ending::OutOfMemory, "the worker reached its memory cap", false};
    else if (end.verdict == Verdict::Refused)
        outcome = {Ending::Refused, std::string(end.message), !end.retire};
    m_reader.GiveBack();
    return outcome;
}

Outcome Worker::Lost(Arrival why) {
    if (why == Arrival::TimedOut)
        return {Ending::TimedOut, "no answer within the time limit", false};
    Death death = m_process.End();
    return {death.ending, std::move(death.message), false};
}

Worker::Arrival Worker::Send(std::string_view bytes, int file, Patience& patience) {
    while (!bytes.empty()) {
        iovec part{const_cast<char*>(bytes.data()), bytes.size()};
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
        if (file >= 0) {
            message.msg_control = control;
            message.msg_controllen = sizeof control;
            cmsghdr* header = CMSG_FIRSTHDR(&message);
            header->cmsg_level = SOL_SOCKET;
            header->cmsg_type = SCM_RIGHTS;
            header->cmsg_len = CMSG_LEN(sizeof(int));
            std::memcpy(CMSG_DATA(header), &file, sizeof file);
        }
        const ssize_t sent = ::sendmsg(m_process.Socket(), &message, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(sent));
            file = -1; // travels with the first byte
        } else if (errno == EAGAIN) {
            if (!patience.Wait(m_process.Socket(), POLLOUT))
                return Arrival::TimedOut;
        } else if (errno != EINTR)
            return Arrival::Closed;
    }
    return Arrival::Bytes;
}

Worker::Arrival Worker::Receive(Patience& patience) {
    const std::span<char> space = m_reader.Space();
    for (;;) {
        const ssize_t count = ::recv(m_process.Socket(), space.data(), space.size(), MSG_DONTWAIT);
        if (count > 0) {
            m_reader.Added(static_cast<std::size_t>(count));
            return Arrival::Bytes;
        }
        if (count == 0 || (errno != EAGAIN && errno != EINTR))
            return Arrival::Closed;
        if (errno == EAGAIN && !patience.Wait(m_process.Socket(), POLLIN))
            return Arrival::TimedOut;
    }
}

} // namespace workers
