// Word boundaries and folding.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/text/Tokenizer.h"

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <algorithm>

namespace engine {
namespace {

// Before a term where terms travel, so that no term may begin with it.
constexpr char kSharesPlace = '\x01';
constexpr char kSubstitute = '\x1A';

bool IsBlank(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool HasJamo(std::string_view term) {
    // U+1100 to U+11FF: E1 84 80 to E1 87 BF.
    for (std::size_t at = term.find('\xE1'); at != std::string_view::npos && at + 1 < term.size();
         at = term.find('\xE1', at + 1)) {
        const auto second = static_cast<unsigned char>(term[at + 1]);
        if (second >= 0x84 && second <= 0x87)
            return true;
    }
    return false;
}

} // namespace

struct Tokenizer::Breaker {
    Breaker() {
        UErrorCode error = U_ZERO_ERROR;
        words.reset(icu::BreakIterator::createWordInstance(icu::Locale::getRoot(), error));
    }
    std::unique_ptr<icu::BreakIterator> words;
};

Tokenizer::Tokenizer(const Alphabet& alphabet) : m_table(alphabet) {}
Tokenizer::~Tokenizer() = default;

const std::vector<Word>& Tokenizer::Split(std::string_view text, WordRule rule) {
    m_terms.clear();
    m_places.clear();
    if (rule == WordRule::Letters)
        SplitLetters(text);
    else
        SplitBlanks(text);
    m_words.resize(m_places.size());
    const std::string_view terms = m_terms;
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const Place& place = m_places[i];
        m_words[i] = {place.begin, place.end,
                      terms.substr(place.termBegin, place.termEnd - place.termBegin), place.advances};
    }
    return m_words;
}

void Tokenizer::Add(std::size_t begin, std::size_t end, std::size_t termBegin, bool advances) {
    m_places.push_back({begin, end, termBegin, m_terms.size(), advances});
}

void Tokenizer::SplitLetters(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        const char ascii = m_table.Ascii(static_cast<unsigned char>(text[at]));
        if (ascii == 0) {
            ++at;
            continue;
        }
        if (ascii != 1) {
            at = TakeWord(text, at);
            continue;
        }
        std::size_t next = at;
        const CharTable::Entry& entry = m_table.At(NextCodePoint(text, next));
        switch (entry.role) {
        case CharRole::Letter:
            at = TakeWord(text, at);
            break;
        case CharRole::Ideograph: {
            const std::size_t term = m_terms.size();
            m_terms.append(entry.fold.data(), entry.foldLength);
            Add(at, next, term);
            at = next;
            break;
        }
        case CharRole::Unspaced:
            at = TakeUnspaced(text, at);
            break;
        case CharRole::Separator:
        case CharRole::Ignored:
            at = next;
            break;
        }
    }
}

std::size_t Tokenizer::TakeWord(std::string_view text, std::size_t at) {
    const std::size_t begin = at;
    const std::size_t term = m_terms.size();
    std::size_t end = at;
    bool plain = true;
    while (at < text.size()) {
        const char ascii = m_table.Ascii(static_cast<unsigned char>(text[at]));
        if (ascii == 0)
            break;
        if (ascii != 1) {
            m_terms += ascii;
            end = ++at;
            continue;
        }
        std::size_t next = at;
        const CharTable::Entry& entry = m_table.At(NextCodePoint(text, next));
        if (entry.role != CharRole::Letter && entry.role != CharRole::Ignored)
            break;
        plain = false;
        if (entry.role == CharRole::Letter)
            m_terms.append(entry.fold.data(), entry.foldLength);
        end = at = next;
    }
    if (!plain)
        ComposeJamo(term);
    Add(begin, end, term);
    return at;
}

// Decomposed Hangul, as some file systems write it, becomes syllables again.
void Tokenizer::ComposeJamo(std::size_t termBegin) {
    const std::string_view term = std::string_view(m_terms).substr(termBegin);
    if (!HasJamo(term))
        return;
    UErrorCode error = U_ZERO_ERROR;
    const icu::Normalizer2* compose = icu::Normalizer2::getNFCInstance(error);
    std::string composed;
    compose
        ->normalize(icu::UnicodeString::fromUTF8(
                        icu::StringPiece(term.data(), static_cast<int32_t>(term.size()))),
                    error)
        .toUTF8String(composed);
    if (U_SUCCESS(error))
        m_terms.replace(termBegin, std::string::npos, composed);
}

std::size_t Tokenizer::TakeUnspaced(std::string_view text, std::size_t at) {
    const std::size_t begin = at;
    while (at < text.size()) {
        std::size_t next = at;
        const CharRole role = m_table.At(NextCodePoint(text, next)).role;
        if (role != CharRole::Unspaced && role != CharRole::Ignored)
            break;
        at = next;
    }
    if (!m_breaker)
        m_breaker = std::make_unique<Breaker>();
    const std::string_view run = text.substr(begin, at - begin);
    const auto wide = icu::UnicodeString::fromUTF8(
        icu::StringPiece(run.data(), static_cast<int32_t>(run.size())));
    m_breaker->words->setText(wide);
    std::size_t byte = begin;
    int32_t from = m_breaker->words->first();
    for (int32_t to = m_breaker->words->next(); to != icu::BreakIterator::DONE;
         from = to, to = m_breaker->words->next()) {
        const std::size_t wordBegin = byte;
        const std::size_t term = m_terms.size();
        for (int32_t unit = from; unit < to; unit = wide.moveIndex32(unit, 1)) {
            const CharTable::Entry& entry = m_table.At(NextCodePoint(text, byte));
            if (entry.role == CharRole::Unspaced)
                m_terms.append(entry.fold.data(), entry.foldLength);
        }
        if (m_terms.size() > term)
            Add(wordBegin, byte, term);
    }
    return at;
}

void Tokenizer::SplitBlanks(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        if (IsBlank(static_cast<unsigned char>(text[at]))) {
            ++at;
            continue;
        }
        const std::size_t begin = at;
        while (at < text.size() && !IsBlank(static_cast<unsigned char>(text[at])))
            ++at;
        // The number of the word must be that of the recognised word whatever stands in it, so
        // one without letters keeps its signs as term, and parts share the place of the whole.
        const std::string_view word = text.substr(begin, at - begin);
        const std::size_t term = m_terms.size();
        if (FoldInto(word) == 0)
            m_terms.append(word);
        if (m_terms[term] == kSharesPlace)
            m_terms[term] = kSubstitute;
        Add(begin, at, term);
        const std::size_t whole = m_places.size();
        const std::size_t wholeTerm = m_terms.size();
        SplitLetters(word);
        if (m_places.size() <= whole + 1) {
            m_places.resize(whole);
            m_terms.resize(wholeTerm);
            continue;
        }
        for (std::size_t i = whole; i < m_places.size(); ++i) {
            m_places[i].begin = begin;
            m_places[i].end = at;
            m_places[i].advances = false;
        }
    }
}

std::size_t Tokenizer::FoldInto(std::string_view text) {
    const std::size_t before = m_terms.size();
    for (std::size_t at = 0; at < text.size();) {
        const CharTable::Entry& entry = m_table.At(NextCodePoint(text, at));
        if (entry.role != CharRole::Separator && entry.role != CharRole::Ignored)
            m_terms.append(entry.fold.data(), entry.foldLength);
    }
    ComposeJamo(before);
    return m_terms.size() - before;
}

std::string Tokenizer::Fold(std::string_view text) {
    m_terms.clear();
    FoldInto(text);
    return m_terms;
}

std::size_t Tokenizer::LastCut(std::string_view text, WordRule rule) {
    for (std::size_t at = text.size(); at > 0;) {
        const std::size_t end = at;
        do
            --at;
        while (at > 0 && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80);
        if (rule == WordRule::Blanks) {
            // Stray bytes behind a blank belong to the next word.
            if (IsBlank(static_cast<unsigned char>(text[at])))
                return at + 1;
            continue;
        }
        // Behind a character that is still incomplete nothing is known.
        std::size_t next = at;
        if (m_table.At(NextCodePoint(text, next)).role == CharRole::Separator && next == end &&
            (static_cast<unsigned char>(text[at]) < 0x80 || end - at > 1))
            return end;
    }
    return 0;
}

} // namespace engine
