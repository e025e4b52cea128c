// Guesses the charset of text by what it would say in each: the one whose reading is the least
// improbable wins. All costs are half bits.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CharsetStatistics.h"

#include "engine/readers/CharsetModels.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <vector>

namespace engine {
namespace {

constexpr std::size_t kSample = 2048;

bool IsHigh(char c) {
    return static_cast<unsigned char>(c) >= 0x80;
}

bool IsAsciiLetter(char c) {
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'z';
}

// The places that hold more than ASCII, with what stands around them: a long text may have them
// far apart.
std::string SampleOf(std::string_view bytes) {
    constexpr std::size_t kFarthest = std::size_t{1024} * 1024;
    constexpr std::size_t kAround = 40;
    bytes = bytes.substr(0, kFarthest);
    std::string sample;
    std::size_t end = 0; // of what is in the sample
    for (std::size_t at = 0; at < bytes.size() && sample.size() < kSample; ++at) {
        if (!IsHigh(bytes[at]))
            continue;
        const std::size_t from = std::max(end, at - std::min(at, kAround));
        if (from > end)
            sample += ' ';
        std::size_t quiet = 0;
        for (end = at; end < bytes.size() && quiet < kAround; ++end)
            quiet = IsHigh(bytes[end]) ? 0 : quiet + 1;
        end = std::min(end, from + kSample);
        sample += bytes.substr(from, end - from);
        at = end > at ? end - 1 : at;
    }
    return sample;
}

// ---- Charsets of one byte

enum Family : unsigned {
    Western = 1,
    Central = 2,
    Turkish = 4,
    Baltic = 8,
    Cyrillic = 16,
    Greek = 32,
    Hebrew = 64,
    Arabic = 128,
    Thai = 256
};

struct SingleByte {
    const char* name;
    unsigned families;
    int rarity; // what it costs beforehand
};
constexpr std::array kSingleBytes{
    SingleByte{"windows-1252", Western, 0},
    SingleByte{"windows-1250", Central, 8},
    SingleByte{"windows-1251", Cyrillic, 3},
    SingleByte{"windows-1253", Greek, 3},
    SingleByte{"windows-1254", Turkish, 4},
    SingleByte{"windows-1257", Baltic, 10},
    SingleByte{"windows-1255", Hebrew, 4},
    SingleByte{"windows-1256", Arabic, 5},
    SingleByte{"windows-874", Thai, 5},
    SingleByte{"KOI8-R", Cyrillic, 5},
    SingleByte{"KOI8-U", Cyrillic, 7},
    SingleByte{"ISO-8859-2", Central, 9},
    SingleByte{"ISO-8859-15", Western, 6},
    SingleByte{"ISO-8859-7", Greek, 6},
    SingleByte{"ISO-8859-5", Cyrillic, 10},
    SingleByte{"ISO-8859-6", Arabic, 10},
    SingleByte{"ISO-8859-16", Central, 14},
    SingleByte{"ibm-866", Cyrillic, 10},
    SingleByte{"x-mac-cyrillic", Cyrillic, 14},
    SingleByte{"macintosh", Western, 14},
    SingleByte{"ibm-850", Western, 14},
    SingleByte{"ibm-852", Central, 16},
    SingleByte{"x-mac-centraleurroman", Central, 26},
};

Family FamilyOf(std::string_view language) {
    constexpr std::string_view kCentral = "pl cs sk hu ro hr sl ", kBaltic = "lt lv et ",
                               kCyrillic = "ru uk bg sr ";
    const auto in = [&](std::string_view list) {
        return list.find(language) != std::string_view::npos;
    };
    if (in(kCentral))
        return Central;
    if (in(kBaltic))
        return Baltic;
    if (in(kCyrillic))
        return Cyrillic;
    return language == "tr"   ? Turkish
           : language == "el" ? Greek
           : language == "he" ? Hebrew
           : language == "ar" ? Arabic
           : language == "th" ? Thai
                              : Western;
}

// What a byte is in a charset, seen from a language. Below kFirstSpecial: the place of its letter
// in the alphabet, 0 for what stands between words.
constexpr std::uint8_t kFirstSpecial = 250;
constexpr std::uint8_t kForeignLetter = 250, kApostrophe = 251, kSign = 252, kLoneSign = 253,
                       kRareSign = 254, kImpossible = 255;

constexpr int kForeignCost = 28, kSignCost = 12, kRareSignCost = 24, kImpossibleCost = 80,
              kSignInsideWord = 16, kCapitalInsideWord = 14, kLatinInsideWord = 24;

struct Reading {
    const SingleByte* charset;
    const LanguageModel* language;
    bool latin;
    std::array<std::uint8_t, 256> place{};
    std::array<bool, 256> capital{};
};

std::uint8_t PlaceOf(char32_t character, const LanguageModel& language) {
    constexpr std::u32string_view kBesideWords = U"\u00A0«»“”„‘‚–—…¿¡•°", kApart = U"€£§©®·№±×";
    if (character < 0x80 && !IsAsciiLetter(static_cast<char>(character)))
        return 0;
    const auto lower = static_cast<char32_t>(u_tolower(static_cast<UChar32>(character)));
    const auto found = std::lower_bound(language.alphabet.begin(), language.alphabet.end(), lower);
    if (found != language.alphabet.end() && *found == lower)
        return static_cast<std::uint8_t>(found - language.alphabet.begin());
    if (character < 0x80)
        return 0;
    if (character == 0xFFFD || character < 0xA0 || !u_isdefined(static_cast<UChar32>(character)))
        return kImpossible;
    if (u_isalpha(static_cast<UChar32>(character)))
        return kForeignLetter;
    if (character == U'’')
        return kApostrophe;
    if (kBesideWords.find(character) != std::u32string_view::npos)
        return kSign;
    return kApart.find(character) != std::u32string_view::npos ? kLoneSign : kRareSign;
}

std::array<char32_t, 256> TableOf(const char* charset) {
    std::array<char32_t, 256> table{};
    UErrorCode error = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open(charset, &error);
    for (unsigned i = 0; i < table.size(); ++i) {
        const char byte = static_cast<char>(i);
        UChar unit = 0xFFFD;
        UErrorCode wrong = U_ZERO_ERROR;
        if (converter == nullptr || ucnv_toUChars(converter, &unit, 1, &byte, 1, &wrong) != 1)
            unit = 0xFFFD;
        table[i] = unit;
    }
    ucnv_close(converter);
    return table;
}

const std::vector<Reading>& Readings() {
    static const std::vector<Reading> readings = [] {
        std::vector<Reading> made;
        for (const SingleByte& charset : kSingleBytes) {
            const std::array<char32_t, 256> table = TableOf(charset.name);
            for (const LanguageModel& language : LanguageModels()) {
                if ((FamilyOf(language.name) & charset.families) == 0)
                    continue;
                Reading& reading = made.emplace_back();
                reading.charset = &charset;
                reading.language = &language;
                reading.latin = language.alphabet.size() > 1 && language.alphabet[1] == U'a';
                for (unsigned i = 0; i < table.size(); ++i) {
                    reading.place[i] = PlaceOf(table[i], language);
                    reading.capital[i] = u_isupper(static_cast<UChar32>(table[i])) != 0;
                }
            }
        }
        return made;
    }();
    return readings;
}

// What a word costs, with the blanks around it.
int CostOfWord(std::string_view word, const Reading& reading) {
    const std::string_view costs = reading.language->costs;
    const std::size_t size = reading.language->alphabet.size();
    std::size_t before = 0;
    bool small = false, letter = false;
    int cost = 0;
    const auto step = [&](std::size_t next) {
        if (before != 0 || next != 0)
            cost += costs[before * size + next] - '0';
        before = next;
    };
    for (std::size_t i = 0; i < word.size(); ++i) {
        const auto byte = static_cast<unsigned char>(word[i]);
        const std::uint8_t place = reading.place[byte];
        if (place < kFirstSpecial) {
            step(place);
            // Latin letters within a word of another script.
            if (place == 0 && IsAsciiLetter(word[i]))
                cost += kLatinInsideWord;
            cost += small && reading.capital[byte] ? kCapitalInsideWord : 0;
            small = place != 0 && !reading.capital[byte];
            letter = place != 0 || IsAsciiLetter(word[i]);
            continue;
        }
        const bool last = i + 1 == word.size();
        const bool inside = place == kLoneSign ? letter || !last : letter && !last;
        cost += place == kForeignLetter ? kForeignCost
                : place == kImpossible  ? kImpossibleCost
                : place == kRareSign    ? kRareSignCost
                                        : kSignCost;
        cost += inside && place > kApostrophe ? kSignInsideWord : 0;
        before = 0;
        small = letter = false;
    }
    step(0);
    return cost;
}

// The sample's words: those with high bytes, and those without.
struct Words {
    std::vector<std::string_view> high, plain;
    std::size_t highBytes = 0;
};

Words WordsOf(std::string_view sample) {
    Words words;
    for (std::size_t at = 0; at < sample.size();) {
        std::size_t end = at;
        bool high = false;
        for (; end < sample.size() && (IsHigh(sample[end]) || IsAsciiLetter(sample[end])); ++end)
            high = high || IsHigh(sample[end]);
        if (end > at)
            (high ? words.high : words.plain).push_back(sample.substr(at, end - at));
        at = std::max(end, at + 1);
    }
    for (const char c : sample)
        words.highBytes += IsHigh(c) ? 1 : 0;
    return words;
}

struct Best {
    std::string name = "windows-1252";
    double cost = std::numeric_limits<double>::max();
    void Offer(const char* charset, double price) {
        if (price >= cost)
            return;
        cost = price;
        name = charset;
    }
};

void TrySingleBytes(const Words& words, Best& best) {
    // Words of plain ASCII tell the language, which tells what the others may be: half of what
    // they cost more than in the language that suits them best.
    const std::vector<Reading>& readings = Readings();
    const auto plainCost = [&](const Reading& reading) {
        int cost = 0;
        for (const std::string_view word : words.plain)
            cost += CostOfWord(word, reading);
        return cost;
    };
    std::vector<int> plain(readings.size(), 0);
    int least = std::numeric_limits<int>::max();
    for (std::size_t i = 0; i < readings.size(); ++i) {
        if (!readings[i].latin)
            continue;
        plain[i] = plainCost(readings[i]);
        least = std::min(least, plain[i]);
    }
    for (std::size_t i = 0; i < readings.size(); ++i) {
        double cost = readings[i].charset->rarity;
        if (readings[i].latin)
            cost += (plain[i] - least) / 2.0;
        for (const std::string_view word : words.high)
            cost += CostOfWord(word, readings[i]);
        best.Offer(readings[i].charset->name, cost);
    }
}

// ---- Charsets of two bytes

struct DoubleByte {
    const char* name;
    WritingSystem system;
    int rarity;
    // Lead bytes of the characters that are in general use, and of those that are not so rare.
    unsigned char usualFrom, usualTo, knownFrom, knownTo;
    bool oldSetIsHigh; // its second bytes, too, are high
    int usualCost;     // as many half bits as it takes to choose among those in general use
};
constexpr std::array kDoubleBytes{
    DoubleByte{"windows-31j", WritingSystem::Japanese, 6, 0x88, 0x97, 0x98, 0xEA, false, 23},
    DoubleByte{"EUC-JP", WritingSystem::Japanese, 8, 0xB0, 0xCF, 0xD0, 0xF4, true, 23},
    DoubleByte{"gb18030", WritingSystem::SimplifiedChinese, 6, 0xB0, 0xD7, 0xD8, 0xF7, true, 24},
    DoubleByte{"Big5-HKSCS", WritingSystem::TraditionalChinese, 8, 0xA4, 0xC6, 0xC9, 0xF9, false,
               25},
    DoubleByte{"windows-949", WritingSystem::Korean, 6, 0xB0, 0xC8, 0xCA, 0xFD, true, 22},
};

constexpr int kCommonCost = 16, kKnownCost = 32, kUnusualCost = 42;

bool IsIn(std::u32string_view sorted, char32_t character) {
    return std::binary_search(sorted.begin(), sorted.end(), character);
}

int CostOfCharacter(char32_t c, std::string_view bytes, const DoubleByte& charset) {
    const bool japanese = charset.system == WritingSystem::Japanese;
    if (c == 0xFFFD || c < 0xA0 || (c >= 0xE000 && c < 0xF900)) // some tables have SUB for wrong
        return kImpossibleCost;
    if (c >= 0x3041 && c <= 0x3096)
        return japanese ? 11 : kKnownCost;
    if (c >= 0x30A1 && c <= 0x30FC)
        return japanese ? 14 : kKnownCost;
    if (c >= 0xFF61 && c <= 0xFF9F) // halves, of one byte
        return 24;
    if (c >= 0x3000 && c <= 0x3011)
        return 13;
    if (c == 0xFF0C || c == 0xFF01 || c == 0xFF1A || c == 0xFF1F || c == 0xFF08 || c == 0xFF09)
        return 14;
    if (c >= 0xFF01 && c <= 0xFF5E)
        return 22;
    if (IsIn(CommonCharacters(charset.system), c))
        return kCommonCost;
    const auto lead = static_cast<unsigned char>(bytes[0]);
    if (bytes.size() != 2 || !((c >= 0x4E00 && c <= 0x9FFF) || (c >= 0xAC00 && c <= 0xD7A3)))
        return c < 0x2100 ? kKnownCost : kUnusualCost;
    // The extended sets put their rarer characters at places where the old ones have nothing.
    const bool extended = charset.oldSetIsHigh && static_cast<unsigned char>(bytes[1]) < 0xA1;
    if (extended)
        return kUnusualCost;
    if (lead >= charset.usualFrom && lead <= charset.usualTo)
        return charset.usualCost;
    if (lead >= charset.knownFrom && lead <= charset.knownTo)
        return kKnownCost;
    return kUnusualCost;
}

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

void TryDoubleBytes(std::string_view sample, Best& best) {
    for (const DoubleByte& charset : kDoubleBytes) {
        UErrorCode error = U_ZERO_ERROR;
        const std::unique_ptr<UConverter, CloseConverter> converter(
            ucnv_open(charset.name, &error));
        if (converter == nullptr)
            continue;
        double cost = charset.rarity;
        const char* at = sample.data();
        const char* const end = at + sample.size();
        bool mixed = false; // within a word that holds high bytes
        while (at < end && cost < best.cost) {
            if (!IsHigh(*at)) {
                // Words of these scripts and Latin ones are mostly set apart.
                mixed = mixed && IsAsciiLetter(*at);
                cost += mixed ? kLatinInsideWord : 0;
                ++at;
                continue;
            }
            for (const char* before = at;
                 !mixed && before > sample.data() && IsAsciiLetter(before[-1]); --before)
                cost += kLatinInsideWord;
            mixed = true;
            const char* const from = at;
            error = U_ZERO_ERROR;
            const UChar32 character = ucnv_getNextUChar(converter.get(), &at, end, &error);
            if (U_FAILURE(error)) {
                cost += kImpossibleCost;
                at = std::max(at, from + 1);
                ucnv_resetToUnicode(converter.get());
                continue;
            }
            cost += CostOfCharacter(static_cast<char32_t>(character),
                                    {from, static_cast<std::size_t>(at - from)}, charset);
        }
        if (at >= end)
            best.Offer(charset.name, cost);
    }
}

} // namespace

CharsetGuess GuessCharset(std::string_view bytes) {
    const std::string sample = SampleOf(bytes);
    const Words words = WordsOf(sample);
    Best best;
    TrySingleBytes(words, best);
    TryDoubleBytes(sample, best);
    // A language costs some eight half bits a letter, whatever is no text three times as much.
    constexpr double kMostForLanguage = 17;
    std::size_t letters = 0;
    for (const std::string_view word : words.high)
        letters += word.size() + 1;
    CharsetGuess guess;
    guess.name = best.name;
    guess.fits = letters > 0 && best.cost / static_cast<double>(letters) < kMostForLanguage;
    return guess;
}

double ImprobabilityOf(std::u32string_view units) {
    const auto isCommon = [](char32_t c) {
        return IsIn(CommonCharacters(WritingSystem::SimplifiedChinese), c) ||
               IsIn(CommonCharacters(WritingSystem::Japanese), c) ||
               IsIn(CommonCharacters(WritingSystem::TraditionalChinese), c) ||
               IsIn(CommonCharacters(WritingSystem::Korean), c);
    };
    const auto costOf = [&](char32_t c) {
        const bool blank = c == '\n' || c == '\r' || c == '\t' || c == '\f';
        if (c >= 0xD800 && c < 0xE000)
            return 20;
        if (c < 0x20 ? !blank : u_isdefined(static_cast<UChar32>(c)) == 0)
            return kImpossibleCost;
        if (c < 0x80)
            return 8;
        const bool alphabet = c < 0x700 && u_isalpha(static_cast<UChar32>(c)) != 0;
        if (alphabet)
            return c < 0x180 ? 12 : 11;
        if (c >= 0x3041 && c <= 0x30FC)
            return 12;
        if ((c >= 0x3000 && c <= 0x3011) || (c >= 0xFF01 && c <= 0xFF5E) ||
            (c >= 0x2010 && c <= 0x2026))
            return 14;
        if (isCommon(c))
            return kCommonCost;
        if (c >= 0x0700 && c < 0x2000)
            return 14;
        return (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0xAC00 && c <= 0xD7A3) ? 25 : kUnusualCost;
    };
    double cost = 0;
    for (const char32_t c : units)
        cost += costOf(c);
    return units.empty() ? 0 : cost / static_cast<double>(units.size());
}

} // namespace engine
