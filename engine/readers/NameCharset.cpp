// Decodes a sample of names from each charset that comes into question and looks which result
// resembles names most: letters of one script side by side, capitals at the beginning of words,
// no signs for drawing boxes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/NameCharset.h"

#include "engine/readers/Charset.h"

#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/utf8.h>

#include <array>
#include <limits>

namespace engine {

namespace {

constexpr std::size_t kLargestSample = 4096; // bytes
constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

enum class Family { Alphabet, Japanese, Chinese, Korean };

struct Candidate {
    const char* name;
    Family family;
    // First bytes of the characters that are in daily use.
    unsigned char commonFrom;
    unsigned char commonTo;
};

// In the order of preference where two read equally well.
constexpr std::array kCandidates{
    Candidate{"ibm-437", Family::Alphabet, 0, 0},
    Candidate{"ibm-850", Family::Alphabet, 0, 0},
    Candidate{"windows-1252", Family::Alphabet, 0, 0},
    Candidate{"ibm-852", Family::Alphabet, 0, 0},
    Candidate{"windows-1250", Family::Alphabet, 0, 0},
    Candidate{"ibm-866", Family::Alphabet, 0, 0},
    Candidate{"windows-1251", Family::Alphabet, 0, 0},
    Candidate{"KOI8-R", Family::Alphabet, 0, 0},
    Candidate{"ibm-737", Family::Alphabet, 0, 0},
    Candidate{"windows-1253", Family::Alphabet, 0, 0},
    Candidate{"ibm-862", Family::Alphabet, 0, 0},
    Candidate{"windows-1255", Family::Alphabet, 0, 0},
    Candidate{"Shift_JIS", Family::Japanese, 0x88, 0x97},
    Candidate{"GBK", Family::Chinese, 0xB0, 0xD7},
    Candidate{"Big5", Family::Chinese, 0xA4, 0xC6},
    Candidate{"windows-949", Family::Korean, 0xB0, 0xC8},
    Candidate{"EUC-JP", Family::Japanese, 0xB0, 0xCF},
};

// Small letters beyond ASCII that are frequent in their languages.
constexpr std::u32string_view kFrequentLetters =
    U"äöüßéèêëàâáçñíîïóôúûøåæœãõčřšžýěůąęłńśźżćőűăòùìоеаинтсрвлкмдпуαειοντσςήίύ"
    U"יוהלארתבמשםן";
constexpr std::u32string_view kVowels = U"аеёиоуыэюяіїєαεηιουωάέήίόύώ";
constexpr std::u32string_view kFinalLetters = U"ςםןץףך"; // end their word

bool IsIn(std::u32string_view list, UChar32 c) {
    return list.find(static_cast<char32_t>(c)) != std::u32string_view::npos;
}

// What stands before a character of an alphabet.
struct Before {
    UChar32 c = ' ';
    UScriptCode script = USCRIPT_COMMON; // of a letter
    bool begins = false;                 // it is the first letter of its word
    int equal = 0;                       // so many times in a row already
    int consonants = 0;                  // so many in a row, of scripts whose vowels are known
};

// Capitals stand at the beginning of a word or all through it.
bool MixesCases(UChar32 c, const Before& before) {
    return (u_isupper(c) && u_islower(before.c)) ||
           (u_islower(c) && u_isupper(before.c) && !before.begins);
}

int ScoreOfAlphabet(UChar32 c, UScriptCode script, const Before& before) {
    const UChar32 small = u_tolower(c);
    int score = IsIn(kFrequentLetters, small) ? 3 : 2;
    if (u_isalpha(before.c) == 0)
        return IsIn(kFinalLetters, c) ? score - 4 : score;
    if (MixesCases(c, before) || script != before.script)
        score -= 5;
    if (script == USCRIPT_LATIN && before.c >= 0x80)
        score -= 2; // two in a row are rare
    if (c == 0xDF && !IsIn(U"aeiouäöüy", u_tolower(before.c)))
        score -= 4; // a sharp s stands behind a vowel
    if (IsIn(kFinalLetters, before.c))
        score -= 5;
    if (IsIn(kFinalLetters, c))
        score += 1;
    if (before.equal >= 2)
        score -= 5;
    if (before.consonants >= 3 && !IsIn(kVowels, small))
        score -= 3;
    return score;
}

// Characters of two bytes count about as much as two letters.
int ScoreOfIdeograph(UScriptCode script, UScriptCode scriptBefore, bool common, Family family) {
    if (scriptBefore == USCRIPT_LATIN)
        return -4;
    switch (script) {
    case USCRIPT_HIRAGANA:
    case USCRIPT_KATAKANA:
        return family == Family::Japanese ? 5 : -2;
    case USCRIPT_HANGUL:
        return family == Family::Korean && common ? 6 : -2;
    default:
        return common && family != Family::Korean ? 5 : -1;
    }
}

// Japanese syllables of half the width, which are one byte.
bool IsHalfKana(UChar32 c) {
    return c >= 0xFF61 && c <= 0xFF9F;
}

int ScoreOfSign(UChar32 c) {
    if (c >= 0x2500 && c <= 0x25FF) // boxes
        return -5;
    if (c == 0xFFFD || u_charType(c) == U_CONTROL_CHAR || !u_isdefined(c) ||
        u_charType(c) == U_PRIVATE_USE_CHAR)
        return -12;
    const bool inNames = c == 0xA0 || c == 0xA7 || c == 0xA9 || c == 0xAE || c == 0xB0 ||
                         c == 0xB4 || c == 0x2013 || c == 0x2014 || c == 0x2019 || c == 0x20AC ||
                         (c >= 0x3000 && c <= 0x303F) || (c >= 0xFF00 && c <= 0xFF60);
    return inNames ? 0 : -3;
}

// Adds up how much text, as it comes out of a charset, looks like names.
class Scorer {
  public:
    explicit Scorer(const Candidate& candidate) : m_candidate(candidate) {}

    // first is the first of the bytes that c comes from.
    void Take(UChar32 c, unsigned char first) {
        UErrorCode error = U_ZERO_ERROR;
        const bool isLetter = u_isalpha(c) != 0;
        const UScriptCode script = isLetter ? uscript_getScript(c, &error) : USCRIPT_COMMON;
        if (c >= 0x80)
            score += ScoreOf(c, script, isLetter, first);
        else if (isLetter && m_before.c >= 0x80 && u_isalpha(m_before.c))
            score += ScoreOfAsciiBehind(c);
        const bool hasKnownVowels = script == USCRIPT_CYRILLIC || script == USCRIPT_GREEK;
        const bool isConsonant = hasKnownVowels && !IsIn(kVowels, u_tolower(c));
        m_before = {c, script, isLetter && !u_isalpha(m_before.c),
                    c == m_before.c ? m_before.equal + 1 : 1,
                    isConsonant ? m_before.consonants + 1 : 0};
    }

    int score = 0;

  private:
    [[nodiscard]] int ScoreOf(UChar32 c, UScriptCode script, bool isLetter,
                              unsigned char first) const {
        if (IsHalfKana(c))
            return -1;
        if (!isLetter)
            return ScoreOfSign(c);
        if (m_candidate.family == Family::Alphabet)
            return ScoreOfAlphabet(c, script, m_before);
        const bool common = first >= m_candidate.commonFrom && first <= m_candidate.commonTo;
        return ScoreOfIdeograph(script, m_before.script, common, m_candidate.family);
    }

    [[nodiscard]] int ScoreOfAsciiBehind(UChar32 c) const {
        if (m_before.script != USCRIPT_LATIN)
            return -4;
        return MixesCases(c, m_before) ? -3 : 0;
    }

    const Candidate& m_candidate;
    Before m_before;
};

int ScoreOf(std::string_view sample, const Candidate& candidate) {
    const std::string text = DecodeText(sample, {candidate.name, 0, false}, kNoLimit);
    Scorer scorer(candidate);
    std::size_t at = 0; // in the sample
    for (std::int32_t i = 0, length = static_cast<std::int32_t>(text.size()); i < length;) {
        UChar32 c = 0;
        U8_NEXT(text.data(), i, length, c);
        scorer.Take(c, at < sample.size() ? static_cast<unsigned char>(sample[at]) : 0);
        const bool isWide = c >= 0x80 && candidate.family != Family::Alphabet && !IsHalfKana(c);
        at += isWide ? 2 : 1;
    }
    return scorer.score;
}

bool IsUtf8(std::string_view text) {
    return ValidUtf8Length(text) == text.size();
}

} // namespace

void NameCharset::Learn(std::string_view raw) {
    if (IsUtf8(raw) || m_sample.size() >= kLargestSample)
        return;
    m_sample.append(raw.substr(0, kLargestSample)).push_back('/');
    m_charset.clear();
}

std::string NameCharset::Decode(std::string_view raw) {
    if (IsUtf8(raw))
        return std::string(raw);
    if (m_sample.empty())
        Learn(raw);
    if (m_charset.empty()) {
        int best = std::numeric_limits<int>::min();
        for (const Candidate& candidate : kCandidates) {
            const int score = ScoreOf(m_sample, candidate);
            if (score > best) {
                best = score;
                m_charset = candidate.name;
            }
        }
    }
    return DecodeText(raw, {m_charset, 0, false}, kNoLimit);
}

} // namespace engine
