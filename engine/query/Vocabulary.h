// The words of an index: which of them a pattern stands for.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"
#include "engine/query/Request.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

// More words than this are too many for one pattern.
inline constexpr std::size_t kMostPatternWords = 50'000;
inline constexpr std::size_t kMostBeginningWords = 1'000'000; // for one that is "abc*"

class Vocabulary {
  public:
    // stemmer: name of the language whose endings "~" cuts off, such as "english".
    Vocabulary(IndexFile& index, std::string stemmer);

    // Words of the index that the pattern stands for, sorted; an Exact or Synonyms pattern gives
    // its own word when the index holds it. Throws RequestError TooManyWords.
    [[nodiscard]] std::vector<std::string> Expand(const WordPattern& pattern);
    [[nodiscard]] bool Holds(std::string_view word);

  private:
    using Visit = std::function<void(std::string_view word)>;
    void ForEach(std::string_view prefix, const Visit& visit);

    IndexFile& m_index;
    std::string m_stemmer;
};

// Whether two folded words differ by at most limit letters added, left out or changed; the first
// fixedLetters of pattern stand first in word too.
[[nodiscard]] bool Resembles(std::string_view pattern, std::string_view word, int limit,
                             std::size_t fixedLetters);
// Code of a word's sound: words that sound alike in English share it. Empty: no Latin letter.
[[nodiscard]] std::string SoundCode(std::string_view word);
// Whether the digits of word stand for a number between the bounds, both included.
[[nodiscard]] bool InRange(std::string_view word, std::string_view lower, std::string_view upper);

} // namespace engine
