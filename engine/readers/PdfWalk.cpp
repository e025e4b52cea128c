// From the PDF library's picture of a page to text in reading order.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/PdfWalk.h"

#include "engine/readers/PdfLines.h"

#include <unicode/utf8.h>

#include <algorithm>

namespace engine {

namespace {

// Turns lines into text.
class Writer {
  public:
    Writer(Block block, bool withCharacters, PdfPageText& text)
        : m_blockKind(block), m_withCharacters(withCharacters), m_text(text),
          m_begin(text.utf8.size()) {}

    void WriteLines(const std::vector<VisualLine>& lines) {
        const fz_stext_block* block = nullptr;
        HyphenJudge hyphens(lines);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (lines[i].block != block) {
                CloseParagraph();
                block = lines[i].block;
                m_begin = m_text.utf8.size();
            }
            const bool joins = hyphens.JoinsNext(i);
            WriteLine(lines[i], joins);
            // The second half of a broken word stays on the line of the first.
            if (joins)
                m_breakAfterWord = true;
            else
                Break();
        }
        CloseParagraph();
    }

  private:
    void CloseParagraph() {
        std::string& utf8 = m_text.utf8;
        while (utf8.size() > m_begin && (utf8.back() == '\n' || utf8.back() == ' '))
            utf8.pop_back();
        while (!m_text.characters.empty() && m_text.characters.back().offset >= utf8.size())
            m_text.characters.pop_back();
        if (utf8.size() > m_begin)
            m_text.paragraphs.push_back({m_blockKind, static_cast<std::uint32_t>(m_begin),
                                         static_cast<std::uint32_t>(utf8.size())});
        m_begin = utf8.size();
        m_breakAfterWord = false;
    }

    void WriteLine(const VisualLine& line, bool joins) {
        for (const fz_stext_line* piece = line.first;; piece = piece->next) {
            const bool last = piece == line.last;
            WritePiece(*piece, joins && last);
            if (last)
                break;
            Blank();
        }
    }

    void WritePiece(const fz_stext_line& piece, bool dropHyphen) {
        for (const fz_stext_char* ch = piece.first_char; ch != nullptr; ch = ch->next) {
            if (ch->c == ' ') {
                if (!(dropHyphen && ch->next == nullptr))
                    Blank();
                continue;
            }
            const bool isEnd =
                ch->next == nullptr || (ch->next->c == ' ' && ch->next->next == nullptr);
            if ((dropHyphen && isEnd) || !IsOnPage(ch->quad))
                continue;
            Put(*ch);
        }
    }

    [[nodiscard]] bool IsOnPage(const fz_quad& quad) const {
        const auto [left, right] = std::minmax({quad.ul.x, quad.ur.x, quad.ll.x, quad.lr.x});
        const auto [top, bottom] = std::minmax({quad.ul.y, quad.ur.y, quad.ll.y, quad.lr.y});
        return right > 0 && left < m_text.width && bottom > 0 && top < m_text.height;
    }

    void Put(const fz_stext_char& ch) {
        UChar32 c = ch.c;
        if (!U_IS_UNICODE_CHAR(c) || c < ' ')
            c = 0xFFFD;
        if (c == 0xFFFD)
            ++m_text.unknownCharacters;
        else
            ++m_text.knownCharacters;
        std::uint8_t bytes[U8_MAX_LENGTH];
        int length = 0;
        U8_APPEND_UNSAFE(bytes, length, c);
        if (m_withCharacters) {
            const fz_quad& q = ch.quad;
            m_text.characters.push_back(
                {static_cast<std::uint32_t>(m_text.utf8.size()),
                 {{{q.ul.x, q.ul.y}, {q.ur.x, q.ur.y}, {q.lr.x, q.lr.y}, {q.ll.x, q.ll.y}}}});
        }
        m_text.utf8.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
    }

    void Blank() {
        if (m_breakAfterWord) {
            m_breakAfterWord = false;
            Break();
        } else if (m_text.utf8.size() > m_begin && m_text.utf8.back() != ' ' &&
                   m_text.utf8.back() != '\n') {
            m_text.utf8 += ' ';
        }
    }

    void Break() {
        std::string& utf8 = m_text.utf8;
        m_breakAfterWord = false;
        if (utf8.size() > m_begin && utf8.back() == ' ')
            utf8.pop_back();
        if (utf8.size() > m_begin && utf8.back() != '\n')
            utf8 += '\n';
    }

    Block m_blockKind;
    bool m_withCharacters;
    PdfPageText& m_text;
    std::size_t m_begin; // of the open paragraph
    bool m_breakAfterWord = false;
};

} // namespace

void WalkPdfText(const fz_stext_page& page, Block block, bool withCharacters, PdfPageText& text) {
    Writer(block, withCharacters, text).WriteLines(CollectLines(page));
}

void AppendPdfNote(const char* utf8, const fz_rect& rect, bool withCharacters, PdfPageText& text) {
    const std::size_t begin = text.utf8.size();
    const PdfQuad quad = {
        {{rect.x0, rect.y0}, {rect.x1, rect.y0}, {rect.x1, rect.y1}, {rect.x0, rect.y1}}};
    for (const char* p = utf8; *p != '\0'; ++p) {
        const bool isBreak = *p == '\n' || *p == '\r';
        if (isBreak && (text.utf8.size() == begin || text.utf8.back() == '\n'))
            continue;
        if (withCharacters && !U8_IS_TRAIL(static_cast<std::uint8_t>(*p)))
            text.characters.push_back({static_cast<std::uint32_t>(text.utf8.size()), quad});
        text.utf8 += isBreak ? '\n' : *p;
    }
    if (text.utf8.size() > begin)
        text.paragraphs.push_back({Block::Note, static_cast<std::uint32_t>(begin),
                                   static_cast<std::uint32_t>(text.utf8.size())});
}

} // namespace engine
