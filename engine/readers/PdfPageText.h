// The text of one PDF page in reading order, and where each character stands.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace engine {

struct PdfPoint {
    float x = 0; // points (1/72 inch) from the left edge of the page as it is shown
    float y = 0; // points from its top edge, downwards
};

// Where a character stands: upper left, upper right, lower right, lower left, as the reader of
// the character sees it (a quad of rotated text is rotated).
using PdfQuad = std::array<PdfPoint, 4>;

struct PdfCharacter {
    std::uint32_t offset; // of its first byte in PdfPageText::utf8
    PdfQuad quad;         // of a note's character: the whole note
};

// A paragraph of the page, or an annotation or a form field's value (Block::Note).
struct PdfParagraph {
    Block block = Block::Paragraph;
    std::uint32_t begin = 0; // bytes in PdfPageText::utf8
    std::uint32_t end = 0;
};

// Index and page view both take a page's text from here, so that their word numbers agree.
struct PdfPageText {
    std::string utf8; // "\n" is a line break inside a paragraph
    std::vector<PdfParagraph> paragraphs;
    std::vector<PdfCharacter> characters; // ascending offsets; empty unless asked for
    float width = 0;                      // points
    float height = 0;
    bool damaged = false;                // part of the page could not be read
    bool isPicture = false;              // it has a picture and no text
    std::uint32_t knownCharacters = 0;   // blanks and notes do not count
    std::uint32_t unknownCharacters = 0; // the font does not tell what they mean (U+FFFD)
};

// Puts a page into sink as Block::Page. Every Text is a view into page.utf8, so a sink that wants
// to know where a word stands can tell its offset.
void EmitPdfPage(const PdfPageText& page, int number, DocumentSink& sink);

} // namespace engine
