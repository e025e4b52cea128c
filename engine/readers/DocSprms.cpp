// Numbers and sizes of the changes of format.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/DocSprms.h"

#include "engine/readers/LittleEndian.h"

#include <algorithm>
#include <array>

namespace engine {
namespace {

DocSprm MeaningOf(std::uint16_t number) {
    switch (number) {
    case 0x4600:
        return DocSprm::Style;
    case 0x2416:
        return DocSprm::InTable;
    case 0x2417:
        return DocSprm::RowEnd;
    case 0x6649:
        return DocSprm::TableDepth;
    case 0x244B:
        return DocSprm::InnerCell;
    case 0x244C:
        return DocSprm::InnerRowEnd;
    case 0x2640:
        return DocSprm::Outline;
    case 0x460B:
        return DocSprm::List;
    case 0x260A:
        return DocSprm::ListLevel;
    case 0x6645:
    case 0x6646:
        return DocSprm::FarAway;
    case 0x0800:
        return DocSprm::Deleted;
    case 0x6A09:
        return DocSprm::Symbol;
    case 0x6A03:
        return DocSprm::Picture;
    default:
        return DocSprm::Other;
    }
}

DocSprm MiddleMeaningOf(std::uint8_t number) {
    switch (number) {
    case 2:
        return DocSprm::Style;
    case 24:
        return DocSprm::InTable;
    case 25:
        return DocSprm::RowEnd;
    case 65:
        return DocSprm::Deleted;
    case 93:
        return DocSprm::Font;
    default:
        return DocSprm::Other;
    }
}

constexpr std::size_t kBySizeByte = 255; // the value's first byte is its size

// By number; what is not listed has one byte.
std::size_t MiddleSizeOf(std::uint8_t number) {
    constexpr std::array<std::uint8_t, 17> kVariable{3,   12,  15,  23,  68,  74,  81,  82, 103,
                                                     105, 106, 108, 120, 133, 188, 190, 191};
    constexpr std::array<std::uint8_t, 4> kNone{0, 52, 83, 255};
    constexpr std::array<std::uint8_t, 49> kTwo{
        2,   16,  17,  18,  19,  21,  22,  26,  27,  28,  30,  31,  32,  33,  34, 35, 38,
        39,  40,  41,  42,  43,  45,  46,  47,  48,  49,  69,  72,  80,  93,  96, 97, 99,
        101, 107, 109, 110, 121, 122, 123, 124, 140, 141, 144, 145, 160, 161, 182};
    constexpr std::array<std::uint8_t, 12> kFour{20,  70,  164, 165, 166, 167,
                                                 168, 169, 170, 184, 189, 192};
    const auto isOneOf = [number](const auto& list) {
        return std::find(list.begin(), list.end(), number) != list.end();
    };
    if (isOneOf(kVariable))
        return kBySizeByte;
    if (isOneOf(kNone))
        return 0;
    if (isOneOf(kTwo))
        return 2;
    if (isOneOf(kFour))
        return 4;
    return number == 73 || number == 95 ? 3 : 1;
}

// Of the value behind a number; more than there is ends the list.
std::size_t SizeOf(std::uint16_t number, std::string_view value) {
    constexpr std::uint16_t kTable = 0xD608, kTabs = 0xC615;
    switch (number >> 13) {
    case 0:
    case 1:
        return 1;
    case 2:
    case 4:
    case 5:
        return 2;
    case 3:
        return 4;
    case 7:
        return 3;
    default:
        break;
    }
    if (number == kTable)
        return std::size_t{U16(value, 0)} + 1;
    if (number == kTabs && U8(value, 0) == 255) { // two lists, counted each by itself
        const std::size_t removed = U8(value, 1), added = 2 + removed * 4;
        return added + 1 + std::size_t{U8(value, added)} * 3;
    }
    return std::size_t{U8(value, 0)} + 1;
}

} // namespace

void ForEachSprm(std::string_view list, DocAge age, const TakeSprm& take) {
    const std::size_t numberSize = age == DocAge::New ? 2 : 1;
    while (list.size() > numberSize) {
        const std::string_view value = list.substr(numberSize);
        std::size_t size = 0;
        DocSprm what = DocSprm::Other;
        if (age == DocAge::New) {
            size = SizeOf(U16(list, 0), value);
            what = MeaningOf(U16(list, 0));
        } else {
            size = MiddleSizeOf(U8(list, 0));
            if (size == kBySizeByte) {
                constexpr std::uint8_t kTable = 190;
                size = U8(list, 0) == kTable ? std::size_t{U16(value, 0)} + 1
                                             : std::size_t{U8(value, 0)} + 1;
            }
            what = MiddleMeaningOf(U8(list, 0));
        }
        if (size > value.size())
            return;
        if (what != DocSprm::Other)
            take(what, value.substr(0, size));
        list = value.substr(size);
    }
}

void TakeShortSprm(std::uint16_t change, const TakeSprm& take) {
    if ((change & 1) != 0)
        return;
    const DocSprm what = MiddleMeaningOf(static_cast<std::uint8_t>((change >> 1) & 0x7F));
    const char value = static_cast<char>(change >> 8);
    if (what == DocSprm::InTable || what == DocSprm::RowEnd || what == DocSprm::Deleted)
        take(what, {&value, 1});
}

} // namespace engine
