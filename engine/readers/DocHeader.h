// The header of a DOC document: how it is made and where its tables stand.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace engine {

// The text is one long row of characters, each story behind the one before.
enum class DocStory : std::uint8_t {
    Main,
    Footnotes,
    Headers, // and footers
    Macros,
    Comments,
    Endnotes,
    TextBoxes,
    HeaderTextBoxes,
};
inline constexpr std::size_t kDocStories = 8;

// Tables by their place in the list that the header holds.
enum class DocTable : std::uint8_t {
    Styles = 1,
    FootnoteAnchors = 2,
    FootnoteTexts = 3,
    CommentAnchors = 4,
    CommentTexts = 5,
    HeaderTexts = 11,
    CharacterPages = 12,
    ParagraphPages = 13,
    Fonts = 15,
    Pieces = 33,
    ShapeAnchors = 40,
    EndnoteAnchors = 46,
    EndnoteTexts = 47,
    Drawings = 50,
    TextBoxTexts = 56,
    Lists = 73,
    ListUses = 74,
};

// The programs of 1991, of 1993 and 1995, and all since then.
enum class DocAge : std::uint8_t { Old, Middle, New };

struct DocHeader {
    DocAge age = DocAge::New;
    unsigned language = 0;
    bool fast = false; // saved in haste: the text stands in pieces
    bool encrypted = false;
    bool firstTable = false; // the tables are in the stream "1Table", else in "0Table"
    bool wideText = false;   // two bytes to a character where there is no table of pieces
    bool macintosh = false;
    std::uint32_t textBegin = 0, textEnd = 0;         // in the document's stream
    std::array<std::uint32_t, kDocStories> lengths{}; // in characters
    // Pages of formats that the tables of a document saved in haste leave out.
    std::uint16_t characterPages = 0, paragraphPages = 0;

    struct Place {
        std::uint32_t at = 0, size = 0;
    };
    [[nodiscard]] Place PlaceOf(DocTable table) const;
    [[nodiscard]] std::uint64_t BeginOf(DocStory story) const; // its first character
    [[nodiscard]] std::uint64_t TextLength() const;            // of all stories

    std::string_view bytes; // of the document's stream
};

// Throws ReadError where bytes are no such document. Encryption is only told.
[[nodiscard]] DocHeader ReadDocHeader(std::string_view bytes);

} // namespace engine
