// Bytes of old code pages to UTF-8, as they come out of RTF.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/RtfCodePages.h"

#include "engine/readers/CodePage.h"
#include "engine/text/Utf8.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace engine {
namespace {

constexpr int kWestern = 1252;
constexpr const char* kFallback = "windows-1252";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

} // namespace

int CodePageOfFontName(std::string_view name) {
    constexpr std::array<std::pair<std::string_view, int>, 6> kEndings{{
        {" CE", 1250},
        {" Cyr", 1251},
        {" Greek", 1253},
        {" Tur", 1254},
        {" Baltic", 1257},
        {" (Vietnamese)", 1258},
    }};
    constexpr std::array<std::string_view, 8> kPictures{
        "Wingdings", "Webdings",       "ZapfDingbats", "ITC Zapf Dingbats",
        "Marlett",   "Monotype Sorts", "MT Extra",     "Bookshelf Symbol"};
    for (const auto& [ending, page] : kEndings)
        if (name.ends_with(ending))
            return page;
    for (const std::string_view picture : kPictures)
        if (name.starts_with(picture))
            return kPicturePage;
    return name == "Symbol" || name == "StarSymbol" ? kSymbolPage : 0;
}

char32_t SymbolCharacter(unsigned char place) {
    // From 0x41 and 0x61 on: Greek letters under the keys of Latin ones.
    constexpr std::u32string_view kCapitals = U"ΑΒΧΔΕΦΓΗΙϑΚΛΜΝΟΠΘΡΣΤΥςΩΞΨΖ";
    constexpr std::u32string_view kSmall = U"αβχδεφγηιϕκλμνοπθρστυϖωξψζ";
    // From 0xA0 on; blanks stand for parts of large brackets.
    constexpr std::u32string_view kSigns =
        U"€ϒ′≤⁄∞ƒ♣♦♥♠↔←↑→↓°±″≥×∝∂•÷≠≡≈…  ↵ℵℑℜ℘⊗⊕∅∩∪⊃⊇⊄⊂⊆∈∉∠∇®©™∏√⋅¬∧∨⇔⇐⇑⇒⇓◊〈®©™∑           〉∫⌠ ⌡";
    constexpr std::u32string_view kAsciiPlaces = U"\"$'*-@\\^~";
    constexpr std::u32string_view kAsciiSigns = U"∀∃∋∗−≅∴⊥∼";
    static_assert(kCapitals.size() == 26 && kSmall.size() == 26 && kSigns.size() == 0xF6 - 0xA0 &&
                  kAsciiPlaces.size() == kAsciiSigns.size());
    if (place >= 'A' && place <= 'Z')
        return kCapitals[place - 'A'];
    if (place >= 'a' && place <= 'z')
        return kSmall[place - 'a'];
    if (place >= 0xA0 && place - 0xA0U < kSigns.size())
        return kSigns[place - 0xA0U] == U' ' ? 0 : kSigns[place - 0xA0U];
    if (const std::size_t at = kAsciiPlaces.find(place); at != std::u32string_view::npos)
        return kAsciiSigns[at];
    return place >= 0x20 && place < 0x7F ? place : 0;
}

struct RtfCodePages::Page {
    std::unique_ptr<UConverter, CloseConverter> converter;
    bool multiByte = false;
    bool containsAscii = true;
    std::array<std::string, 256> table; // of a page of single bytes

    explicit Page(int codePage);
    void DecodeSingle(std::string_view bytes, std::string& utf8) const;
    // Answers how many bytes at the end begin a character that is not complete.
    std::size_t DecodeMulti(std::string_view bytes, std::string& utf8);

  private:
    void FillWithSigns(int codePage);
};

void RtfCodePages::Page::FillWithSigns(int codePage) {
    containsAscii = false;
    for (unsigned i = 0; i < table.size(); ++i) {
        const char32_t sign =
            codePage == kSymbolPage ? SymbolCharacter(static_cast<unsigned char>(i)) : 0;
        AppendUtf8(table[i], sign == 0 ? U' ' : sign);
    }
}

RtfCodePages::Page::Page(int codePage) {
    if (codePage == kSymbolPage || codePage == kPicturePage) {
        FillWithSigns(codePage);
        return;
    }
    UErrorCode error = U_ZERO_ERROR;
    converter.reset(ucnv_open(CharsetOfCodePage(static_cast<unsigned>(codePage)).c_str(), &error));
    if (U_FAILURE(error)) {
        error = U_ZERO_ERROR;
        converter.reset(ucnv_open(kFallback, &error));
    }
    if (U_FAILURE(error))
        throw std::bad_alloc();
    multiByte = ucnv_getMaxCharSize(converter.get()) > 1;
    for (unsigned i = 0; i < table.size() && !multiByte; ++i) {
        const char byte = static_cast<char>(i);
        std::array<UChar, 4> wide{};
        UErrorCode wrong = U_ZERO_ERROR;
        if (ucnv_toUChars(converter.get(), wide.data(), wide.size(), &byte, 1, &wrong) == 1)
            AppendUtf8(table[i], wide[0]);
    }
}

void RtfCodePages::Page::DecodeSingle(std::string_view bytes, std::string& utf8) const {
    const auto isPlain = [this](char c) {
        return containsAscii && static_cast<unsigned char>(c) < 0x80;
    };
    while (!bytes.empty()) {
        const auto plain = static_cast<std::size_t>(
            std::find_if_not(bytes.begin(), bytes.end(), isPlain) - bytes.begin());
        utf8.append(bytes.substr(0, plain));
        bytes.remove_prefix(plain);
        for (; !bytes.empty() && !isPlain(bytes[0]); bytes.remove_prefix(1))
            utf8 += table[static_cast<unsigned char>(bytes[0])];
    }
}

std::size_t RtfCodePages::Page::DecodeMulti(std::string_view bytes, std::string& utf8) {
    const char* source = bytes.data();
    const char* const end = source + bytes.size();
    std::array<UChar, 1024> wide;
    UChar lead = 0; // the first half of a pair whose second half did not fit in
    UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
    while (error == U_BUFFER_OVERFLOW_ERROR) {
        error = U_ZERO_ERROR;
        UChar* target = wide.data();
        ucnv_toUnicode(converter.get(), &target, wide.data() + wide.size(), &source, end, nullptr,
                       0, &error);
        for (const UChar* unit = wide.data(); unit < target; ++unit) {
            if (U16_IS_LEAD(*unit)) {
                lead = *unit;
                continue;
            }
            const bool pair = lead != 0 && U16_IS_TRAIL(*unit);
            AppendUtf8(utf8, pair ? U16_GET_SUPPLEMENTARY(lead, *unit) : *unit);
            lead = 0;
        }
    }
    UErrorCode wrong = U_ZERO_ERROR;
    const int32_t waiting = ucnv_toUCountPending(converter.get(), &wrong);
    ucnv_resetToUnicode(converter.get());
    return std::min(static_cast<std::size_t>(std::max(waiting, 0)), bytes.size());
}

RtfCodePages::RtfCodePages() : m_page(&Find(kWestern)), m_number(kWestern) {}

RtfCodePages::~RtfCodePages() = default;

RtfCodePages::Page& RtfCodePages::Find(int codePage) {
    std::unique_ptr<Page>& page = m_pages[codePage];
    if (!page)
        page = std::make_unique<Page>(codePage);
    return *page;
}

void RtfCodePages::Select(int codePage) {
    const bool signs = codePage == kSymbolPage || codePage == kPicturePage;
    if (!signs && CharsetOfCodePage(static_cast<unsigned>(codePage)) == kFallback)
        codePage = kWestern;
    if (codePage == m_number)
        return;
    m_number = codePage;
    m_page = &Find(codePage);
}

void RtfCodePages::Decode(std::string_view bytes, std::string& utf8) {
    if (!m_page->multiByte)
        return m_page->DecodeSingle(bytes, utf8);
    if (m_waiting.empty()) {
        const std::size_t waiting = m_page->DecodeMulti(bytes, utf8);
        m_waiting = bytes.substr(bytes.size() - waiting);
        return;
    }
    const std::string joined = m_waiting.append(bytes);
    const std::size_t waiting = m_page->DecodeMulti(joined, utf8);
    m_waiting = joined.substr(joined.size() - waiting);
}

void RtfCodePages::EndCharacter(std::string& utf8) {
    if (std::exchange(m_waiting, {}).empty())
        return;
    utf8 += kReplacement;
}

} // namespace engine
