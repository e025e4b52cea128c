// From the PDF library's picture of a page to text in reading order.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/PdfFitz.h"
#include "engine/readers/PdfPageText.h"

namespace engine {

// Appends the page's paragraphs to text as blocks of the given kind; text's width and height are
// set already.
//
// A block of the library is a paragraph. Pieces of a line that stand on one base line are joined
// by a blank, lines by a line break. A word that is hyphenated at the end of a line becomes one
// word again where that is sure (see HyphenJudge); it then stands on the upper line. Characters
// outside the page are left out, since nobody sees them.
void WalkPdfText(const fz_stext_page& page, Block block, bool withCharacters, PdfPageText& text);

// Appends a note, every character of which stands at rect.
void AppendPdfNote(const char* utf8, const fz_rect& rect, bool withCharacters, PdfPageText& text);

} // namespace engine
