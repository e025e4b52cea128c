// What an RTF document's tables say of its fonts and styles.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/RtfTables.h"

#include "engine/readers/CodePage.h"
#include "engine/readers/RtfCodePages.h"

#include <algorithm>
#include <array>

namespace engine {
namespace {

constexpr int kBodyText = 9;
constexpr int kLowestHeading = 6;
constexpr int kWestern = 1252;
constexpr int kSymbolCharset = 2;
constexpr std::size_t kMostEntries = 100'000;

// The outline level that the usual names of styles tell, from 0; -1: none.
int OutlineOfName(std::string_view name) {
    constexpr std::array<std::string_view, 8> kHeadings{"heading ",
                                                        "titolo ",
                                                        "\xC3\xBC"
                                                        "berschrift ",
                                                        "titre ",
                                                        "t\xC3\xADtulo ",
                                                        "encabezado ",
                                                        "kop ",
                                                        "rubrik "};
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    if (lower.starts_with("\xC3\x9C")) // the one capital of these that is not ASCII
        lower[1] = '\xBC';
    if (lower == "title" || lower == "titel" || lower == "titolo" || lower == "titre")
        return 0;
    for (const std::string_view heading : kHeadings) {
        const std::string_view rest =
            std::string_view(lower).substr(std::min(heading.size(), lower.size()));
        if (lower.starts_with(heading) && !rest.empty() && rest[0] >= '1' && rest[0] <= '9' &&
            (rest.size() == 1 || rest[1] < '0' || rest[1] > '9'))
            return rest[0] - '1';
    }
    return -1;
}

// Those of the old Macintosh and of DOS occur in RTF only.
int CodePageOfCharset(int charset) {
    switch (charset) {
    case 78:
        return 10001;
    case 79:
        return 10003;
    case 80:
        return 10008;
    case 81:
        return 10002;
    case 85:
        return 10006;
    case 86:
        return 10081;
    case 88:
        return 10029;
    case 89:
        return 10007;
    case 254:
        return 437;
    case 255:
        return 850;
    default:
        return charset < 0
                   ? 0
                   : static_cast<int>(CodePageOfFontCharset(static_cast<unsigned>(charset)));
    }
}

} // namespace

int RtfFonts::CodePageOf(int font, int fallback) const {
    const auto found = m_fonts.find(font);
    if (found == m_fonts.end())
        return fallback;
    const Font& entry = found->second;
    if (entry.codePage != 0)
        return entry.codePage;
    // "ANSI" is the Western code page, unless the document comes from a machine of another kind.
    const bool ansi = entry.charset == 0;
    const bool windows = fallback >= 1250 || fallback == 874 || fallback == 932 ||
                         fallback == 936 || fallback == 949 || fallback == 950;
    if (entry.named == kSymbolPage || entry.named == kPicturePage)
        return entry.named;
    if (ansi)
        return entry.named != 0 ? entry.named : windows && fallback < 10000 ? kWestern : fallback;
    // A font of signs that is not known may hold letters as well, as those of bar codes do.
    if (entry.charset == kSymbolCharset)
        return kWestern;
    const int page = CodePageOfCharset(entry.charset);
    if (page != 0)
        return page;
    return entry.named != 0 ? entry.named : fallback;
}

void RtfFonts::End(std::string_view name) {
    m_entry.named = CodePageOfFontName(name);
    if (m_fonts.size() < kMostEntries)
        m_fonts.try_emplace(m_number, m_entry);
}

int RtfStyles::HeadingOf(int style) const {
    constexpr int kLongestChain = 16;
    for (int i = 0; i < kLongestChain; ++i) {
        const auto found = m_styles.find(style);
        if (found == m_styles.end())
            return 0;
        if (found->second.outline >= 0)
            return HeadingOfOutline(found->second.outline);
        style = found->second.base;
    }
    return 0;
}

void RtfStyles::End(std::string_view name) {
    if (m_entry.outline < 0)
        m_entry.outline = OutlineOfName(name);
    if (m_styles.size() < kMostEntries)
        m_styles.try_emplace(m_number, m_entry);
}

int HeadingOfOutline(int outline) {
    return outline < 0 || outline >= kBodyText ? 0 : std::min(outline + 1, kLowestHeading);
}

} // namespace engine
