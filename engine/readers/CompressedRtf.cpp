// LZ77 with a ring of 4096 bytes that begins with usual RTF.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CompressedRtf.h"

#include "engine/readers/LittleEndian.h"

#include <algorithm>
#include <array>

namespace engine {
namespace {

constexpr std::size_t kHeaderSize = 16;
constexpr std::size_t kRing = 4096;
constexpr std::uint32_t kCompressed = 0x75465A4C, kStored = 0x414C454D;
constexpr std::string_view kPrefix =
    "{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}{\\f0\\fnil \\froman \\fswiss \\fmodern "
    "\\fscript \\fdecor MS Sans SerifSymbolArialTimes New RomanCourier{\\colortbl\\red0\\green0"
    "\\blue0\r\n\\par \\pard\\plain\\f0\\fs20\\b\\i\\u\\tab\\tx";
static_assert(kPrefix.size() == 207);

std::string Inflate(std::string_view packed) {
    std::array<char, kRing> ring{};
    std::copy(kPrefix.begin(), kPrefix.end(), ring.begin());
    std::size_t end = kPrefix.size();
    std::string text;
    const auto put = [&](char c) {
        text += c;
        ring[end] = c;
        end = (end + 1) % kRing;
    };
    // A byte of flags, then eight things: a byte, or the place and length of a repetition.
    for (std::size_t at = 0; at < packed.size();) {
        unsigned flags = U8(packed, at++);
        for (int i = 0; i < 8 && at < packed.size(); ++i, flags >>= 1) {
            if ((flags & 1) == 0) {
                put(packed[at++]);
                continue;
            }
            const unsigned both = U8(packed, at) << 8 | U8(packed, at + 1);
            at += 2;
            const std::size_t from = both >> 4;
            if (from == end)
                return text; // the mark of the end
            for (std::size_t k = 0; k < (both & 0xF) + 2; ++k)
                put(ring[(from + k) % kRing]);
        }
    }
    return text;
}

} // namespace

std::string UnpackRtf(std::string_view packed) {
    const std::uint32_t size = U32(packed, 4), method = U32(packed, 8);
    const std::string_view content =
        Slice(packed, kHeaderSize, std::max<std::uint64_t>(U32(packed, 0), 12) - 12);
    if (method == kStored)
        return std::string(content.substr(0, size));
    if (method != kCompressed)
        return {};
    std::string text = Inflate(content);
    text.resize(std::min<std::size_t>(text.size(), size));
    return text;
}

} // namespace engine
