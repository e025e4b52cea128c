// Character roles and folded forms, taken from Unicode's properties.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/text/CharTable.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace engine {
namespace {

const icu::Normalizer2& Normalizer(const icu::Normalizer2* (*get)(UErrorCode&)) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = get(error);
    if (U_FAILURE(error))
        throw std::runtime_error("the Unicode tables are missing");
    return *normalizer;
}

// Accents, and the vowel points that Hebrew and Arabic readers leave out as often as not. Marks
// that carry a vowel or join consonants in other scripts have other combining classes and stay.
bool IsAccent(UChar32 c) {
    if (u_charType(c) != U_NON_SPACING_MARK && u_charType(c) != U_ENCLOSING_MARK)
        return false;
    const auto combiningClass = u_getCombiningClass(c);
    return combiningClass == 1 || (combiningClass >= 10 && combiningClass <= 35) ||
           combiningClass >= 200 || u_hasBinaryProperty(c, UCHAR_VARIATION_SELECTOR) ||
           u_charType(c) == U_ENCLOSING_MARK;
}

bool IsUnspaced(UChar32 c) {
    if (u_getIntPropertyValue(c, UCHAR_LINE_BREAK) == U_LB_COMPLEX_CONTEXT)
        return true;
    UErrorCode error = U_ZERO_ERROR;
    const UScriptCode script = uscript_getScript(c, &error);
    if (script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA)
        return u_isalpha(c);
    return c == 0x30FC || c == 0xFF70; // the long-vowel mark belongs to both kana scripts
}

CharRole UnicodeRole(UChar32 c) {
    if (IsAccent(c) || u_hasBinaryProperty(c, UCHAR_DEFAULT_IGNORABLE_CODE_POINT))
        return CharRole::Ignored;
    const auto mask = U_GET_GC_MASK(c);
    if ((mask & (U_GC_L_MASK | U_GC_M_MASK | U_GC_ND_MASK | U_GC_NL_MASK)) == 0)
        return CharRole::Separator;
    if (u_hasBinaryProperty(c, UCHAR_IDEOGRAPHIC))
        return CharRole::Ideograph;
    return IsUnspaced(c) ? CharRole::Unspaced : CharRole::Letter;
}

std::string Fold(UChar32 c) {
    static const icu::Normalizer2& fold = Normalizer(&icu::Normalizer2::getNFKCCasefoldInstance);
    static const icu::Normalizer2& decompose = Normalizer(&icu::Normalizer2::getNFDInstance);
    static const icu::Normalizer2& compose = Normalizer(&icu::Normalizer2::getNFCInstance);
    UErrorCode error = U_ZERO_ERROR;
    const icu::UnicodeString parts =
        decompose.normalize(fold.normalize(icu::UnicodeString(c), error), error);
    icu::UnicodeString kept;
    for (int32_t i = 0; i < parts.length(); i = parts.moveIndex32(i, 1)) {
        const UChar32 part = parts.char32At(i);
        const CharRole role = UnicodeRole(part);
        if (role != CharRole::Ignored && role != CharRole::Separator)
            kept.append(part);
    }
    std::string text;
    compose.normalize(kept, error).toUTF8String(text);
    if (U_FAILURE(error) || text.empty())
        icu::UnicodeString(c).toUTF8String(text);
    return text;
}

} // namespace

CharTable::CharTable(Alphabet alphabet) : m_alphabet(std::move(alphabet)) {
    for (char32_t c = 0; c < 128; ++c) {
        const Entry& entry = At(c);
        if (entry.role == CharRole::Separator)
            m_ascii[c] = 0;
        else
            m_ascii[c] = entry.role == CharRole::Letter && entry.foldLength == 1 ? entry.fold[0] : 1;
    }
    std::fill(m_ascii.begin() + 128, m_ascii.end(), char{1});
}

std::unique_ptr<CharTable::Page> CharTable::MakePage(char32_t page) const {
    auto entries = std::make_unique<Page>();
    for (char32_t i = 0; i < 256; ++i) {
        const char32_t c = page * 256 + i;
        Entry& entry = (*entries)[i];
        const CharRole* given = m_alphabet.Find(c);
        entry.role = given != nullptr ? *given : UnicodeRole(static_cast<UChar32>(c));
        if (entry.role == CharRole::Separator || entry.role == CharRole::Ignored)
            continue;
        std::string fold = Fold(static_cast<UChar32>(c));
        if (fold.size() > entry.fold.size()) {
            // A few ligatures spell whole phrases; they stand for themselves.
            fold.clear();
            AppendUtf8(fold, c);
        }
        entry.foldLength = static_cast<std::uint8_t>(fold.size());
        std::copy(fold.begin(), fold.end(), entry.fold.begin());
    }
    return entries;
}

} // namespace engine
