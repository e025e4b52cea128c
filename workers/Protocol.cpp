// The words that pool and worker exchange over their socket: frames, and what stands in them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "workers/Protocol.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace workers {

namespace {

constexpr std::size_t kReadBuffer = std::size_t{256} << 10;
// A buffer that grew beyond this is given back after the answer that needed it.
constexpr std::size_t kKeptBuffer = std::size_t{4} << 20;
constexpr std::size_t kGather = std::size_t{64} << 10;
// From this size on a payload is read exactly to its end and written without being copied.
constexpr std::size_t kLarge = std::size_t{32} << 10;

struct Header {
    std::uint32_t length;
    FrameKind kind;
    std::uint8_t type;
    TaskNumber task;
};
static_assert(sizeof(Header) == kHeaderSize);

void Put(std::string& bytes, std::uint64_t number) {
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void Put(std::string& bytes, std::string_view text) {
    Put(bytes, std::uint64_t{text.size()});
    bytes += text;
}

bool Get(std::string_view& bytes, std::uint64_t& number) {
    if (bytes.size() < sizeof number)
        return false;
    std::memcpy(&number, bytes.data(), sizeof number);
    bytes.remove_prefix(sizeof number);
    return true;
}

bool Get(std::string_view& bytes, std::string_view& text) {
    std::uint64_t size = 0;
    if (!Get(bytes, size) || size > bytes.size())
        return false;
    text = bytes.substr(0, size);
    bytes.remove_prefix(size);
    return true;
}

} // namespace

void AppendHeader(std::string& bytes, const Frame& frame) {
    const std::size_t length = frame.payload.size();
    if (length > kLargestFrame)
        throw std::length_error("a piece of " + std::to_string(length) + " bytes is too large");
    const Header header{static_cast<std::uint32_t>(length), frame.kind, frame.type, frame.task};
    bytes.append(reinterpret_cast<const char*>(&header), sizeof header);
}

std::string Encode(const Hello& hello) {
    std::string payload;
    Put(payload, hello.memoryLimit);
    Put(payload, static_cast<std::uint64_t>(hello.niceness));
    for (const auto& [name, value] : hello.settings) {
        Put(payload, name);
        Put(payload, value);
    }
    return payload;
}

bool Decode(std::string_view payload, Hello& hello) {
    std::uint64_t niceness = 0;
    if (!Get(payload, hello.memoryLimit) || !Get(payload, niceness))
        return false;
    hello.niceness = static_cast<std::int64_t>(niceness);
    while (!payload.empty()) {
        std::string_view name;
        std::string_view value;
        if (!Get(payload, name) || !Get(payload, value))
            return false;
        hello.settings[std::string(name)] = value;
    }
    return true;
}

std::string EncodeFrame(const Job& job) {
    std::string payload;
    payload.reserve(sizeof(std::uint64_t) + job.role.size() + job.request.size());
    Put(payload, job.role);
    payload += job.request;
    std::string frame;
    frame.reserve(kHeaderSize + payload.size());
    AppendHeader(frame, {FrameKind::Job, 0, job.task, payload});
    return frame += payload;
}

bool Decode(const Frame& frame, Job& job) {
    std::string_view payload = frame.payload;
    if (frame.kind != FrameKind::Job || !Get(payload, job.role))
        return false;
    job.task = frame.task;
    job.request = payload;
    return true;
}

std::string Encode(const End& end) {
    std::string payload;
    payload += static_cast<char>(end.verdict);
    payload += static_cast<char>(end.retire ? 1 : 0);
    payload += end.message;
    return payload;
}

bool Decode(std::string_view payload, End& end) {
    if (payload.size() < 2 || payload[0] < 0 ||
        payload[0] > static_cast<char>(Verdict::OutOfMemory))
        return false;
    end.verdict = static_cast<Verdict>(payload[0]);
    end.retire = payload[1] != 0;
    end.message = payload.substr(2);
    return true;
}

FrameReader::FrameReader() : m_bytes(new char[kReadBuffer]), m_capacity(kReadBuffer) {}

FrameReader::Cut FrameReader::Next(Frame& frame) {
    m_wanted = kHeaderSize;
    const std::size_t held = m_end - m_begin;
    if (held < kHeaderSize)
        return Cut::NeedMore;
    Header header{};
    std::memcpy(&header, m_bytes.get() + m_begin, sizeof header);
    if (header.length > kLargestFrame || header.kind < FrameKind::Hello ||
        header.kind > FrameKind::End)
        return Cut::Broken;
    m_wanted = kHeaderSize + header.length;
    if (held < m_wanted)
        return Cut::NeedMore;
    frame = {header.kind, header.type, header.task,
             std::string_view(m_bytes.get() + m_begin + kHeaderSize, header.length)};
    m_begin += m_wanted;
    m_wanted = kHeaderSize;
    return Cut::Frame;
}

std::span<char> FrameReader::Space() {
    const std::size_t held = m_end - m_begin;
    if (held == m_capacity) // never more than twice what really came
        MoveToFront(std::min(2 * m_capacity, m_wanted));
    else if (m_begin > 0)
        MoveToFront(m_capacity);
    // A large frame is read to its end and no further: what follows would have to be moved.
    const std::size_t missing = m_wanted - held;
    const std::size_t room = m_capacity - m_end;
    return {m_bytes.get() + m_end, missing >= kLarge ? std::min(room, missing) : room};
}

void FrameReader::GiveBack() {
    if (Empty() && m_capacity > kKeptBuffer)
        MoveToFront(kReadBuffer);
}

void FrameReader::MoveToFront(std::size_t capacity) {
    const std::size_t held = m_end - m_begin;
    if (capacity == m_capacity) {
        std::memmove(m_bytes.get(), m_bytes.get() + m_begin, held);
    } else {
        std::unique_ptr<char[]> bytes(new char[capacity]);
        std::memcpy(bytes.get(), m_bytes.get() + m_begin, held);
        m_bytes = std::move(bytes);
        m_capacity = capacity;
    }
    m_begin = 0;
    m_end = held;
}

FrameWriter::FrameWriter(int socket) : m_socket(socket) {
    m_gathered.reserve(kGather);
}

void FrameWriter::Put(const Frame& frame) {
    if (m_gathered.size() + kHeaderSize + frame.payload.size() > kGather)
        Flush();
    AppendHeader(m_gathered, frame);
    if (frame.payload.size() >= kLarge)
        WriteOut(frame.payload);
    else
        m_gathered += frame.payload;
}

void FrameWriter::Flush() {
    if (!m_gathered.empty())
        WriteOut({});
}

// Writes what was gathered, then tail.
void FrameWriter::WriteOut(std::string_view tail) {
    std::string_view head = m_gathered;
    while (!head.empty() || !tail.empty()) {
        const iovec parts[] = {{const_cast<char*>(head.data()), head.size()},
                               {const_cast<char*>(tail.data()), tail.size()}};
        const ssize_t written = ::writev(m_socket, parts, 2);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            ::_exit(0);
        const std::size_t ofHead =
            std::min<std::size_t>(head.size(), static_cast<std::size_t>(written));
        head.remove_prefix(ofHead);
        tail.remove_prefix(static_cast<std::size_t>(written) - ofHead);
    }
    m_gathered.clear();
}

} // namespace workers
