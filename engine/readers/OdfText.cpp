// What the elements of OpenDocument mean for its text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/OdfText.h"

#include "engine/readers/DocxStyles.h"

#include <algorithm>

namespace engine {
namespace {

constexpr int kWidestGap = 32; // empty cells shown between two full ones
constexpr int kMostBlanks = 256;
constexpr int kLowestHeading = 6;

// Namespaces of the standard and of its predecessor: "urn:…:xmlns:text:1.0", "http://…/text".
bool IsSpace(std::string_view space, std::string_view name) {
    const std::size_t at = space.rfind(name);
    if (at == std::string_view::npos || at == 0)
        return false;
    const std::string_view rest = space.substr(at + name.size());
    return (rest.empty() && space[at - 1] == '/') ||
           (rest.starts_with(':') && space[at - 1] == ':');
}

std::string LowerAscii(std::string text) {
    for (char& c : text)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

} // namespace

void OdfMeta::Start(const XmlElement& element) {
    m_value.clear();
    m_ownName = element.name == "user-defined" ? element.Attribute("name") : std::string();
}

void OdfMeta::End(std::string_view name) {
    if (name == "title" || name == "subject")
        m_fields.emplace_back(name, m_value);
    else if (name == "description")
        m_fields.emplace_back("comments", m_value);
    else if (name == "initial-creator")
        m_author = m_value;
    else if (name == "creator")
        m_lastAuthor = m_value;
    else if (name == "keyword" && !m_value.empty())
        m_keywords += (m_keywords.empty() ? "" : ", ") + m_value;
    else if (name == "user-defined" && !m_ownName.empty())
        m_fields.emplace_back(LowerAscii(m_ownName), m_value);
    m_value.clear();
}

void OdfMeta::Report() const {
    for (const auto& [name, value] : m_fields)
        m_sink.Field(name, value);
    m_sink.Field("author", m_author.empty() ? m_lastAuthor : m_author);
    m_sink.Field("keywords", m_keywords);
}

bool OdfText::Start(const XmlElement& element) {
    if (m_inMeta > 0) {
        ++m_inMeta;
        m_meta.Start(element);
        return true;
    }
    const OdfTag tag = OdfTagOf(element.name);
    switch (tag) {
    case OdfTag::Meta:
        if (!IsSpace(element.space, "office"))
            break;
        m_inMeta = m_part == OdfPart::Everything ? 1 : 0;
        return m_inMeta > 0;
    case OdfTag::Body:
        m_inBody += m_part == OdfPart::Everything || m_part == OdfPart::Embedded ? 1 : 0;
        return m_inBody > 0;
    case OdfTag::Margin:
        if (!Reading())
            return StartMargin(element);
        break;
    case OdfTag::MasterPage:
        break;
    default:
        if (Reading())
            return StartText(tag, element);
        break;
    }
    return true;
}

// Of the page styles, headers and footers are shown on every page and read once.
bool OdfText::StartMargin(const XmlElement& element) {
    const bool header = element.name.starts_with("header");
    const bool wanted = m_part == OdfPart::Everything || header == (m_part == OdfPart::Headers);
    if (!IsSpace(element.space, "style") || !wanted || element.Attribute("display") == "false")
        return false;
    ++m_inMargin;
    return true;
}

bool OdfText::StartText(OdfTag tag, const XmlElement& element) {
    switch (tag) {
    case OdfTag::Skipped:
        return false;
    case OdfTag::Spreadsheet:
        m_spreadsheet = true;
        break;
    case OdfTag::Page:
        if (m_part != OdfPart::Embedded)
            m_flow.Open(Block::Page, ++m_pages);
        break;
    case OdfTag::Paragraph:
    case OdfTag::Heading:
        StartParagraph(tag, element);
        break;
    case OdfTag::List:
    case OdfTag::OrderedList:
        ShowCell();
        m_flow.Open(Block::List, tag == OdfTag::OrderedList ? 1 : 0);
        break;
    case OdfTag::ListItem:
        m_flow.Open(Block::Item);
        break;
    case OdfTag::Table:
        StartTable(element);
        break;
    case OdfTag::Row:
        m_flow.Open(Block::Row);
        if (!m_tables.empty())
            m_tables.back().gap = 0;
        break;
    case OdfTag::Cell:
        StartCell(element);
        break;
    case OdfTag::Blanks:
        PutBlanks(element);
        break;
    case OdfTag::Tabulator:
        if (m_inParagraph > 0)
            m_flow.Text("\t");
        break;
    case OdfTag::LineBreak:
        m_flow.Break();
        break;
    case OdfTag::Dated:
        return IsSpace(element.space, "text");
    default:
        // What indexes are made from is not shown.
        return StartShape(tag, element) && !element.name.ends_with("-source");
    }
    return true;
}

bool OdfText::StartShape(OdfTag tag, const XmlElement& element) {
    switch (tag) {
    case OdfTag::Annotation:
        if (!IsSpace(element.space, "office"))
            return false;
        [[fallthrough]];
    case OdfTag::Note:
    case OdfTag::SpeakerNotes:
        ShowCell();
        m_flow.BeginAside();
        m_flow.Open(Block::Note);
        break;
    case OdfTag::Frame:
        m_title = element.Attribute("class") == "title";
        m_description.clear();
        m_picture.clear();
        break;
    case OdfTag::Image:
        if (m_picture.empty())
            m_picture = element.Attribute("href");
        break;
    case OdfTag::Shape:
        ShowCell();
        m_flow.BeginAside();
        break;
    case OdfTag::Described:
        if (IsSpace(element.space, "text"))
            break;
        m_description += m_description.empty() ? "" : " ";
        ++m_inDescription;
        break;
    default:
        break;
    }
    return true;
}

void OdfText::StartParagraph(OdfTag tag, const XmlElement& element) {
    ShowCell();
    ++m_inParagraph;
    if (tag == OdfTag::Heading) {
        const int level = ToNumber(element.Attribute("outline-level"), 1);
        m_flow.Open(Block::Heading, std::clamp(level, 1, kLowestHeading));
    } else if (m_title || element.Attribute("style-name") == "Title") {
        m_flow.Open(Block::Heading, 1);
    } else {
        m_flow.Open(Block::Paragraph);
    }
}

void OdfText::PutBlanks(const XmlElement& element) {
    const int count = ToNumber(element.Attribute("c"), 1);
    if (m_inParagraph > 0)
        m_flow.Text(std::string(static_cast<std::size_t>(std::clamp(count, 1, kMostBlanks)), ' '));
}

void OdfText::StartTable(const XmlElement& element) {
    Table table;
    table.sheet = m_spreadsheet && m_tables.empty() && m_inParagraph == 0;
    ShowCell();
    if (table.sheet) {
        if (m_part != OdfPart::Embedded)
            m_flow.Open(Block::Page, ++m_pages);
        m_flow.Open(Block::Heading, 1);
        m_flow.Text(element.Attribute("name"));
        m_flow.Close(Block::Heading);
    }
    m_flow.Open(Block::Table);
    m_tables.push_back(table);
}

void OdfText::StartCell(const XmlElement& element) {
    if (m_tables.empty())
        return;
    Table& table = m_tables.back();
    table.repeated = std::max(1, ToNumber(element.Attribute("number-columns-repeated"), 1));
    table.inCell = true;
    table.cellShown = false;
}

// Cells appear when there is something in them: sheets end in thousands of empty ones.
void OdfText::ShowCell() {
    if (m_tables.empty() || !m_tables.back().inCell || m_tables.back().cellShown)
        return;
    Table& table = m_tables.back();
    for (int gap = std::min(table.gap, kWidestGap); gap > 0; --gap) {
        m_flow.Open(Block::Cell);
        m_flow.Close(Block::Cell);
    }
    m_flow.Open(Block::Cell);
    table.cellShown = true;
    table.gap = 0;
}

void OdfText::EndCell() {
    if (m_tables.empty() || !m_tables.back().inCell)
        return;
    Table& table = m_tables.back();
    if (table.cellShown)
        m_flow.Close(Block::Cell);
    const int empty = table.cellShown ? table.repeated - 1 : table.repeated;
    table.gap = std::min(kWidestGap, table.gap + std::min(empty, kWidestGap));
    table.inCell = table.cellShown = false;
}

void OdfText::EndTable() {
    m_flow.Close(Block::Table);
    if (m_tables.empty())
        return;
    if (m_tables.back().sheet && m_part != OdfPart::Embedded)
        m_flow.Close(Block::Page);
    m_tables.pop_back();
}

void OdfText::EndFrame() {
    if (!m_picture.empty() || !m_description.empty())
        m_putPicture(m_picture, m_description);
    m_title = false;
    m_picture.clear();
    m_description.clear();
}

void OdfText::End(std::string_view space, std::string_view name) {
    if (m_inMeta > 0) {
        m_meta.End(name);
        if (--m_inMeta == 0)
            m_meta.Report();
        return;
    }
    const OdfTag tag = OdfTagOf(name);
    if (tag == OdfTag::Body)
        --m_inBody;
    else if (tag == OdfTag::Margin && m_inMargin > 0 && IsSpace(space, "style"))
        --m_inMargin;
    if (!Reading())
        return;
    switch (tag) {
    case OdfTag::Paragraph:
    case OdfTag::Heading:
        --m_inParagraph;
        m_flow.EndParagraph();
        break;
    case OdfTag::List:
    case OdfTag::OrderedList:
        m_flow.Close(Block::List);
        break;
    case OdfTag::ListItem:
        m_flow.Close(Block::Item);
        break;
    case OdfTag::Table:
        EndTable();
        break;
    case OdfTag::Row:
        m_flow.Close(Block::Row);
        break;
    case OdfTag::Cell:
        EndCell();
        break;
    case OdfTag::Page:
        if (m_part != OdfPart::Embedded)
            m_flow.Close(Block::Page);
        break;
    case OdfTag::Annotation:
    case OdfTag::Note:
    case OdfTag::SpeakerNotes:
        m_flow.Close(Block::Note);
        m_flow.EndAside();
        break;
    case OdfTag::Shape:
        m_flow.EndParagraph();
        m_flow.Collapse(m_description);
        m_description.clear();
        m_flow.EndAside();
        break;
    case OdfTag::Frame:
        EndFrame();
        break;
    case OdfTag::Described:
        if (!IsSpace(space, "text"))
            --m_inDescription;
        break;
    default:
        break;
    }
}

void OdfText::Text(std::string_view utf8) {
    if (m_inMeta > 0)
        m_meta.Text(utf8);
    else if (m_inDescription > 0)
        m_description += utf8;
    else if (m_inParagraph > 0)
        m_flow.Collapse(utf8);
}

} // namespace engine
