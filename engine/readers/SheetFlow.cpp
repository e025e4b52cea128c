// Sheets, cells, headers and footers.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/SheetFlow.h"

#include <algorithm>

namespace engine {
namespace {

constexpr int kWidestGap = 32; // empty cells shown between two full ones

} // namespace

void PutSheetLines(std::string_view text, Flow& flow) {
    while (true) {
        const std::size_t end = text.find('\n');
        flow.Text(text.substr(0, end));
        if (end == std::string_view::npos)
            return;
        flow.Break();
        text.remove_prefix(end + 1);
    }
}

std::string_view SheetError(std::uint8_t code) {
    switch (code) {
    case 0x00:
        return "#NULL!";
    case 0x07:
        return "#DIV/0!";
    case 0x0F:
        return "#VALUE!";
    case 0x17:
        return "#REF!";
    case 0x1D:
        return "#NAME?";
    case 0x24:
        return "#NUM!";
    case 0x2A:
        return "#N/A";
    case 0x2B:
        return "#GETTING_DATA";
    default:
        return {};
    }
}

void SheetFlow::Begin(int number, std::string_view name) {
    m_flow.Open(Block::Page, number);
    m_flow.Open(Block::Heading, 1);
    m_flow.Text(name);
    m_flow.Close(Block::Heading);
}

void SheetFlow::NewRow() {
    if (m_rowOpen)
        m_flow.Close(Block::Row);
    m_rowOpen = false;
    m_lastColumn = 0;
}

void SheetFlow::Cell(int column, std::string_view text) {
    if (text.empty())
        return;
    if (!m_tableOpen)
        m_flow.Open(Block::Table);
    if (!m_rowOpen)
        m_flow.Open(Block::Row);
    m_tableOpen = m_rowOpen = true;
    for (int gap = std::min(column - m_lastColumn - 1, kWidestGap); gap > 0; --gap) {
        m_flow.Open(Block::Cell);
        m_flow.Close(Block::Cell);
    }
    m_lastColumn = column;
    m_flow.Open(Block::Cell);
    PutSheetLines(text, m_flow);
    m_flow.Close(Block::Cell);
}

void SheetFlow::EndTable() {
    NewRow();
    if (m_tableOpen)
        m_flow.Close(Block::Table);
    m_tableOpen = false;
}

void SheetFlow::Note(std::string_view text) {
    m_flow.Open(Block::Note);
    PutSheetLines(text, m_flow);
    m_flow.Close(Block::Note);
}

void SheetFlow::TextBox(std::string_view text) {
    m_flow.Open(Block::Paragraph);
    PutSheetLines(text, m_flow);
    m_flow.Close(Block::Paragraph);
}

void SheetFlow::Margin(std::string_view code) {
    m_flow.Open(Block::Paragraph);
    while (!code.empty()) {
        const std::size_t mark = std::min(code.find('&'), code.size());
        m_flow.Collapse(code.substr(0, mark));
        code.remove_prefix(mark);
        if (code.size() < 2)
            break;
        std::size_t length = 2;
        if (code[1] == '&')
            m_flow.Text("&");
        else if (code[1] == '"')
            length = std::min(code.find('"', 2), code.size() - 1) + 1;
        else if (code[1] == '[') // "&[Page]"
            length = std::min(code.find(']'), code.size() - 1) + 1;
        else if (code[1] == 'K')
            length = std::min<std::size_t>(8, code.size());
        else if (code[1] >= '0' && code[1] <= '9')
            length = std::min(code.find_first_not_of("0123456789", 1), code.size());
        else if (code[1] == 'L' || code[1] == 'C' || code[1] == 'R')
            m_flow.Blank();
        code.remove_prefix(length);
    }
    m_flow.Close(Block::Paragraph);
}

void SheetFlow::End() {
    EndTable();
    m_flow.Close(Block::Page);
}

} // namespace engine
