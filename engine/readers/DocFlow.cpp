// Paragraphs to blocks.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/DocFlow.h"

#include "engine/text/Utf8.h"

#include <algorithm>
#include <utility>

namespace engine {
namespace {

constexpr std::size_t kDeepestTable = 16;
constexpr int kDeepestList = 9;

} // namespace

void DocFlow::Put(char32_t character) {
    if (character == U'\t' && m_text.empty()) // only moves the line in
        return;
    AppendUtf8(m_text, character);
}

void DocFlow::SetDepth(std::size_t depth) {
    if (m_tables.size() != depth)
        EndLists();
    for (; m_tables.size() > depth; m_tables.pop_back())
        m_flow.Close(Block::Table);
    while (m_tables.size() < depth) {
        if (!m_tables.empty())
            OpenCell();
        m_flow.Open(Block::Table);
        m_tables.emplace_back();
    }
}

void DocFlow::OpenCell() {
    if (!std::exchange(m_tables.back().inCell, true))
        m_flow.Open(Block::Cell);
}

void DocFlow::EndLists() {
    for (; m_listDepth > 0; --m_listDepth)
        m_flow.Close(Block::List);
    m_list = -1;
}

void DocFlow::OpenItem(const DocParagraphForm& form) {
    const int level = std::clamp<int>(form.listLevel, 0, kDeepestList - 1);
    if (m_list != form.list)
        EndLists();
    for (; m_listDepth > level + 1; --m_listDepth)
        m_flow.Close(Block::List);
    for (; m_listDepth < level + 1; ++m_listDepth)
        m_flow.Open(Block::List, m_styles.IsNumbered(form.list, m_listDepth) ? 1 : 0);
    m_list = form.list;
    m_flow.Open(Block::Item);
}

void DocFlow::OpenParagraph(const DocParagraphForm& form) {
    constexpr int kBodyText = 9, kLowestHeading = 6, kMostLists = 0x7FF;
    if (form.outline >= 0 && form.outline < kBodyText) {
        EndLists();
        m_flow.Open(Block::Heading, std::min(form.outline + 1, kLowestHeading));
        return;
    }
    if (form.list > 0 && form.list < kMostLists)
        OpenItem(form);
    else
        EndLists();
    m_flow.Open(Block::Paragraph);
}

void DocFlow::PutText() {
    std::string_view text = m_text;
    while (true) {
        const std::size_t end = text.find('\n');
        m_flow.Text(text.substr(0, end));
        if (end == std::string_view::npos)
            break;
        m_flow.Break();
        text.remove_prefix(end + 1);
    }
    m_text.clear();
}

void DocFlow::EndParagraph(DocParagraphForm form, bool cell) {
    SetDepth(std::min(static_cast<std::size_t>(std::max<int>(form.depth, 0)), kDeepestTable));
    const bool inTable = !m_tables.empty();
    if (inTable && !form.rowEnd)
        OpenCell();
    if (!m_text.empty()) {
        OpenParagraph(m_styles.Resolve(form));
        PutText();
    }
    for (const auto& aside : std::exchange(m_asides, {}))
        aside();
    m_flow.EndParagraph();
    if (inTable && form.rowEnd) {
        EndLists();
        m_flow.Close(Block::Row);
        m_tables.back().inCell = false;
    } else if (inTable && (cell || form.cellEnd)) {
        EndLists();
        m_flow.Close(Block::Cell);
        m_tables.back().inCell = false;
    }
}

void DocFlow::End() {
    if (!m_text.empty() || !m_asides.empty())
        EndParagraph({}, false);
    EndLists();
    SetDepth(0);
}

} // namespace engine
