// Makes paragraphs, lists and tables of what RTF only marks by properties and ends.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/RtfBlocks.h"

#include <algorithm>
#include <utility>

namespace engine {
namespace {

constexpr int kDeepestTable = 16;
constexpr int kDeepestList = 9;
constexpr int kOldList = -1; // a list without a number in the table of lists

bool IsLetterOrDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

enum class ListMark { Bullet, Number, Words };

// "1.", "b)" and "iv." are what a list shows by itself; "1.2" and "Art. 5" say more.
ListMark MarkOf(std::string_view text) {
    constexpr std::string_view kAround = " \t().:-";
    const std::size_t from = text.find_first_not_of(kAround);
    if (from == std::string_view::npos)
        return ListMark::Bullet;
    const std::string_view core = text.substr(from, text.find_last_not_of(kAround) - from + 1);
    const bool any = std::any_of(core.begin(), core.end(), IsLetterOrDigit);
    if (!any)
        return core.size() <= 4 ? ListMark::Bullet : ListMark::Words;
    const bool digits = core.find_first_not_of("0123456789") == std::string_view::npos;
    const bool roman = core.find_first_not_of("ivxlcdmIVXLCDM") == std::string_view::npos;
    return digits || roman || core.size() == 1 ? ListMark::Number : ListMark::Words;
}

} // namespace

int RtfBlocks::LevelOf(const RtfForm& form) {
    const int level = std::clamp(form.tableLevel, form.inTable ? 1 : 0, kDeepestTable);
    return level == 0 && Top().rowAnnounced ? 1 : level;
}

void RtfBlocks::EndLists() {
    for (; Top().listDepth > 0; --Top().listDepth)
        m_flow.Close(Block::List);
}

void RtfBlocks::GoToLevel(int level) {
    std::vector<TableLevel>& tables = Top().tables;
    const auto wanted = static_cast<std::size_t>(level);
    if (tables.size() != wanted)
        EndLists();
    for (; tables.size() > wanted; tables.pop_back())
        m_flow.Close(Block::Table);
    for (std::size_t i = 0; i < wanted; ++i) {
        if (i == tables.size()) {
            m_flow.Open(Block::Table);
            tables.emplace_back();
        }
        if (!std::exchange(tables[i].row, true))
            m_flow.Open(Block::Row);
        if (!std::exchange(tables[i].cell, true))
            m_flow.Open(Block::Cell);
    }
}

void RtfBlocks::OpenItem(const RtfForm& form) {
    Context& top = Top();
    const ListMark mark = MarkOf(top.listText);
    const int list = form.list > 0 ? form.list : kOldList;
    const int depth = std::clamp(form.listLevel, 0, kDeepestList - 1) + 1;
    if (std::exchange(top.list, list) != list)
        EndLists();
    if (top.listDepth == depth && top.everyItemMarked && top.listText.empty()) {
        m_flow.Open(Block::Paragraph);
        return;
    }
    for (; top.listDepth > depth; --top.listDepth)
        m_flow.Close(Block::List);
    for (; top.listDepth < depth; ++top.listDepth)
        m_flow.Open(Block::List, mark == ListMark::Number ? 1 : 0);
    m_flow.Open(Block::Item);
    m_flow.Open(Block::Paragraph);
    if (mark == ListMark::Words)
        m_flow.Text(top.listText);
}

void RtfBlocks::Ready(const RtfForm& form, int heading) {
    Context& top = Top();
    if (std::exchange(top.paragraph, true))
        return;
    GoToLevel(LevelOf(form));
    if (heading > 0) {
        EndLists();
        m_flow.Open(Block::Heading, heading);
        if (MarkOf(top.listText) != ListMark::Bullet)
            m_flow.Text(top.listText);
    } else if (form.list > 0 || !top.listText.empty()) {
        OpenItem(form);
    } else {
        EndLists();
        m_flow.Open(Block::Paragraph);
    }
    top.listText.clear();
}

void RtfBlocks::Text(const RtfForm& form, int heading, std::string_view utf8) {
    Ready(form, heading);
    m_flow.Text(utf8);
}

void RtfBlocks::Picture(const RtfForm& form, int heading, std::string_view mime,
                        std::string_view bytes, std::string_view alternativeText) {
    Ready(form, heading);
    m_flow.Picture(mime, bytes, alternativeText);
}

void RtfBlocks::SetListText(std::string_view utf8, bool everyItem) {
    Top().everyItemMarked = everyItem;
    // A blank alone is a mark too: one whose font means nothing here.
    Top().listText = utf8.empty() ? " " : utf8;
}

void RtfBlocks::EndParagraph(const RtfForm& form) {
    Context& top = Top();
    if (!std::exchange(top.paragraph, false))
        GoToLevel(LevelOf(form));
    m_flow.EndParagraph();
    top.listText.clear();
}

void RtfBlocks::EndCell(int level) {
    level = std::clamp(level, 1, kDeepestTable);
    GoToLevel(level);
    EndLists();
    m_flow.Close(Block::Cell);
    Top().tables.back().cell = false;
    Top().paragraph = false;
    Top().listText.clear();
}

void RtfBlocks::EndRow(int level) {
    level = std::clamp(level, 1, kDeepestTable);
    Context& top = Top();
    if (level == 1)
        top.rowAnnounced = false;
    if (static_cast<std::size_t>(level) > top.tables.size())
        return;
    EndLists();
    for (; top.tables.size() > static_cast<std::size_t>(level); top.tables.pop_back())
        m_flow.Close(Block::Table);
    m_flow.Close(Block::Row);
    top.tables.back() = {};
    top.paragraph = false;
}

void RtfBlocks::BeginAside() {
    m_flow.BeginAside();
    m_contexts.emplace_back();
}

void RtfBlocks::EndAside() {
    if (m_contexts.size() == 1)
        return;
    EndAll();
    m_contexts.pop_back();
    m_flow.EndAside();
}

bool RtfBlocks::IsBetween() const {
    const Context& top = m_contexts.back();
    return m_contexts.size() == 1 && !top.paragraph && top.listDepth == 0 && top.tables.empty();
}

void RtfBlocks::EndAll() {
    m_flow.EndParagraph();
    EndLists();
    GoToLevel(0);
    Top() = {};
}

} // namespace engine
