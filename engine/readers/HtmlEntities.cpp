// libxml2 knows the names of HTML 4; those that HTML 5 added and people use stand here.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/HtmlEntities.h"

#include "engine/readers/Charset.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <array>
#include <utility>

namespace engine {
namespace {

struct Named {
    std::string_view name;
    char32_t character;
};

// Sorted by name.
constexpr std::array kLaterNames{
    Named{"Abreve", 0x102},  Named{"Amacr", 0x100},   Named{"Aogon", 0x104},
    Named{"Cacute", 0x106},  Named{"Ccaron", 0x10C},  Named{"Ccirc", 0x108},
    Named{"Cdot", 0x10A},    Named{"Dcaron", 0x10E},  Named{"Dstrok", 0x110},
    Named{"ENG", 0x14A},     Named{"Ecaron", 0x11A},  Named{"Edot", 0x116},
    Named{"Emacr", 0x112},   Named{"Eogon", 0x118},   Named{"Gbreve", 0x11E},
    Named{"Gcedil", 0x122},  Named{"Gcirc", 0x11C},   Named{"Gdot", 0x120},
    Named{"Hcirc", 0x124},   Named{"Hstrok", 0x126},  Named{"IJlig", 0x132},
    Named{"Idot", 0x130},    Named{"Imacr", 0x12A},   Named{"Iogon", 0x12E},
    Named{"Itilde", 0x128},  Named{"Jcirc", 0x134},   Named{"Kcedil", 0x136},
    Named{"Lacute", 0x139},  Named{"Lcaron", 0x13D},  Named{"Lcedil", 0x13B},
    Named{"Lmidot", 0x13F},  Named{"Lstrok", 0x141},  Named{"Nacute", 0x143},
    Named{"Ncaron", 0x147},  Named{"Ncedil", 0x145},  Named{"NewLine", '\n'},
    Named{"Odblac", 0x150},  Named{"Omacr", 0x14C},   Named{"Racute", 0x154},
    Named{"Rcaron", 0x158},  Named{"Rcedil", 0x156},  Named{"Sacute", 0x15A},
    Named{"Scedil", 0x15E},  Named{"Scirc", 0x15C},   Named{"Tab", '\t'},
    Named{"Tcaron", 0x164},  Named{"Tcedil", 0x162},  Named{"Tstrok", 0x166},
    Named{"Ubreve", 0x16C},  Named{"Udblac", 0x170},  Named{"Umacr", 0x16A},
    Named{"Uogon", 0x172},   Named{"Uring", 0x16E},   Named{"Utilde", 0x168},
    Named{"Wcirc", 0x174},   Named{"Ycirc", 0x176},   Named{"Zacute", 0x179},
    Named{"Zcaron", 0x17D},  Named{"Zdot", 0x17B},    Named{"ZeroWidthSpace", 0x200B},
    Named{"abreve", 0x103},  Named{"amacr", 0x101},   Named{"aogon", 0x105},
    Named{"apos", '\''},     Named{"ast", '*'},       Named{"bsol", '\\'},
    Named{"cacute", 0x107},  Named{"ccaron", 0x10D},  Named{"ccirc", 0x109},
    Named{"cdot", 0x10B},    Named{"check", 0x2713},  Named{"checkmark", 0x2713},
    Named{"colon", ':'},     Named{"comma", ','},     Named{"commat", '@'},
    Named{"copysr", 0x2117}, Named{"dash", 0x2010},   Named{"dcaron", 0x10F},
    Named{"dollar", '$'},    Named{"dstrok", 0x111},  Named{"ecaron", 0x11B},
    Named{"edot", 0x117},    Named{"emacr", 0x113},   Named{"eng", 0x14B},
    Named{"eogon", 0x119},   Named{"equals", '='},    Named{"excl", '!'},
    Named{"ffilig", 0xFB03}, Named{"fflig", 0xFB00},  Named{"ffllig", 0xFB04},
    Named{"filig", 0xFB01},  Named{"fllig", 0xFB02},  Named{"gbreve", 0x11F},
    Named{"gcirc", 0x11D},   Named{"gdot", 0x121},    Named{"grave", '`'},
    Named{"hcirc", 0x125},   Named{"horbar", 0x2015}, Named{"hstrok", 0x127},
    Named{"hyphen", 0x2010}, Named{"ijlig", 0x133},   Named{"imacr", 0x12B},
    Named{"inodot", 0x131},  Named{"iogon", 0x12F},   Named{"itilde", 0x129},
    Named{"jcirc", 0x135},   Named{"kcedil", 0x137},  Named{"kgreen", 0x138},
    Named{"lacute", 0x13A},  Named{"lbrace", '{'},    Named{"lbrack", '['},
    Named{"lcaron", 0x13E},  Named{"lcedil", 0x13C},  Named{"lcub", '{'},
    Named{"lmidot", 0x140},  Named{"lowbar", '_'},    Named{"lpar", '('},
    Named{"lsqb", '['},      Named{"lstrok", 0x142},  Named{"midast", '*'},
    Named{"nacute", 0x144},  Named{"napos", 0x149},   Named{"ncaron", 0x148},
    Named{"ncedil", 0x146},  Named{"num", '#'},       Named{"numero", 0x2116},
    Named{"odblac", 0x151},  Named{"omacr", 0x14D},   Named{"percnt", '%'},
    Named{"period", '.'},    Named{"phone", 0x260E},  Named{"plus", '+'},
    Named{"quest", '?'},     Named{"racute", 0x155},  Named{"rbrace", '}'},
    Named{"rbrack", ']'},    Named{"rcaron", 0x159},  Named{"rcedil", 0x157},
    Named{"rcub", '}'},      Named{"rpar", ')'},      Named{"rsqb", ']'},
    Named{"sacute", 0x15B},  Named{"scedil", 0x15F},  Named{"scirc", 0x15D},
    Named{"semi", ';'},      Named{"sol", '/'},       Named{"star", 0x2606},
    Named{"starf", 0x2605},  Named{"tcaron", 0x165},  Named{"tcedil", 0x163},
    Named{"tstrok", 0x167},  Named{"ubreve", 0x16D},  Named{"udblac", 0x171},
    Named{"umacr", 0x16B},   Named{"uogon", 0x173},   Named{"uring", 0x16F},
    Named{"utilde", 0x169},  Named{"verbar", '|'},    Named{"vert", '|'},
    Named{"wcirc", 0x175},   Named{"ycirc", 0x177},   Named{"zacute", 0x17A},
    Named{"zcaron", 0x17E},  Named{"zdot", 0x17C},
};
static_assert(std::is_sorted(kLaterNames.begin(), kLaterNames.end(),
                             [](const Named& a, const Named& b) { return a.name < b.name; }));

// 0: unknown.
char32_t Lookup(std::string_view name) {
    const auto later =
        std::lower_bound(kLaterNames.begin(), kLaterNames.end(), name,
                         [](const Named& a, std::string_view b) { return a.name < b; });
    if (later != kLaterNames.end() && later->name == name)
        return later->character;
    const std::string terminated(name);
    const htmlEntityDesc* entity =
        htmlEntityLookup(reinterpret_cast<const xmlChar*>(terminated.c_str()));
    return entity == nullptr ? 0 : entity->value;
}

bool IsNameChar(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// 128 to 159 are what windows-1252 has there, as every browser takes them.
char32_t Meant(char32_t number) {
    constexpr std::array<char32_t, 32> kWindows{
        0x20AC, 0x81,   0x201A, 0x192,  0x201E, 0x2026, 0x2020, 0x2021, 0x2C6,  0x2030, 0x160,
        0x2039, 0x152,  0x8D,   0x17D,  0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x2DC,  0x2122, 0x161,  0x203A, 0x153,  0x9D,   0x17E,  0x178};
    if (number >= 0x80 && number < 0xA0)
        return kWindows[number - 0x80];
    return number == 0 ? 0xFFFD : number;
}

std::size_t DecodeNumber(std::string_view text, std::string& out) {
    std::size_t at = 2;
    const bool hex = at < text.size() && (text[at] == 'x' || text[at] == 'X');
    at += hex ? 1 : 0;
    const std::size_t digits = at;
    char32_t number = 0;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        const char lower = static_cast<char>(c | 0x20);
        char32_t digit = 0;
        if (c >= '0' && c <= '9')
            digit = static_cast<char32_t>(c - '0');
        else if (hex && lower >= 'a' && lower <= 'f')
            digit = static_cast<char32_t>(lower - 'a' + 10);
        else
            break;
        number = std::min<char32_t>(number * (hex ? 16 : 10) + digit, 0x110000);
    }
    if (at == digits)
        return 0;
    AppendUtf8(out, Meant(number));
    return at + (at < text.size() && text[at] == ';' ? 1 : 0);
}

} // namespace

std::string NamedCharacter(std::string_view name) {
    std::string text;
    if (const char32_t character = Lookup(name); character != 0)
        AppendUtf8(text, character);
    return text;
}

std::size_t DecodeReference(std::string_view text, std::string& out) {
    constexpr std::size_t kLongestName = 32;
    if (text.size() < 3 || text[0] != '&')
        return 0;
    if (text[1] == '#')
        return DecodeNumber(text, out);
    std::size_t end = 1;
    while (end < text.size() && end <= kLongestName && IsNameChar(text[end]))
        ++end;
    if (end < text.size() && text[end] == ';') {
        const char32_t character = Lookup(text.substr(1, end - 1));
        if (character != 0) {
            AppendUtf8(out, character);
            return end + 1;
        }
    }
    // Without ";" only Latin-1 and the four of the markup itself; the longest that fits.
    constexpr std::size_t kLongestEarly = 6;
    for (std::size_t length = std::min(end - 1, kLongestEarly); length >= 2; --length) {
        const char32_t character = Lookup(text.substr(1, length));
        const bool early = character == '&' || character == '<' || character == '>' ||
                           character == '"' || (character >= 0xA0 && character <= 0xFF);
        if (!early)
            continue;
        AppendUtf8(out, character);
        return length + 1;
    }
    return 0;
}

std::string DecodeReferences(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const std::size_t mark = std::min(text.find('&'), text.size());
        out.append(text.substr(0, mark));
        text.remove_prefix(mark);
        if (text.empty())
            break;
        const std::size_t length = DecodeReference(text, out);
        if (length == 0)
            out += '&';
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out;
}

} // namespace engine
