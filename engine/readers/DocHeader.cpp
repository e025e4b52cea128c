// The header in its three layouts.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/DocHeader.h"

#include "engine/readers/LittleEndian.h"
#include "engine/readers/Reader.h"

#include <algorithm>

namespace engine {
namespace {

constexpr std::uint16_t kMark = 0xA5EC, kMiddleMark = 0xA5DC, kOldMark = 0xA5DB;
constexpr std::uint16_t kFirstMiddle = 101, kFirstNew = 106; // versions of the layout

} // namespace

DocHeader::Place DocHeader::PlaceOf(DocTable table) const {
    const auto index = static_cast<std::size_t>(table);
    if (age == DocAge::Old) {
        constexpr std::size_t kList = 88, kEntry = 6;
        return {U32(bytes, kList + index * kEntry), U16(bytes, kList + index * kEntry + 4)};
    }
    if (age == DocAge::New) {
        constexpr std::size_t kCount = 152, kList = 154;
        if (index >= U16(bytes, kCount))
            return {};
        return {U32(bytes, kList + index * 8), U32(bytes, kList + index * 8 + 4)};
    }
    constexpr std::size_t kList = 88, kBehindNumbers = 402;
    constexpr std::size_t kGapAt = 38; // other things stand in between
    if (table == DocTable::ShapeAnchors || table > DocTable::EndnoteTexts)
        return {};
    const std::size_t at =
        index < kGapAt ? kList + index * 8 : kBehindNumbers + (index - kGapAt) * 8;
    return {U32(bytes, at), U32(bytes, at + 4)};
}

std::uint64_t DocHeader::BeginOf(DocStory story) const {
    std::uint64_t begin = 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(story); ++i)
        begin += lengths[i];
    return begin;
}

std::uint64_t DocHeader::TextLength() const {
    std::uint64_t length = 0;
    for (const std::uint32_t each : lengths)
        length += each;
    return length;
}

DocHeader ReadDocHeader(std::string_view bytes) {
    DocHeader header;
    header.bytes = bytes;
    const std::uint16_t mark = U16(bytes, 0), version = U16(bytes, 2), flags = U16(bytes, 10);
    const bool known = mark == kMark || mark == kMiddleMark || mark == kOldMark;
    constexpr std::size_t kShortest = 88;
    if (!known || bytes.size() < kShortest)
        throw ReadError(ReadState::Damaged, "the header of the document is damaged");
    header.age = mark == kOldMark || version < kFirstMiddle ? DocAge::Old
                 : version < kFirstNew                      ? DocAge::Middle
                                                            : DocAge::New;
    header.language = U16(bytes, 6);
    header.fast = (flags & 0x0004) != 0;
    header.encrypted = (flags & 0x0100) != 0;
    header.firstTable = (flags & 0x0200) != 0;
    header.macintosh = U16(bytes, 20) == 0x0100;
    header.textBegin = U32(bytes, 24);
    header.textEnd = U32(bytes, 28);
    const std::size_t lengths = header.age == DocAge::New ? 76 : 52;
    const std::size_t stories = header.age == DocAge::Old ? 5 : kDocStories;
    for (std::size_t i = 0; i < stories; ++i) // a negative one is damage
        header.lengths[i] =
            U32(bytes, lengths + i * 4) > 0x7FFFFFFF ? 0 : U32(bytes, lengths + i * 4);
    if (header.age == DocAge::Middle) {
        header.characterPages = U16(bytes, 398);
        header.paragraphPages = U16(bytes, 400);
        const std::uint64_t room =
            header.textEnd > header.textBegin ? header.textEnd - header.textBegin : 0;
        header.wideText = (flags & 0x1000) != 0 && room / 2 >= header.TextLength();
    }
    return header;
}

} // namespace engine
