// The text of a DOC document: which bytes its characters are, in their order.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocHeader.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace engine {

// Single-byte text of one code page, or of one that needs two bytes for some characters.
class DocCodePage {
  public:
    explicit DocCodePage(unsigned page);
    [[nodiscard]] bool IsLead(std::uint8_t byte) const { return m_lead[byte]; }
    [[nodiscard]] char32_t Character(std::uint8_t byte) const { return m_single[byte]; }
    [[nodiscard]] char32_t Character(std::uint8_t lead, std::uint8_t trail) const;

  private:
    unsigned m_page;
    std::array<char32_t, 256> m_single{};
    std::array<bool, 256> m_lead{};
};

// Characters that stand in one row in the document's stream.
struct DocPiece {
    std::uint32_t begin = 0, end = 0; // characters
    std::uint32_t at = 0;             // of the first one, in the document's stream
    bool wide = false;                // two bytes to a character
    std::uint16_t change = 0;         // what the piece says of its format
};

class DocPieces {
  public:
    // tables is the stream in which the tables stand. A damaged table of pieces gives what the
    // header says of the text's place.
    DocPieces(const DocHeader& header, std::string_view tables);

    [[nodiscard]] const std::vector<DocPiece>& All() const { return m_pieces; }
    // The first piece that ends behind a character.
    [[nodiscard]] std::size_t Find(std::uint64_t character) const;
    // The formats that pieces refer to.
    [[nodiscard]] std::string_view ChangesOf(std::uint16_t change) const;
    [[nodiscard]] bool Damaged() const { return m_damaged; }

  private:
    bool ReadTable(std::string_view table);
    void ReadPieces(std::string_view list);

    const DocHeader& m_header;
    std::vector<DocPiece> m_pieces;
    std::vector<std::string_view> m_changes;
    bool m_damaged = false;
};

} // namespace engine
