// The lines of a PDF page as the eye sees them, and which of them end inside a word.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/PdfLines.h"

#include "engine/readers/Limits.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

namespace engine {

namespace {

constexpr int kSoftHyphen = 0xAD;

// Whether b goes on where a ends, on the same base line.
bool OnOneBaseLine(const fz_stext_line& a, const fz_stext_line& b) {
    if (a.wmode != 0 || b.wmode != 0 || a.last_char == nullptr || b.first_char == nullptr)
        return false;
    const fz_stext_char& end = *a.last_char;
    const float dx = b.first_char->origin.x - end.origin.x;
    const float dy = b.first_char->origin.y - end.origin.y;
    const float along = a.dir.x * dx + a.dir.y * dy;
    const float off = -a.dir.y * dx + a.dir.x * dy;
    return along > 0 && std::fabs(off) < 0.5F * end.size;
}

// A word as it is looked up: small letters only, one unit a character.
using Letters = std::u32string;

std::uint64_t Hash(std::u32string_view letters) {
    return std::hash<std::u32string_view>()(letters);
}

// What a line ends in, as far as hyphens need it.
struct LineEnd {
    int hyphen = 0; // 0: the line does not end in one
    float hyphenWidth = 0;
    Letters half;       // the letters right before the hyphen
    bool simple = true; // the word has nothing but letters and punctuation before it
};

LineEnd LookAtEnd(const VisualLine& line) {
    LineEnd end;
    for (const fz_stext_char* ch = line.last->first_char; ch != nullptr; ch = ch->next) {
        if (ch->c == ' ') {
            if (end.hyphen != 0 && ch->next == nullptr)
                break; // a blank after the hyphen does not count
            end = {};
        } else if (IsHyphen(ch->c) &&
                   (ch->next == nullptr || (ch->next->c == ' ' && ch->next->next == nullptr))) {
            end.hyphen = ch->c;
            end.hyphenWidth = ch->quad.lr.x - ch->quad.ll.x;
        } else if (u_isalpha(ch->c)) {
            end.half += static_cast<char32_t>(ch->c);
        } else {
            end.half.clear();
            end.simple = end.simple && u_ispunct(ch->c) && !IsHyphen(ch->c);
        }
    }
    return end;
}

// The letters that a line begins with.
Letters LookAtBegin(const VisualLine& line) {
    Letters half;
    for (const fz_stext_char* ch = line.first->first_char; ch != nullptr && u_isalpha(ch->c);
         ch = ch->next)
        half += static_cast<char32_t>(ch->c);
    return half;
}

bool IsSmall(const Letters& letters) {
    return std::all_of(letters.begin(), letters.end(),
                       [](char32_t c) { return u_islower(static_cast<UChar32>(c)); });
}

// "Ein- und Ausgang": the hyphen stands for the rest of the word.
bool IsConjunction(const Letters& word) {
    static constexpr std::u32string_view kWords[] = {U"and", U"or", U"und", U"oder", U"bzw",
                                                     U"bis", U"et", U"ou",  U"sowie"};
    return std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords);
}

} // namespace

std::vector<VisualLine> CollectLines(const fz_stext_page& page) {
    std::vector<VisualLine> lines;
    for (const fz_stext_block* block = page.first_block; block != nullptr; block = block->next) {
        if (block->type != FZ_STEXT_BLOCK_TEXT)
            continue;
        for (const fz_stext_line* piece = block->u.t.first_line; piece != nullptr;
             piece = piece->next) {
            if (!lines.empty() && lines.back().block == block &&
                OnOneBaseLine(*lines.back().last, *piece)) {
                lines.back().last = piece;
                lines.back().right = std::max(lines.back().right, piece->bbox.x1);
            } else {
                lines.push_back({block, piece, piece, piece->bbox.x0, piece->bbox.x1});
            }
        }
    }
    return lines;
}

bool HyphenJudge::JoinsNext(std::size_t index) {
    if (index + 1 >= m_lines.size() || m_lines.size() > kMaxPdfLinesForHyphens)
        return false;
    const VisualLine& line = m_lines[index];
    const VisualLine& next = m_lines[index + 1];
    const fz_stext_char* last = line.last->last_char;
    if (next.block != line.block || line.first->wmode != 0 || line.first->dir.x < 0.99F ||
        last == nullptr || (last->c != ' ' && !IsHyphen(last->c)))
        return false;
    const LineEnd end = LookAtEnd(line);
    const Letters rest = LookAtBegin(next);
    if (end.hyphen == 0 || end.half.size() < 2 || rest.size() < 2 || !IsSmall(rest) ||
        !u_islower(static_cast<UChar32>(end.half.back())))
        return false;
    if (end.hyphen == kSoftHyphen)
        return true;
    if (!end.simple)
        return false;
    LearnWords();
    const auto knows = [this](const Letters& word) {
        Letters small = word;
        for (char32_t& c : small)
            c = static_cast<char32_t>(u_tolower(static_cast<UChar32>(c)));
        return m_words.count(Hash(small)) > 0;
    };
    if (knows(end.half + rest))
        return true;
    return !knows(end.half + U"-" + rest) && !(knows(end.half) && knows(rest)) &&
           !IsConjunction(rest) && EndsAtColumnEdge(line, end.hyphenWidth);
}

// Whether of the lines that begin where this one begins enough end where it ends. A hyphen may
// hang out into the margin.
bool HyphenJudge::EndsAtColumnEdge(const VisualLine& line, float hyphenWidth) const {
    constexpr float kTolerance = 1.0F; // points
    int begin = 0;
    int end = 0;
    for (const VisualLine& other : m_lines) {
        if (&other == &line || std::fabs(other.left - line.left) > 2 * kTolerance)
            continue;
        ++begin;
        if (other.right > line.right - hyphenWidth - kTolerance &&
            other.right < line.right + kTolerance)
            ++end;
    }
    return end >= 1 && end * 5 >= begin * 2;
}

// Words are runs of letters; two that a hyphen joins are learned as a pair too. Halves at the
// broken ends of lines are not words.
void HyphenJudge::LearnWords() {
    if (m_learned)
        return;
    m_learned = true;
    bool broken = false; // the line before ends in a hyphen
    for (const VisualLine& line : m_lines) {
        Letters word;
        Letters before; // the word and the hyphen right before this one
        bool whole = !broken;
        const auto learn = [&] {
            if (!word.empty() && whole) {
                m_words.insert(Hash(word));
                if (!before.empty())
                    m_words.insert(Hash(before + word));
            }
        };
        for (const fz_stext_line* piece = line.first;; piece = piece->next) {
            for (const fz_stext_char* ch = piece->first_char; ch != nullptr; ch = ch->next) {
                if (u_isalpha(ch->c)) {
                    word += static_cast<char32_t>(u_tolower(ch->c));
                    continue;
                }
                broken = IsHyphen(ch->c);
                if (broken && ch == piece->last_char && piece == line.last)
                    break;
                learn();
                before = broken && !word.empty() ? word + U"-" : Letters();
                word.clear();
                whole = true;
            }
            if (piece == line.last)
                break;
            learn();
            word.clear();
            before.clear();
        }
        broken = LookAtEnd(line).hyphen != 0;
        if (!broken)
            learn();
    }
}

} // namespace engine
