// The table of pieces.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/DocPieces.h"

#include "engine/readers/CodePage.h"
#include "engine/readers/LittleEndian.h"
#include "engine/text/Utf8.h"

#include <algorithm>

namespace engine {
namespace {

char32_t Decode(std::string_view bytes, unsigned page) {
    const std::string text = DecodeCodePage(bytes, page);
    std::size_t at = 0;
    return text.empty() ? U'\uFFFD' : NextCodePoint(text, at);
}

} // namespace

DocCodePage::DocCodePage(unsigned page) : m_page(page) {
    const bool eastAsian = page == 932 || page == 936 || page == 949 || page == 950;
    for (std::size_t i = 0; i < m_single.size(); ++i) {
        const char byte = static_cast<char>(i);
        m_single[i] = i < 0x80 ? static_cast<char32_t>(i) : Decode({&byte, 1}, page);
        m_lead[i] = eastAsian && i > 0x80 && i < 0xFF && (page != 932 || i < 0xA0 || i >= 0xE0);
    }
}

char32_t DocCodePage::Character(std::uint8_t lead, std::uint8_t trail) const {
    const std::array<char, 2> bytes{static_cast<char>(lead), static_cast<char>(trail)};
    return Decode({bytes.data(), bytes.size()}, m_page);
}

DocPieces::DocPieces(const DocHeader& header, std::string_view tables) : m_header(header) {
    const DocHeader::Place place = header.PlaceOf(DocTable::Pieces);
    const bool listed = header.age == DocAge::New || header.fast;
    if (listed && ReadTable(Slice(tables, place.at, place.size)))
        return;
    m_damaged = listed;
    m_pieces.clear();
    const std::uint64_t room =
        header.textEnd > header.textBegin ? header.textEnd - header.textBegin : 0;
    DocPiece whole;
    whole.at = header.textBegin;
    whole.wide = header.age == DocAge::New ? room / 2 >= header.TextLength() : header.wideText;
    whole.end = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(header.TextLength(), whole.wide ? room / 2 : room));
    if (whole.end > 0)
        m_pieces.push_back(whole);
}

// The table is behind any number of lists of formats.
bool DocPieces::ReadTable(std::string_view table) {
    enum : std::uint8_t { kFormats = 1, kPieces = 2 };
    while (!table.empty()) {
        const std::uint8_t what = U8(table, 0);
        if (what == kPieces) {
            ReadPieces(Slice(table, 5, U32(table, 1)));
            return !m_pieces.empty();
        }
        if (what != kFormats)
            return false;
        const std::size_t size = U16(table, 1);
        m_changes.push_back(Slice(table, 3, size));
        table = Slice(table, 3 + size);
    }
    return false;
}

void DocPieces::ReadPieces(std::string_view list) {
    constexpr std::size_t kPlace = 4, kPiece = 8;
    const std::size_t count = list.size() < kPlace ? 0 : (list.size() - kPlace) / (kPlace + kPiece);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string_view entry = Slice(list, (count + 1) * kPlace + i * kPiece, kPiece);
        DocPiece piece;
        piece.begin = U32(list, i * kPlace);
        piece.end = U32(list, (i + 1) * kPlace);
        piece.at = U32(entry, 2);
        piece.change = U16(entry, 6);
        constexpr std::uint32_t kNarrow = 0x40000000;
        if (m_header.age == DocAge::New) {
            piece.wide = (piece.at & kNarrow) == 0;
            if (!piece.wide)
                piece.at = (piece.at & ~kNarrow) / 2;
        } else {
            piece.wide = m_header.wideText;
        }
        const std::uint32_t before = m_pieces.empty() ? 0 : m_pieces.back().end;
        if (piece.begin < before || piece.end <= piece.begin) { // they have to follow each other
            m_damaged = m_damaged || piece.begin != piece.end;
            continue;
        }
        m_pieces.push_back(piece);
    }
}

std::size_t DocPieces::Find(std::uint64_t character) const {
    return static_cast<std::size_t>(
        std::upper_bound(m_pieces.begin(), m_pieces.end(), character,
                         [](std::uint64_t at, const DocPiece& piece) { return at < piece.end; }) -
        m_pieces.begin());
}

std::string_view DocPieces::ChangesOf(std::uint16_t change) const {
    const std::size_t index = change >> 1;
    return (change & 1) != 0 && index < m_changes.size() ? m_changes[index] : std::string_view();
}

} // namespace engine
