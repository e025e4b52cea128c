// The words that pool and worker exchange over their socket: frames, and what stands in them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace workers {

// The worker's end of the socket.
inline constexpr int kWorkerSocket = 3;
// Exit code of a worker that ran out of memory where no exception could tell.
inline constexpr int kExitOutOfMemory = 86;

inline constexpr std::size_t kHeaderSize = 8;
inline constexpr std::size_t kLargestFrame = std::size_t{64} << 20;

enum class FrameKind : std::uint8_t {
    Hello = 1, // pool: settings, once
    Ready,     // worker: prepared and walled in; payload describes the walls
    Job,       // pool: one task, with the file's descriptor
    Piece,     // worker: a piece of the answer
    End,       // worker: the answer's end; before Ready: why it cannot start
};

// Counts the tasks of one worker and wraps around. Frames say which task they belong to, so that
// what comes late is not taken for the answer to the next one.
using TaskNumber = std::uint16_t;
inline constexpr TaskNumber kGreeting = 0x5741; // of Hello and Ready; the first task is the next

struct Frame {
    FrameKind kind{};
    std::uint8_t type = 0; // of a Piece, the role's own
    TaskNumber task = kGreeting;
    std::string_view payload;
};

// The header of frame, in this machine's byte order: both sides run on it. Throws
// std::length_error when the payload is larger than a frame may be.
void AppendHeader(std::string& bytes, const Frame& frame);

struct Hello {
    std::uint64_t memoryLimit = 0;
    std::int64_t niceness = 0;
    std::map<std::string, std::string> settings;
};
[[nodiscard]] std::string Encode(const Hello& hello);
[[nodiscard]] bool Decode(std::string_view payload, Hello& hello);

struct Job {
    TaskNumber task = kGreeting;
    std::string_view role;
    std::string_view request;
};
// The whole frame; throws std::length_error when it would be larger than a frame may be.
[[nodiscard]] std::string EncodeFrame(const Job& job);
// The views point into the frame.
[[nodiscard]] bool Decode(const Frame& frame, Job& job);

enum class Verdict : std::uint8_t { Done, Refused, OutOfMemory };
struct End {
    Verdict verdict = Verdict::Done;
    bool retire = false; // the worker asks to be replaced
    std::string_view message;
};
[[nodiscard]] std::string Encode(const End& end);
[[nodiscard]] bool Decode(std::string_view payload, End& end);

// Cuts a stream of bytes into frames. Holds one buffer, into which the socket is read and of
// which the frames are views; it grows with frames that really arrive, never by announcement.
class FrameReader {
  public:
    enum class Cut : std::uint8_t { Frame, NeedMore, Broken };

    FrameReader();
    // The next frame, valid until the next call of Space. Broken: not a frame of ours.
    [[nodiscard]] Cut Next(Frame& frame);
    // Where the next bytes may be read to; never empty. Call it after Next said NeedMore.
    [[nodiscard]] std::span<char> Space();
    void Added(std::size_t count) { m_end += count; }
    // Frees the memory that very large frames took, when nothing is left in it.
    void GiveBack();
    // Whether no byte is left that Next has not given out.
    [[nodiscard]] bool Empty() const { return m_begin == m_end; }

  private:
    void MoveToFront(std::size_t capacity);

    std::unique_ptr<char[]> m_bytes;
    std::size_t m_capacity = 0;
    std::size_t m_begin = 0;            // of the first frame not given out
    std::size_t m_end = 0;              // of what was read
    std::size_t m_wanted = kHeaderSize; // bytes of the frame that is not complete yet
};

// The worker's way out: small frames are gathered, large ones go out without being copied.
// When the pool is gone the process ends, for it has no purpose left.
class FrameWriter {
  public:
    explicit FrameWriter(int socket);
    // Throws as AppendHeader does.
    void Put(const Frame& frame);
    void Flush();

  private:
    void WriteOut(std::string_view tail);

    int m_socket;
    std::string m_gathered; // reserved once, so that an end can be sent without memory
};

} // namespace workers
