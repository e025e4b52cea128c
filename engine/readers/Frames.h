// What a reading worker answers, frame by frame.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"
#include "engine/readers/Wire.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

// A file gives, for each of its documents, one Begin, any number of Chunks and one End. Members
// of a container come before the container's own document, whose path is empty.
enum class Frame : std::uint8_t { Begin = 1, Chunk = 2, End = 3, Html = 4 };

// How many bytes of plain text one chunk holds at most, about.
inline constexpr std::size_t kChunkText = std::size_t{256} << 10;

struct DocumentHead {
    std::string path; // "" for the file itself, else ">n|MEMBER" as it follows the file's name
    std::string display;
    std::int64_t modified = 0; // seconds since 1970; 0 unknown
    std::uint64_t size = 0;    // bytes
    std::uint8_t kind = 0;     // engine::Kind
};

struct TextChunk {
    std::uint64_t plainLength = 0; // bytes of text before compression
    std::uint64_t wordCount = 0;
    std::string_view terms; // folded words, each closed by a line feed; a \x01 before a word says
                            // that it shares the place of the one before
    std::string_view text;  // zstd
    std::string_view vocabulary; // terms that are new in this document, each closed by a line feed
};

struct FieldRange {
    std::string name, value;
    std::uint64_t first = 0, last = 0; // word numbers; first > last: no word in it
};

struct DocumentEnd {
    ReadState state = ReadState::Read;
    std::string reason;
    std::uint64_t words = 0;
    std::vector<FieldRange> fields;
};

[[nodiscard]] std::string Pack(const DocumentHead& head);
[[nodiscard]] std::string Pack(const TextChunk& chunk);
[[nodiscard]] std::string Pack(const DocumentEnd& end);
// Throw std::runtime_error on what no worker of ours sends.
[[nodiscard]] DocumentHead UnpackHead(std::string_view bytes);
[[nodiscard]] TextChunk UnpackChunk(std::string_view bytes); // views into bytes
[[nodiscard]] DocumentEnd UnpackEnd(std::string_view bytes);

// The marks that may not stand in a name because they part it; they travel as private-use twins.
[[nodiscard]] std::string EscapeMarks(std::string_view name);

} // namespace engine
