// Paragraphs, tables, notes, sheets.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/RevengeText.h"

#include "engine/readers/Limits.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace engine {
namespace {

using librevenge::RVNGPropertyList;

std::string TextOf(const RVNGPropertyList& properties, const char* name) {
    const librevenge::RVNGProperty* property = properties[name];
    return property == nullptr ? std::string() : std::string(property->getStr().cstr());
}

int NumberOf(const RVNGPropertyList& properties, const char* name, int fallback) {
    const librevenge::RVNGProperty* property = properties[name];
    return property == nullptr ? fallback : property->getInt();
}

// With two digits at least.
std::string Padded(int number) {
    std::string digits = std::to_string(number);
    return digits.size() < 2 ? "0" + digits : digits;
}

// decimals -1: as many as there are.
std::string ShowNumber(double number, int decimals) {
    constexpr int kMostDecimals = 15, kDigits = 15;
    constexpr double kLongest = 1e15; // beyond, digits say nothing
    std::array<char, 64> text{};
    char* const end = text.data() + text.size();
    const bool fixed = decimals >= 0 && decimals <= kMostDecimals && std::fabs(number) < kLongest;
    const auto shown =
        fixed ? std::to_chars(text.data(), end, number, std::chars_format::fixed, decimals)
              : std::to_chars(text.data(), end, number, std::chars_format::general, kDigits);
    return {text.data(), shown.ptr};
}

} // namespace

// The library goes on calling for a while after an exception has passed through it.
template <typename Work> void RevengeText::Guarded(Work work) {
    if (m_failure)
        return;
    try {
        work();
    } catch (...) {
        m_failure = std::current_exception();
        throw;
    }
}

void RevengeText::Finish() {
    if (m_failure)
        std::rethrow_exception(m_failure);
    m_flow.Finish();
}

void RevengeText::setDocumentMetaData(const List& properties) {
    constexpr std::array<std::pair<const char*, const char*>, 9> kFields{{
        {"dc:title", "title"},
        {"librevenge:descriptive-name", "title"},
        {"meta:initial-creator", "author"},
        {"dc:creator", "author"},
        {"dc:subject", "subject"},
        {"meta:keyword", "keywords"},
        {"librevenge:comments", "comments"},
        {"librevenge:abstract", "comments"},
        {"dc:description", "comments"},
    }};
    Guarded([&] {
        std::set<std::pair<std::string, std::string>> told;
        for (const auto& [property, field] : kFields)
            if (const std::string value = TextOf(properties, property);
                told.emplace(field, value).second)
                m_sink.Field(field, value);
    });
}

void RevengeText::Open(Block block, int level) {
    if (!Collecting())
        Guarded([&] { m_flow.Open(block, level); });
}

void RevengeText::Close(Block block) {
    if (!Collecting())
        Guarded([&] { m_flow.Close(block); });
}

void RevengeText::openParagraph(const List& properties) {
    constexpr int kLowestHeading = 6;
    const int outline = NumberOf(properties, "text:outline-level", 0);
    if (outline > 0)
        Open(Block::Heading, std::min(outline, kLowestHeading));
    else
        Open(Block::Paragraph);
}

void RevengeText::EndParagraph() {
    if (Collecting())
        m_collected += '\n';
    else
        Guarded([&] { m_flow.EndParagraph(); });
}

void RevengeText::Put(std::string_view text) {
    m_hasText = m_hasText || !text.empty();
    if (Collecting())
        m_collected += text;
    else
        Guarded([&] { m_flow.Text(text); });
}

void RevengeText::insertLineBreak() {
    if (Collecting())
        m_collected += '\n';
    else
        Guarded([&] { m_flow.Break(); });
}

void RevengeText::BeginMargin() {
    m_inMargin = true;
    m_collected.clear();
}

void RevengeText::EndMargin() {
    m_inMargin = false;
    while (m_collected.ends_with('\n'))
        m_collected.pop_back();
    Guarded([&] {
        if (m_collected.empty() || !m_margins.insert(m_collected).second)
            return;
        m_flow.Open(Block::Paragraph);
        PutSheetLines(m_collected, m_flow);
        m_flow.EndParagraph();
    });
    m_collected.clear();
}

void RevengeText::BeginNote() {
    if (Collecting()) {
        m_collected += ' ';
        return;
    }
    Guarded([&] {
        m_flow.BeginAside();
        m_flow.Open(Block::Note);
    });
}

void RevengeText::EndNote() {
    if (Collecting())
        return;
    Guarded([&] {
        m_flow.Close(Block::Note);
        m_flow.EndAside();
    });
}

void RevengeText::openTextBox(const List&) {
    if (!Collecting())
        Guarded([&] { m_flow.BeginAside(); });
}

void RevengeText::closeTextBox() {
    if (!Collecting())
        Guarded([&] { m_flow.EndAside(); });
}

void RevengeText::defineSheetNumberingStyle(const List& properties) {
    Guarded([&] {
        m_decimals[TextOf(properties, "librevenge:name")] =
            NumberOf(properties, "number:decimal-places", -1);
    });
}

void RevengeText::openSheet(const List& properties) {
    Guarded([&] { m_sheet.Begin(++m_sheets, TextOf(properties, "librevenge:sheet-name")); });
}

void RevengeText::closeSheet() {
    Guarded([&] {
        m_sheet.EndTable();
        m_sheet.End();
    });
}

void RevengeText::openSheetRow(const List&) {
    Guarded([&] { m_sheet.NewRow(); });
}

void RevengeText::openSheetCell(const List& properties) {
    Guarded([&] {
        m_collected = ShowValue(properties);
        m_hasText = m_hasText || !m_collected.empty();
        m_inCell = true;
        const int column = NumberOf(properties, "librevenge:column", m_column);
        m_column = (column < 0 ? 0 : column) + 1;
    });
}

void RevengeText::closeSheetCell() {
    m_inCell = false;
    while (m_collected.ends_with('\n'))
        m_collected.pop_back();
    Guarded([&] { m_sheet.Cell(m_column, m_collected); });
    m_collected.clear();
}

// A cell's number as it is shown; text comes by itself.
std::string RevengeText::ShowValue(const List& properties) const {
    const std::string type = TextOf(properties, "librevenge:value-type");
    if (type == "date" || type == "time") {
        std::string text;
        if (properties["librevenge:year"] != nullptr)
            text = std::to_string(NumberOf(properties, "librevenge:year", 0)) + "-" +
                   Padded(NumberOf(properties, "librevenge:month", 1)) + "-" +
                   Padded(NumberOf(properties, "librevenge:day", 1));
        const librevenge::RVNGProperty* hours = properties["librevenge:hours"];
        if (hours == nullptr)
            return text;
        return text + (text.empty() ? "" : " ") + Padded(hours->getInt()) + ":" +
               Padded(NumberOf(properties, "librevenge:minutes", 0));
    }
    const librevenge::RVNGProperty* value = properties["librevenge:value"];
    if (value == nullptr || type == "string")
        return {};
    double number = value->getDouble();
    if (!std::isfinite(number))
        return {};
    if (type.starts_with("bool"))
        return number != 0 ? "TRUE" : "FALSE";
    const bool percent = type.starts_with("percent");
    const auto style = m_decimals.find(TextOf(properties, "librevenge:numbering-name"));
    const int decimals = style == m_decimals.end() ? -1 : style->second;
    if (percent)
        number *= 100;
    return ShowNumber(number, decimals) + (percent ? "%" : "");
}

} // namespace engine
