// Finding out the charset: marks, patterns, declarations, statistics.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Charset.h"
#include "engine/readers/CharsetStatistics.h"

#include <uchardet.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <memory>
#include <utility>

namespace engine {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kPatternSample = 4096;
constexpr std::size_t kEscapeSample = std::size_t{64} * 1024;
constexpr std::size_t kStatisticsSample = std::size_t{8} * 1024; // the library is slow

unsigned Byte(std::string_view bytes, std::size_t i) {
    return static_cast<unsigned char>(bytes[i]);
}

bool ByteOrderMark(std::string_view bytes, Charset& charset) {
    // The marks of UTF-32 first: that of UTF-16 is the beginning of one of them.
    constexpr std::array<std::pair<std::string_view, const char*>, 5> kMarks{{
        {"\xEF\xBB\xBF"sv, "UTF-8"},
        {"\xFF\xFE\0\0"sv, "UTF-32LE"},
        {"\0\0\xFE\xFF"sv, "UTF-32BE"},
        {"\xFF\xFE"sv, "UTF-16LE"},
        {"\xFE\xFF"sv, "UTF-16BE"},
    }};
    for (const auto& [mark, name] : kMarks) {
        if (bytes.substr(0, mark.size()) != mark)
            continue;
        charset.name = name;
        charset.bomBytes = mark.size();
        return true;
    }
    return false;
}

// How well a sample reads as units of 2 or 4 bytes.
struct UnitCount {
    std::size_t plain = 0; // ASCII
    std::size_t other = 0;
    std::size_t wrong = 0; // controls, not assigned, half surrogates
};

UnitCount CountUnits(std::string_view sample, std::size_t width, bool bigEndian) {
    UnitCount count;
    const auto unit = [&](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < width; ++i)
            value = (value << 8) | Byte(sample, at + (bigEndian ? i : width - 1 - i));
        return value;
    };
    for (std::size_t at = 0; at + width <= sample.size(); at += width) {
        std::uint32_t value = unit(at);
        if (width == 2 && value >= 0xD800 && value <= 0xDBFF) {
            at += 2;
            if (at + 2 > sample.size())
                break;
            const std::uint32_t low = unit(at);
            value = low >= 0xDC00 && low <= 0xDFFF
                        ? 0x10000 + ((value - 0xD800) << 10) + (low - 0xDC00)
                        : 0xFFFFFFFF;
        }
        const bool control =
            value < 0x20 && value != '\n' && value != '\r' && value != '\t' && value != '\f';
        if (control || value > 0x10FFFF || u_isdefined(static_cast<UChar32>(value)) == 0)
            ++count.wrong;
        else if (value < 0x80)
            ++count.plain;
        else
            ++count.other;
    }
    return count;
}

std::u32string UnitsOf(std::string_view sample, bool bigEndian) {
    std::u32string units;
    for (std::size_t at = 0; at + 2 <= sample.size(); at += 2)
        units += static_cast<char32_t>(bigEndian ? Byte(sample, at) << 8 | Byte(sample, at + 1)
                                                 : Byte(sample, at + 1) << 8 | Byte(sample, at));
    return units;
}

// UTF-16 and UTF-32 without a mark. Text of any script has blanks and line ends, which are zero
// but for one byte; binary data has units that no text has.
bool WidePattern(std::string_view bytes, Charset& charset) {
    const std::string_view sample = bytes.substr(0, kPatternSample);
    if (sample.size() < 4 || sample.find('\0') == std::string_view::npos)
        return false;
    struct Candidate {
        std::size_t width;
        bool bigEndian;
        const char* name;
    };
    constexpr std::array kCandidates{
        Candidate{4, false, "UTF-32LE"}, Candidate{4, true, "UTF-32BE"},
        Candidate{2, false, "UTF-16LE"}, Candidate{2, true, "UTF-16BE"}};
    std::size_t best = 0;
    for (const Candidate& candidate : kCandidates) {
        if (bytes.size() % candidate.width != 0 && candidate.width == 4)
            continue;
        const UnitCount count = CountUnits(sample, candidate.width, candidate.bigEndian);
        const bool enough = count.plain * 50 > count.other;
        if (count.wrong != 0 || !enough || count.plain * candidate.width <= best)
            continue;
        best = count.plain * candidate.width;
        charset.name = candidate.name;
    }
    if (!charset.name.starts_with("UTF-16"))
        return best > 0;
    // An ideograph may look like a blank or a letter when its bytes are swapped.
    const double little = ImprobabilityOf(UnitsOf(sample, false));
    const double big = ImprobabilityOf(UnitsOf(sample, true));
    charset.name = "UTF-8";
    if (std::min(little, big) > kMostForAnything)
        return false;
    charset.name = big < little ? "UTF-16BE" : "UTF-16LE";
    return true;
}

bool IsControl(unsigned char c) {
    return c < 0x09 || (c >= 0x0E && c <= 0x1A) || (c >= 0x1C && c < 0x20);
}

// Seven-bit charsets of East Asia, which are valid UTF-8 too.
bool EscapeSequences(std::string_view bytes, Charset& charset) {
    const std::string_view sample = bytes.substr(0, kEscapeSample);
    if (sample.find('\x1B') == std::string_view::npos)
        return false;
    const auto has = [&](std::string_view sequence) {
        return sample.find(sequence) != std::string_view::npos;
    };
    if (has("\x1B$)C"))
        charset.name = "ISO-2022-KR";
    else if (has("\x1B$)A") || has("\x1B$)G"))
        charset.name = "ISO-2022-CN";
    else if (has("\x1B$B") || has("\x1B$@") || has("\x1B$(D"))
        charset.name = "ISO-2022-JP-2";
    else
        return false;
    return true;
}

// Whether a text ends within a character that these bytes begin.
bool IsCutCharacter(std::string_view rest) {
    const auto lead = static_cast<unsigned char>(rest.front());
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    return lead >= 0xC2 && lead <= 0xF4 && rest.size() < length &&
           std::all_of(rest.begin() + 1, rest.end(),
                       [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; });
}

// UTF-8 in which something got broken still has far more good than bad sequences; text of
// another charset has next to no good ones.
bool IsDamagedUtf8(std::string_view bytes, std::size_t firstBad) {
    std::size_t good = 0, bad = 0;
    const auto scan = [&](std::string_view part) {
        while (!part.empty()) {
            const std::size_t valid = ValidUtf8Length(part);
            for (const char c : part.substr(0, valid))
                good += static_cast<unsigned char>(c) >= 0xC0 ? 1 : 0;
            if (valid == part.size() || IsCutCharacter(part.substr(valid)))
                return;
            ++bad;
            part.remove_prefix(valid + 1);
        }
    };
    constexpr std::size_t kBefore = std::size_t{512} * 1024;
    const std::size_t from = firstBad > kBefore ? firstBad - kBefore : 0;
    scan(bytes.substr(from, 2 * kBefore));
    return good > 0 && good >= 2 * bad;
}

// UTF-16 of scripts far from ASCII may have no zero byte at all. It then holds bytes that other
// text has not, and characters that people use.
bool WideText(std::string_view bytes, Charset& charset) {
    constexpr std::size_t kShortest = 8, kFewUnits = 6;
    const std::string_view sample = bytes.substr(0, kPatternSample);
    const bool controls = std::any_of(sample.begin(), sample.end(), [](char c) {
        return IsControl(static_cast<unsigned char>(c));
    });
    const std::size_t valid = ValidUtf8Length(sample);
    const bool utf8 = valid == sample.size() || IsDamagedUtf8(sample, valid);
    if (sample.size() < kShortest || sample.size() % 2 != 0 || (utf8 && !controls))
        return false;
    const double little = ImprobabilityOf(UnitsOf(sample, false));
    const double big = ImprobabilityOf(UnitsOf(sample, true));
    const double cost = std::min(little, big);
    // A few units may have come to look like common characters by chance.
    const bool few = sample.size() < kFewUnits * 2;
    if (cost >= (few && !controls ? kMostForSureText : kMostForText))
        return false;
    charset.name = big < little ? "UTF-16BE" : "UTF-16LE";
    return true;
}

struct FreeDetector {
    void operator()(uchardet_t detector) const { uchardet_delete(detector); }
};

std::string Statistics(std::string_view sample) {
    const std::unique_ptr<uchardet, FreeDetector> detector(uchardet_new());
    if (!detector || uchardet_handle_data(detector.get(), sample.data(), sample.size()) != 0)
        return {};
    uchardet_data_end(detector.get());
    return uchardet_get_charset(detector.get());
}

// How the bytes beyond ASCII stand: in Western texts alone between plain letters, in all others
// in whole words.
struct HighBytes {
    std::size_t total = 0;
    std::size_t inRuns = 0; // in runs of two and more
};

HighBytes CountHighBytes(std::string_view sample) {
    HighBytes count;
    std::size_t run = 0;
    const auto endRun = [&] {
        count.total += run;
        count.inRuns += run >= 2 ? run : 0;
        run = 0;
    };
    for (const char c : sample) {
        if (static_cast<unsigned char>(c) >= 0x80)
            ++run;
        else
            endRun();
    }
    endRun();
    return count;
}

bool IsLatinScript(std::string_view charset) {
    constexpr std::array kLatin{"iso-8859-1",        "iso-8859-2",   "iso-8859-3",   "iso-8859-4",
                                "iso-8859-9",        "iso-8859-10",  "iso-8859-13",  "iso-8859-14",
                                "iso-8859-15",       "iso-8859-16",  "windows-1250", "windows-1252",
                                "windows-1254",      "windows-1257", "windows-1258", "ibm852",
                                "mac-centraleurope", "viscii"};
    std::string lower(charset);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return std::find(kLatin.begin(), kLatin.end(), lower) != kLatin.end();
}

// Charsets that only the library knows, of the languages that only it knows.
bool IsBeyondOwnStatistics(std::string_view guess) {
    constexpr std::array<std::string_view, 7> kCharsets{"ISO-8859-3",  "ISO-8859-4", "ISO-8859-10",
                                                        "ISO-8859-13", "VISCII",     "WINDOWS-1258",
                                                        "EUC-TW"};
    return std::find(kCharsets.begin(), kCharsets.end(), guess) != kCharsets.end();
}

// Own statistics know the languages that are met most, also from a few words; the library knows
// some more, given enough text.
std::string GuessByStatistics(std::string_view bytes, std::size_t firstHigh) {
    constexpr std::size_t kBefore = 1024;
    constexpr std::size_t kFewHighBytes = 12;
    constexpr std::size_t kEnoughHighBytes = 48;
    const CharsetGuess own = GuessCharset(bytes);
    const std::size_t from = firstHigh > kBefore ? firstHigh - kBefore : 0;
    const std::string_view sample = bytes.substr(from, kStatisticsSample);
    const HighBytes high = CountHighBytes(sample);
    if (high.total < (own.fits ? kEnoughHighBytes : kFewHighBytes))
        return own.name;
    const std::string guess = Statistics(sample);
    const bool isolated = high.inRuns * 2 < high.total;
    const std::string known = CharsetOfLabel(guess);
    if (known.empty() || guess == "ASCII" || (!IsLatinScript(guess) && isolated))
        return own.name;
    return !own.fits || IsBeyondOwnStatistics(guess) ? known : own.name;
}

} // namespace

std::string CharsetOfLabel(std::string_view label) {
    // Labels as they are used, and the larger charsets that programs mean by them.
    constexpr std::array<std::pair<std::string_view, const char*>, 28> kMeant{{
        {"utf8", "UTF-8"},
        {"utf-8", "UTF-8"},
        {"ascii", "windows-1252"},
        {"us-ascii", "windows-1252"},
        {"iso-8859-1", "windows-1252"},
        {"iso8859-1", "windows-1252"},
        {"iso_8859-1", "windows-1252"},
        {"latin1", "windows-1252"},
        {"iso-8859-9", "windows-1254"},
        {"iso-8859-11", "windows-874"},
        {"tis-620", "windows-874"},
        {"gb2312", "gb18030"},
        {"gbk", "gb18030"},
        {"x-gbk", "gb18030"},
        {"euc-kr", "windows-949"},
        {"ks_c_5601-1987", "windows-949"},
        {"uhc", "windows-949"},
        {"shift_jis", "windows-31j"},
        {"shift-jis", "windows-31j"},
        {"sjis", "windows-31j"},
        {"x-sjis", "windows-31j"},
        {"big5", "Big5-HKSCS"},
        {"big5-hkscs", "Big5-HKSCS"},
        {"iso-2022-jp", "ISO-2022-JP-2"},
        {"mac-cyrillic", "x-mac-cyrillic"},
        {"mac-centraleurope", "x-mac-centraleurroman"},
        {"johab", "ksc_5601_1992"},
        {"x-user-defined", "windows-1252"},
    }};
    std::string lower;
    for (const char c : label)
        if (static_cast<unsigned char>(c) > ' ' && c != '"' && c != '\'')
            lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (lower.empty() || lower.size() > 40)
        return {};
    for (const auto& [name, meant] : kMeant)
        if (lower == name)
            return meant;
    UErrorCode error = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(lower.c_str(), &error);
    ucnv_close(converter);
    return U_SUCCESS(error) ? lower : std::string();
}

Charset DetectCharset(std::string_view bytes, std::string_view declared) {
    Charset charset;
    if (ByteOrderMark(bytes, charset)) {
        charset.wellFormed = charset.name == "UTF-8" && ValidUtf8Length(bytes) == bytes.size();
        return charset;
    }
    if (WidePattern(bytes, charset) || WideText(bytes, charset) || EscapeSequences(bytes, charset))
        return charset;
    const std::size_t valid = ValidUtf8Length(bytes);
    if (valid == bytes.size()) {
        charset.wellFormed = true;
        return charset;
    }
    std::string label = CharsetOfLabel(declared);
    const bool wide = label.starts_with("utf-16") || label.starts_with("utf-32");
    if (!label.empty() && label != "UTF-8" && !wide) {
        charset.name = std::move(label);
        return charset;
    }
    if (IsDamagedUtf8(bytes, valid))
        return charset;
    const auto high = std::find_if(bytes.begin(), bytes.end(),
                                   [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    charset.name = GuessByStatistics(bytes, static_cast<std::size_t>(high - bytes.begin()));
    return charset;
}

bool LooksLikeText(std::string_view bytes) {
    Charset wide;
    if (ByteOrderMark(bytes, wide) || WidePattern(bytes, wide) || WideText(bytes, wide) ||
        EscapeSequences(bytes, wide))
        return true;
    constexpr std::size_t kHead = std::size_t{64} * 1024;
    constexpr std::size_t kProbe = 4096;
    constexpr std::size_t kProbes = 8;
    constexpr std::size_t kBearable = 50; // one control character in so many bytes
    std::size_t seen = 0, controls = 0;
    const auto look = [&](std::string_view sample) {
        seen += sample.size();
        controls +=
            static_cast<std::size_t>(std::count_if(sample.begin(), sample.end(), [](char c) {
                return IsControl(static_cast<unsigned char>(c));
            }));
    };
    look(bytes.substr(0, kHead));
    if (controls * kBearable > seen)
        return false;
    if (bytes.size() > kHead)
        for (std::size_t i = 1; i <= kProbes; ++i)
            look(bytes.substr(kHead + (bytes.size() - kHead) / kProbes * i -
                                  std::min(kProbe, (bytes.size() - kHead) / kProbes),
                              kProbe));
    return controls * kBearable <= seen;
}

} // namespace engine
