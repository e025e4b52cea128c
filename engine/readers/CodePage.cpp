// Numbers of code pages, languages and font charsets; UTF-16.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CodePage.h"

#include "engine/readers/Charset.h"
#include "engine/readers/LittleEndian.h"

#include <algorithm>
#include <array>

namespace engine {
namespace {

struct NamedPage {
    unsigned page;
    const char* charset;
};
// Those whose charset does not have the number in its name.
constexpr std::array kNamedPages{
    NamedPage{720, "ibm-720_P100-1997"},
    NamedPage{874, "windows-874"},
    NamedPage{932, "windows-31j"},
    NamedPage{936, "GB18030"}, // holds all of GBK
    NamedPage{949, "windows-949"},
    NamedPage{950, "windows-950"},
    NamedPage{1200, "UTF-16LE"},
    NamedPage{1201, "UTF-16BE"},
    NamedPage{10000, "macintosh"},
    NamedPage{10001, "windows-31j"},
    NamedPage{10002, "windows-950"},
    NamedPage{10003, "windows-949"},
    NamedPage{10006, "x-mac-greek"},
    NamedPage{10007, "x-mac-cyrillic"},
    NamedPage{10008, "GB18030"},
    NamedPage{10029, "x-mac-centraleurroman"},
    NamedPage{10081, "x-mac-turkish"},
    NamedPage{20866, "KOI8-R"},
    NamedPage{20932, "EUC-JP"},
    NamedPage{20936, "GB18030"},
    NamedPage{21866, "KOI8-U"},
    NamedPage{28591, "windows-1252"}, // the larger one is meant
    NamedPage{28599, "windows-1254"},
    NamedPage{32768, "macintosh"}, // old workbooks
    NamedPage{50220, "ISO-2022-JP"},
    NamedPage{50221, "ISO-2022-JP"},
    NamedPage{50222, "ISO-2022-JP"},
    NamedPage{50225, "ISO-2022-KR"},
    NamedPage{51932, "EUC-JP"},
    NamedPage{51936, "GB18030"},
    NamedPage{51949, "EUC-KR"},
    NamedPage{52936, "HZ-GB-2312"},
    NamedPage{54936, "GB18030"},
    NamedPage{65000, "UTF-7"},
    NamedPage{65001, "UTF-8"},
};

// Whether bytes below 128 are ASCII whatever stands before them.
bool HoldsAscii(unsigned page) {
    return page != 1201 && page != 65000 && (page < 50220 || page > 52936);
}

} // namespace

std::string CharsetOfCodePage(unsigned page) {
    for (const NamedPage& named : kNamedPages)
        if (named.page == page)
            return named.charset;
    if (page >= 1250 && page <= 1258)
        return "windows-" + std::to_string(page);
    if (page > 28590 && page <= 28605)
        return "ISO-8859-" + std::to_string(page - 28590);
    if (page >= 437 && page <= 869)
        return "cp" + std::to_string(page);
    return "windows-1252";
}

std::string DecodeCodePage(std::string_view bytes, unsigned page) {
    std::string text;
    if (page == kUtf16Page) {
        AppendUtf16(text, bytes);
        return text;
    }
    // Most texts are plain ASCII.
    if (HoldsAscii(page) && std::all_of(bytes.begin(), bytes.end(), [](char c) { return c > 0; }))
        return std::string(bytes);
    return DecodeText(bytes, {CharsetOfCodePage(page), 0, false}, bytes.size());
}

void AppendUtf16(std::string& to, std::string_view bytes) {
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        char32_t unit = U16(bytes, at);
        if (unit < 0x80) {
            to += static_cast<char>(unit);
            continue;
        }
        const char32_t next = at + 3 < bytes.size() ? U16(bytes, at + 2) : 0;
        if (unit >= 0xD800 && unit < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
            unit = 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00);
            at += 2;
        }
        AppendUtf8(to, unit);
    }
}

unsigned CodePageOfLanguage(unsigned language) {
    struct Language {
        unsigned primary;
        int page; // primary: the lower ten bits
    };
    constexpr std::array kLanguages{
        Language{0x01, 1256}, Language{0x02, 1251}, Language{0x05, 1250}, Language{0x08, 1253},
        Language{0x0D, 1255}, Language{0x0E, 1250}, Language{0x11, 932},  Language{0x12, 949},
        Language{0x15, 1250}, Language{0x18, 1250}, Language{0x19, 1251}, Language{0x1B, 1250},
        Language{0x1C, 1250}, Language{0x1E, 874},  Language{0x1F, 1254}, Language{0x20, 1256},
        Language{0x22, 1251}, Language{0x23, 1251}, Language{0x24, 1250}, Language{0x25, 1257},
        Language{0x26, 1257}, Language{0x27, 1257}, Language{0x29, 1256}, Language{0x2A, 1258},
        Language{0x2F, 1251}, Language{0x3F, 1251}, Language{0x40, 1251}, Language{0x44, 1251},
        Language{0x50, 1251},
    };
    const unsigned primary = language & 0x3FF;
    if (primary == 0x04) // Chinese: simplified in China and Singapore
        return language == 0x0804 || language == 0x1004 ? 936 : 950;
    // Serbian and Croatian share a number; so do the scripts of Azeri and Uzbek.
    if (language == 0x0C1A || language == 0x1C1A || language == 0x082C || language == 0x0843)
        return 1251;
    if (primary == 0x1A)
        return 1250;
    if (primary == 0x2C || primary == 0x43)
        return 1254;
    const auto* const found =
        std::find_if(kLanguages.begin(), kLanguages.end(),
                     [primary](const Language& each) { return each.primary == primary; });
    return found == kLanguages.end() ? kWesternPage : found->page;
}

unsigned CodePageOfFontCharset(unsigned charset) {
    switch (charset) {
    case 0:
        return 1252;
    case 77:
        return 10000;
    case 128:
        return 932;
    case 129:
        return 949;
    case 134:
        return 936;
    case 136:
        return 950;
    case 161:
        return 1253;
    case 162:
        return 1254;
    case 163:
        return 1258;
    case 177:
        return 1255;
    case 178:
        return 1256;
    case 186:
        return 1257;
    case 204:
        return 1251;
    case 222:
        return 874;
    case 238:
        return 1250;
    default:
        return 0;
    }
}

} // namespace engine
