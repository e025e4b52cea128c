// Text, characters and pictures of RTF.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/RtfReading.h"

#include "engine/readers/Limits.h"
#include "engine/text/Utf8.h"

#include <algorithm>
#include <utility>

namespace engine {
namespace {

constexpr std::size_t kFlushAt = std::size_t{64} * 1024;

} // namespace

std::string TrimRtfValue(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t from = text.find_first_not_of(kBlanks);
    if (from == std::string_view::npos)
        return {};
    return std::string(text.substr(from, text.find_last_not_of(kBlanks) - from + 1));
}

std::string* RtfReading::Target() {
    const Group& group = Top();
    switch (group.into) {
    case Into::Body:
        if (group.deleted || group.htmlOff)
            return nullptr;
        if (m_run.empty())
            m_runForm = group.form;
        return &m_run;
    case Into::Value:
    case Into::FontName:
    case Into::StyleName:
        return &m_value;
    case Into::Nothing:
    case Into::Picture:
        break;
    }
    return nullptr;
}

void RtfReading::SelectCodePage() {
    if (std::exchange(m_pageKnown, true))
        return;
    int page = m_codePage;
    if (Top().font != kNoFont)
        page = m_fonts.CodePageOf(Top().font, m_codePage);
    else if (const int own = m_fonts.CodePageOf(m_defaultFont, m_codePage); own != 1252)
        page = own; // a Western font says nothing of text that names no font
    if (page == m_pages.Selected())
        return;
    EndCharacter();
    m_pages.Select(page);
}

void RtfReading::EndCharacter() {
    if (!m_pages.IsWaiting())
        return;
    std::string lost;
    std::string* const target = Target();
    m_pages.EndCharacter(target == nullptr ? lost : *target);
}

// raw: they stand in the file as they are.
void RtfReading::Bytes(std::string_view bytes, bool raw) {
    if (m_fallback > 0) {
        const auto skipped = std::min(static_cast<std::size_t>(m_fallback), bytes.size());
        m_fallback -= static_cast<int>(skipped);
        bytes.remove_prefix(skipped);
    }
    if (bytes.empty())
        return;
    const Into into = Top().into;
    if (into == Into::Picture)
        m_picture.AddHex(bytes);
    std::string* const target = Target();
    if (target == nullptr)
        return;
    SelectCodePage();
    m_pages.Decode(bytes, *target);
    char trail = 0;
    while (raw && m_pages.IsWaiting() && m_scanner.TakeTrailByte(trail))
        m_pages.Decode({&trail, 1}, *target);
    if (into == Into::FontName || into == Into::StyleName)
        TakeEntries(into);
    else if (into == Into::Body && m_run.size() >= kFlushAt && !m_html)
        Flush();
    else if (m_html && m_run.size() > kMaxMemberBytes) {
        m_run.resize(kMaxMemberBytes);
        m_htmlCut = true;
    }
}

// Each entry of a table ends with a semicolon.
void RtfReading::TakeEntries(Into into) {
    constexpr std::size_t kLongestName = 1000;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = m_value.find(';', begin)) != std::string::npos;
         begin = end + 1) {
        const std::string name = TrimRtfValue(std::string_view(m_value).substr(begin, end - begin));
        if (into == Into::FontName)
            m_fonts.End(name);
        else
            m_styles.End(name);
    }
    m_value.erase(0, begin);
    if (m_value.size() > kLongestName)
        m_value.clear();
    m_pageKnown = false;
}

void RtfReading::PutCharacter(char32_t character) {
    EndCharacter();
    m_lead = 0;
    if (std::string* const target = Target())
        AppendUtf8(*target, character);
}

// A unit of UTF-16; some writers put whole characters there.
void RtfReading::PutUnit(int number) {
    const char32_t unit =
        number < 0 ? static_cast<char32_t>(number + 0x10000) : static_cast<char32_t>(number);
    const char32_t lead = std::exchange(m_lead, 0);
    if (unit >= 0xD800 && unit < 0xDC00) {
        m_lead = unit;
    } else if (unit >= 0xDC00 && unit < 0xE000) {
        if (lead != 0)
            PutCharacter(0x10000 + ((lead - 0xD800) << 10) + (unit - 0xDC00));
    } else if (unit >= 0xF000 && unit < 0xF100) { // a place in a font of signs
        SelectCodePage();
        const char32_t sign = m_pages.Selected() == kSymbolPage
                                  ? SymbolCharacter(static_cast<unsigned char>(unit & 0xFF))
                                  : 0;
        PutCharacter(sign == 0 ? U' ' : sign);
    } else if (unit != 0 && unit <= 0x10FFFF) {
        PutCharacter(unit);
    }
    m_fallback = Top().fallbackLength;
}

void RtfReading::Flush() {
    if (m_run.empty() || m_html)
        return;
    Blocks().Text(m_runForm, HeadingOf(m_runForm), m_run);
    m_run.clear();
}

void RtfReading::NewLine() {
    if (Top().into != Into::Body || Top().deleted || Top().htmlOff)
        return;
    if (m_html) {
        m_run += "\r\n";
        return;
    }
    Flush();
    Blocks().Break();
}

void RtfReading::EndParagraph() {
    Flush();
    if (!Top().deleted) // else it goes on in the next one
        Blocks().EndParagraph(Top().form);
}

// ---- Pictures

void RtfReading::PutPicture() {
    std::string bytes;
    const std::string mime = m_picture.Take(bytes);
    const std::string alternative = m_picture.TakeAlternativeText();
    const Group& around = m_groups[m_groups.size() - 2];
    if (around.into != Into::Body || around.deleted || m_html)
        return;
    // Also where none is wanted or can be shown: the words around it must not depend on that.
    Blocks().Picture(around.form, HeadingOf(around.form), mime, bytes, alternative);
}

void RtfReading::ShapeValue() {
    if (m_shapeName != "wzDescription" && m_shapeName != "gtextUNICODE")
        return;
    const std::string text = TrimRtfValue(m_value);
    if (m_openPictures > 0) {
        m_picture.SetAlternativeText(text);
    } else if (!text.empty() && !Top().deleted && !m_html) {
        Flush();
        Blocks().Picture(Top().form, HeadingOf(Top().form), {}, {}, text);
    }
}

} // namespace engine
