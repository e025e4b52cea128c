// The lines of a PDF page as the eye sees them, and which of them end inside a word.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/PdfFitz.h"

#include <cstdint>
#include <unordered_set>
#include <vector>

namespace engine {

[[nodiscard]] inline bool IsHyphen(int c) {
    return c == '-' || c == 0x2010 || c == 0xAD;
}

// Pieces of the library, from first to last, that stand on one base line.
struct VisualLine {
    const fz_stext_block* block;
    const fz_stext_line* first;
    const fz_stext_line* last;
    float left = 0; // points
    float right = 0;
};

[[nodiscard]] std::vector<VisualLine> CollectLines(const fz_stext_page& page);

// Decides whether the hyphen at the end of a line was only put there to break the word. It is
// sure of it, by the page alone, for a soft hyphen, and for a hyphen between small letters when
//  - the joined word stands elsewhere on the page, or
//  - the line stands in a column of lines that end at one right edge (ragged text breaks only at
//    hyphens that belong to the word), the page does not have the word with its hyphen or both
//    halves as words, and no "and" or "or" follows ("Ein- und Ausgang").
class HyphenJudge {
  public:
    // lines must outlive the judge.
    explicit HyphenJudge(const std::vector<VisualLine>& lines) : m_lines(lines) {}
    // Whether the last word of a line goes on in the next line, its hyphen falling away.
    [[nodiscard]] bool JoinsNext(std::size_t line);

  private:
    void LearnWords();
    [[nodiscard]] bool EndsAtColumnEdge(const VisualLine& line, float hyphenWidth) const;

    const std::vector<VisualLine>& m_lines;
    bool m_learned = false;
    std::unordered_set<std::uint64_t> m_words; // hashes of the page's whole words, small letters
};

} // namespace engine
