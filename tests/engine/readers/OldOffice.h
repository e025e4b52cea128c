// Makes small binary documents in memory, and reads them with all that they hold.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/CompoundWriter.h"
#include "engine/readers/Reader.h"
#include "tests/engine/readers/MemberRecorder.h"
#include "tests/engine/readers/RecordingSink.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace engine {

// Numbers one after the other, lowest byte first.
class Binary {
  public:
    Binary& U8(unsigned value) { return Number(value, 1); }
    Binary& U16(unsigned value) { return Number(value, 2); }
    Binary& U32(std::uint64_t value) { return Number(value, 4); }
    Binary& Raw(std::string_view more) {
        bytes += more;
        return *this;
    }
    // Zeros up to a place.
    Binary& To(std::size_t at) {
        bytes.resize(at);
        return *this;
    }
    std::string bytes;

  private:
    Binary& Number(std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i)
            bytes += static_cast<char>(value >> (8 * i));
        return *this;
    }
};

inline std::string Wide(std::u16string_view text) {
    Binary wide;
    for (const char16_t unit : text)
        wide.U16(unit);
    return wide.bytes;
}

using Streams = std::vector<std::pair<std::string, std::string>>; // path and content

inline std::string MakeCompound(const Streams& streams) {
    CompoundWriter writer;
    for (const auto& [path, content] : streams)
        writer.Add(path, content);
    return writer.Finish();
}

// A record of a presentation: a container holds other records.
inline std::string Record(unsigned type, std::string_view payload, bool container = false,
                          unsigned instance = 0) {
    return Binary()
        .U16(instance << 4 | (container ? 0xFU : 0U))
        .U16(type)
        .U32(payload.size())
        .Raw(payload)
        .bytes;
}

struct OldReading {
    RecordingSink sink;
    MemberRecorder members;
};

// Fails loudly where blocks are not well nested.
inline OldReading ReadOld(Kind kind, const std::string& bytes, const std::string& name = {}) {
    OldReading reading;
    ReadDocument(kind, Source{bytes, name}, reading.sink, reading.members);
    if (!reading.sink.Whole())
        throw std::runtime_error("blocks are not well nested: " + reading.sink.text);
    return reading;
}

// Reads damaged copies of a document; all that may happen is a ReadError. Answers how many of
// them still gave some text.
inline int ReadDamagedCopies(Kind kind, const std::string& bytes, const std::string& name = {}) {
    int withText = 0;
    const auto read = [&](const std::string& copy) {
        RecordingSink sink;
        MemberRecorder members;
        try {
            ReadDocument(kind, Source{copy, name}, sink, members);
        } catch (const ReadError&) {
            // told is enough
        }
        withText += sink.text.empty() ? 0 : 1;
    };
    constexpr std::size_t kCuts = 60, kFlips = 240;
    for (std::size_t i = 0; i < kCuts; ++i)
        read(bytes.substr(0, bytes.size() * i / kCuts));
    std::uint32_t random = 20240229;
    for (std::size_t i = 0; i < kFlips; ++i) {
        std::string copy = bytes;
        for (std::size_t flip = 0; flip <= i % 24; ++flip) {
            random = random * 1664525 + 1013904223;
            const std::size_t at = (random >> 4) % copy.size();
            copy[at] = static_cast<char>(i % 3 == 0 ? 0xFF : random >> 24);
        }
        read(copy);
    }
    return withText;
}

} // namespace engine
