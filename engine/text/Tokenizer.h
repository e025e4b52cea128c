// Cuts text into words. Index, hits and highlighting all use this one.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/text/CharTable.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

// A word of a text: the bytes [begin, end) of it, and its folded form. Several may share one
// place (alternatives of an OCR word); all but the first then have follows == false.
struct Word {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string_view term; // valid until the next call of the tokenizer
    bool advances = true;  // counts as a new word number
};

enum class WordRule : std::uint8_t {
    Letters, // a word is a run of letters, marks and digits
    Blanks,  // a word is what stands between blanks, as in OCR text
};

// Not thread-safe; one for each thread. Words are as long as they come. Changes here call for a
// new kTokenizerVersion: an index written by another one is rebuilt.
inline constexpr int kTokenizerVersion = 1;

class Tokenizer {
  public:
    explicit Tokenizer(const Alphabet& alphabet = {});
    ~Tokenizer();
    Tokenizer(const Tokenizer&) = delete;
    Tokenizer& operator=(const Tokenizer&) = delete;

    // Words of text in order. A cut in the middle of a word or of an unspaced run gives other
    // words: texts are cut at separators (LastCut).
    const std::vector<Word>& Split(std::string_view text, WordRule rule = WordRule::Letters);
    // The largest place at or before text's end where it can be cut without changing words;
    // 0 where there is none.
    [[nodiscard]] std::size_t LastCut(std::string_view text, WordRule rule = WordRule::Letters);
    // Folded form of text as one word, separators dropped. Empty: no letter in it.
    [[nodiscard]] std::string Fold(std::string_view text);
    [[nodiscard]] CharTable& Characters() { return m_table; }

  private:
    struct Breaker;
    void SplitLetters(std::string_view text);
    void SplitBlanks(std::string_view text);
    std::size_t TakeWord(std::string_view text, std::size_t at);
    std::size_t TakeUnspaced(std::string_view text, std::size_t at);
    void Add(std::size_t begin, std::size_t end, std::size_t termBegin, bool advances = true);
    void ComposeJamo(std::size_t termBegin);
    std::size_t FoldInto(std::string_view text);

    CharTable m_table;
    std::unique_ptr<Breaker> m_breaker; // made when an unspaced script is met
    std::string m_terms;                // all terms of the last call, one after the other
    struct Place {
        std::size_t begin, end, termBegin, termEnd;
        bool advances;
    };
    std::vector<Place> m_places;
    std::vector<Word> m_words;
};

} // namespace engine
