// From patterns to words of the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Vocabulary.h"

#include "engine/index/NameFilter.h"
#include "engine/text/CharTable.h"

#include <libstemmer.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace engine {
namespace {

// The smallest text that is greater than every text with the prefix; empty: none.
std::string PrefixEnd(std::string_view prefix) {
    std::string end(prefix);
    while (!end.empty() && static_cast<unsigned char>(end.back()) == 0xFF)
        end.pop_back();
    if (!end.empty())
        end.back() = static_cast<char>(static_cast<unsigned char>(end.back()) + 1);
    return end;
}

std::string_view FirstCharacter(std::string_view text) {
    std::size_t at = 0;
    if (!text.empty())
        (void)NextCodePoint(text, at);
    return text.substr(0, at);
}

std::string_view FirstCharacters(std::string_view text, std::size_t count) {
    std::size_t at = 0;
    while (count-- > 0 && at < text.size())
        (void)NextCodePoint(text, at);
    return text.substr(0, at);
}

std::vector<char32_t> CodePoints(std::string_view text) {
    std::vector<char32_t> points;
    for (std::size_t at = 0; at < text.size();)
        points.push_back(NextCodePoint(text, at));
    return points;
}

std::string_view WithoutZeros(std::string_view digits) {
    const auto first = digits.find_first_not_of('0');
    return first == std::string_view::npos ? digits.substr(digits.size() - 1) : digits.substr(first);
}

bool NumberLess(std::string_view a, std::string_view b) {
    a = WithoutZeros(a);
    b = WithoutZeros(b);
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

class Stemmer {
  public:
    explicit Stemmer(const std::string& language)
        : m_stemmer(sb_stemmer_new(language.c_str(), "UTF_8"), &sb_stemmer_delete) {}
    [[nodiscard]] bool IsThere() const { return m_stemmer != nullptr; }
    std::string operator()(std::string_view word) const {
        const sb_symbol* stem =
            sb_stemmer_stem(m_stemmer.get(), reinterpret_cast<const sb_symbol*>(word.data()),
                            static_cast<int>(word.size()));
        if (stem == nullptr)
            return std::string(word);
        return {reinterpret_cast<const char*>(stem),
                static_cast<std::size_t>(sb_stemmer_length(m_stemmer.get()))};
    }

  private:
    std::unique_ptr<sb_stemmer, decltype(&sb_stemmer_delete)> m_stemmer;
};

} // namespace

bool Resembles(std::string_view pattern, std::string_view word, int limit, std::size_t fixedLetters) {
    const std::string_view fixed = FirstCharacters(pattern, fixedLetters);
    if (word.substr(0, fixed.size()) != fixed)
        return false;
    const std::vector<char32_t> a = CodePoints(pattern.substr(fixed.size()));
    const std::vector<char32_t> b = CodePoints(word.substr(fixed.size()));
    const auto difference = static_cast<long>(a.size()) - static_cast<long>(b.size());
    if (difference > limit || -difference > limit)
        return false;
    std::vector<int> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = static_cast<int>(j);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        int diagonal = row[0];
        int least = row[0] = static_cast<int>(i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const int changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
            least = std::min(least, row[j]);
        }
        if (least > limit)
            return false;
    }
    return row[b.size()] <= limit;
}

// The first letter, then a digit for each group of consonants that sound alike; vowels part
// groups, h and w do not.
std::string SoundCode(std::string_view word) {
    static constexpr std::string_view kGroups = "01230120022455012623010202"; // a to z
    std::string code;
    char last = '0';
    for (const char c : word) {
        if (c < 'a' || c > 'z')
            continue;
        const char group = kGroups[static_cast<std::size_t>(c - 'a')];
        if (code.empty()) {
            code += c;
        } else if (group != '0' && group != last) {
            code += group;
        }
        if (c != 'h' && c != 'w')
            last = group;
        if (code.size() == 4)
            break;
    }
    return code;
}

bool InRange(std::string_view word, std::string_view lower, std::string_view upper) {
    if (word.empty() || word.find_first_not_of("0123456789") != std::string_view::npos)
        return false;
    return !NumberLess(word, lower) && !NumberLess(upper, word);
}

Vocabulary::Vocabulary(IndexFile& index, std::string stemmer)
    : m_index(index), m_stemmer(std::move(stemmer)) {}

bool Vocabulary::Holds(std::string_view word) {
    sqlite::Statement find(m_index.Db(), "SELECT 1 FROM term WHERE word = ?1");
    find.BindStatic(1, word);
    return find.Step();
}

void Vocabulary::ForEach(std::string_view prefix, const Visit& visit) {
    const std::string end = PrefixEnd(prefix);
    sqlite::Statement words(m_index.Db(),
                            end.empty() ? "SELECT word FROM term WHERE word >= ?1"
                                        : "SELECT word FROM term WHERE word >= ?1 AND word < ?2");
    words.BindStatic(1, prefix);
    if (!end.empty())
        words.BindStatic(2, end);
    while (words.Step())
        visit(words.Text(0));
}

std::vector<std::string> Vocabulary::Expand(const WordPattern& pattern) {
    using Kind = WordPattern::Kind;
    std::vector<std::string> words;
    // A beginning costs no comparison, and people shorten it at will.
    const bool isBeginning =
        pattern.kind == Kind::Wildcard && pattern.text.find_first_of("*?") + 1 == pattern.text.size();
    const std::size_t most = isBeginning ? kMostBeginningWords : kMostPatternWords;
    const auto take = [&](std::string_view word) {
        if (words.size() == most)
            throw RequestError(RequestError::Reason::TooManyWords, pattern.position, pattern.text);
        words.emplace_back(word);
    };
    switch (pattern.kind) {
    case Kind::Exact:
    case Kind::Synonyms:
        if (Holds(pattern.text))
            take(pattern.text);
        break;
    case Kind::Wildcard:
        ForEach(pattern.text.substr(0, pattern.text.find_first_of("*?")), [&](std::string_view word) {
            if (MatchesPattern(pattern.text, word))
                take(word);
        });
        break;
    case Kind::Fuzzy:
        ForEach(FirstCharacters(pattern.text, pattern.fixedLetters), [&](std::string_view word) {
            if (Resembles(pattern.text, word, pattern.differences, pattern.fixedLetters))
                take(word);
        });
        break;
    case Kind::Stem: {
        const Stemmer stem(m_stemmer);
        if (!stem.IsThere()) {
            if (Holds(pattern.text))
                take(pattern.text);
            break;
        }
        // Endings fall off at the end: the first letter stays what it is.
        const std::string wanted = stem(pattern.text);
        ForEach(FirstCharacter(pattern.text), [&](std::string_view word) {
            if (stem(word) == wanted)
                take(word);
        });
        break;
    }
    case Kind::Sound: {
        const std::string wanted = SoundCode(pattern.text);
        if (wanted.empty()) {
            if (Holds(pattern.text))
                take(pattern.text);
            break;
        }
        ForEach(wanted.substr(0, 1), [&](std::string_view word) {
            if (SoundCode(word) == wanted)
                take(word);
        });
        break;
    }
    case Kind::Range:
        for (const char* digit : {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"})
            ForEach(digit, [&](std::string_view word) {
                if (InRange(word, pattern.text, pattern.upper))
                    take(word);
            });
        break;
    }
    return words;
}

} // namespace engine
