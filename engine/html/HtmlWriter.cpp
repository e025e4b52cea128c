// Blocks, words and hits as HTML.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/html/HtmlWriter.h"

#include <algorithm>
#include <array>
#include <utility>

namespace engine {
namespace {

constexpr std::size_t kPiece = std::size_t{256} << 10;
constexpr std::size_t kMostPictureBytes = std::size_t{24} << 20;
constexpr std::string_view kNumberMark = "%%ThisHit%%";

std::string Base64(std::string_view bytes) {
    static constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve(bytes.size() / 3 * 4 + 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t j = 0; j < 3; ++j)
            group = group << 8 | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0U);
        for (std::size_t j = 0; j < 4; ++j)
            text += i + j <= bytes.size() ? kDigits[group >> (18 - 6 * j) & 63] : '=';
    }
    return text;
}

bool IsSafePicture(std::string_view mime) {
    static constexpr std::array<std::string_view, 6> kKinds{
        "image/png", "image/jpeg", "image/gif", "image/bmp", "image/webp", "image/x-icon"};
    return std::find(kKinds.begin(), kKinds.end(), mime) != kKinds.end();
}

} // namespace

HtmlWriter::HtmlWriter(Tokenizer& tokenizer, WordRule rule, std::vector<std::uint32_t> hits,
                       HtmlMarks marks, Out out)
    : WordingSink(tokenizer, rule), m_hits(std::move(hits)), m_marks(std::move(marks)),
      m_out(std::move(out)) {}

void HtmlWriter::Put(std::string_view html) {
    m_html.append(html);
    SendIfLong();
}

void HtmlWriter::SendIfLong() {
    if (m_html.size() < kPiece)
        return;
    m_out(m_html);
    m_html.clear();
}

void HtmlWriter::PutEscaped(std::string_view text) {
    std::size_t done = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char* entity = nullptr;
        switch (text[i]) {
        case '<':
            entity = "&lt;";
            break;
        case '>':
            entity = "&gt;";
            break;
        case '&':
            entity = "&amp;";
            break;
        case '"':
            entity = "&quot;";
            break;
        case '\'':
            entity = "&#39;";
            break;
        default:
            continue;
        }
        m_html.append(text.substr(done, i - done)).append(entity);
        done = i + 1;
    }
    m_html.append(text.substr(done));
    SendIfLong();
}

void HtmlWriter::PutMark(const std::string& mark) {
    std::size_t done = 0;
    for (auto at = mark.find(kNumberMark); at != std::string::npos; at = mark.find(kNumberMark, done)) {
        Put(std::string_view(mark).substr(done, at - done));
        Put(std::to_string(m_nextHit));
        done = at + kNumberMark.size();
    }
    Put(std::string_view(mark).substr(done));
}

void HtmlWriter::Begin(std::string_view title) {
    Put("<!DOCTYPE html>\n<html><head><meta http-equiv=\"Content-Type\" "
        "content=\"text/html; charset=utf-8\"><title>");
    PutEscaped(title);
    Put("</title></head>\n<body>\n");
    if (m_marks.note.empty())
        return;
    Put("<p><i>");
    PutEscaped(m_marks.note);
    Put("</i></p>\n<hr>\n");
}

void HtmlWriter::OnText(std::string_view text, const std::vector<Word>& words,
                        std::uint64_t firstWord) {
    if (InTableWithoutCell() || m_open.empty()) {
        // Text has to stand in something: between rows it would fall out of the table.
        OnOpen(m_open.empty() ? Block::Paragraph : Block::Cell, 0);
    }
    std::size_t done = 0;
    std::uint64_t number = firstWord - 1;
    for (const Word& word : words) {
        if (!word.advances)
            continue;
        ++number;
        while (m_nextHit < m_hits.size() && m_hits[m_nextHit] < number)
            ++m_nextHit;
        if (m_nextHit >= m_hits.size() || m_hits[m_nextHit] != number)
            continue;
        ++m_nextHit; // anchors count from 1
        PutEscaped(text.substr(done, word.begin - done));
        PutMark(m_marks.beforeHit);
        PutEscaped(text.substr(word.begin, word.end - word.begin));
        PutMark(m_marks.afterHit);
        done = word.end;
    }
    PutEscaped(text.substr(done));
}

bool HtmlWriter::InTableWithoutCell() const {
    return !m_open.empty() && (m_open.back().block == Block::Table || m_open.back().block == Block::Row);
}

void HtmlWriter::OnOpen(Block block, int level) {
    if (InTableWithoutCell() && block != Block::Row && block != Block::Cell)
        OnOpen(Block::Cell, 0);
    if (block == Block::Cell && !m_open.empty() && m_open.back().block == Block::Table)
        OnOpen(Block::Row, 0);
    std::string tag;
    switch (block) {
    case Block::Paragraph:
        tag = "p";
        break;
    case Block::Heading:
        tag = "h" + std::to_string(std::clamp(level, 1, 6));
        break;
    case Block::List:
        tag = level == 1 ? "ol" : "ul";
        break;
    case Block::Item:
        tag = "li";
        break;
    case Block::Table:
        Put("<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\">");
        m_open.push_back({block, "table"});
        return;
    case Block::Row:
        tag = "tr";
        break;
    case Block::Cell:
        tag = "td";
        break;
    case Block::Preformatted:
        tag = "pre";
        break;
    case Block::Quote:
    case Block::Note:
        tag = "blockquote";
        break;
    case Block::Page:
        if (level > 1)
            Put("<hr>\n");
        tag = "div";
        break;
    }
    Put("<" + tag + ">");
    m_open.push_back({block, std::move(tag)});
}

void HtmlWriter::CloseTop() {
    Put("</" + m_open.back().tag + ">\n");
    m_open.pop_back();
}

// Closes the innermost block of that kind and what was left open inside it.
void HtmlWriter::OnClose(Block block) {
    const auto found = std::find_if(m_open.rbegin(), m_open.rend(),
                                    [&](const OpenBlock& open) { return open.block == block; });
    if (found == m_open.rend())
        return;
    const auto keep = static_cast<std::size_t>(std::distance(found, m_open.rend())) - 1;
    while (m_open.size() > keep)
        CloseTop();
}

void HtmlWriter::OnBreak() {
    if (!InTableWithoutCell())
        Put("<br>\n");
}

void HtmlWriter::OnPicture(std::string_view mime, std::string_view bytes,
                           std::string_view alternativeText) {
    if (!IsSafePicture(mime) || bytes.empty() || m_pictureBytes + bytes.size() > kMostPictureBytes)
        return;
    m_pictureBytes += bytes.size();
    if (InTableWithoutCell())
        OnOpen(Block::Cell, 0);
    Put("<img src=\"data:" + std::string(mime) + ";base64,");
    Put(Base64(bytes));
    Put("\" alt=\"");
    std::string clean;
    PutEscaped(WellFormed(alternativeText, clean));
    Put("\">");
}

void HtmlWriter::OnFieldBegin(std::string_view name) {
    while (!m_open.empty() && m_open.back().block == Block::Paragraph)
        CloseTop();
    OnOpen(name == "title" ? Block::Heading : Block::Paragraph, 1);
}

void HtmlWriter::OnFieldEnd(std::string_view name, std::string_view /*value*/) {
    OnClose(name == "title" ? Block::Heading : Block::Paragraph);
}

void HtmlWriter::Incomplete(std::string_view /*reason*/) {}

void HtmlWriter::End() {
    Finish();
    while (!m_open.empty())
        CloseTop();
    Put(m_marks.footer);
    Put("\n</body></html>\n");
    m_out(m_html);
    m_html.clear();
}

} // namespace engine
