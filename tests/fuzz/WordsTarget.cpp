// The tokenizer: words stand where they say, and how a text comes in pieces changes none of them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/text/Alphabet.h"
#include "engine/text/Tokenizer.h"
#include "engine/text/WordingSink.h"
#include "tests/fuzz/Target.h"

#include <algorithm>
#include <numeric>

namespace fuzz {
namespace {

using engine::WordRule;

// A word as text, with a mark before it when it shares the place of the one before.
using Words = std::vector<std::string>;

Words Split(engine::Tokenizer& tokenizer, std::string_view text, WordRule rule) {
    Words words;
    std::size_t begin = 0;
    std::size_t end = 0;
    for (const engine::Word& word : tokenizer.Split(text, rule)) {
        Require(word.begin < word.end && word.end <= text.size(), "a word outside its text");
        Require(word.advances ? word.begin >= end : word.begin >= begin, "words out of order");
        Require(word.advances || !words.empty(), "the first word shares a place");
        // These part words where they travel.
        Require(word.term.find_first_of(std::string_view("\0\n", 2)) == std::string_view::npos,
                "a mark in a word");
        Require(word.term.empty() || word.term.front() != '\x01', "a mark before a word");
        begin = word.begin;
        end = word.end;
        words.push_back((word.advances ? "" : "+") + std::string(word.term));
    }
    return words;
}

// Gathers the words that a WordingSink hands on.
class Gathering final : public engine::WordingSink {
  public:
    using WordingSink::WordingSink;
    void Incomplete(std::string_view) override {}
    Words words;
    bool broken = false; // a text without separators was cut all the same

  protected:
    void OnText(std::string_view text, const std::vector<engine::Word>& found,
                std::uint64_t firstWord) override {
        Require(firstWord == m_next, "word numbers with a gap");
        std::string buffer;
        Require(engine::WellFormed(text, buffer).data() == text.data(),
                "ill-formed text is handed on");
        for (const engine::Word& word : found) {
            m_next += word.advances ? 1 : 0;
            words.push_back((word.advances ? "" : "+") + std::string(word.term));
        }
    }
    void OnOpen(engine::Block, int) override {}
    void OnClose(engine::Block) override {}
    void OnBreak() override { broken = true; }
    void OnPicture(std::string_view, std::string_view, std::string_view) override {}
    void OnFieldBegin(std::string_view) override {}
    void OnFieldEnd(std::string_view, std::string_view) override {}

  private:
    std::uint64_t m_next = 1;
};

void CheckCuts(engine::Tokenizer& tokenizer, std::string_view text, WordRule rule,
               const Words& whole, std::size_t step) {
    for (std::size_t at = step; at < text.size(); at += step) {
        const std::size_t cut = tokenizer.LastCut(text.substr(0, at), rule);
        Require(cut <= at, "a cut behind the text");
        if (cut == 0)
            continue;
        std::string first, second; // as they are handed on
        Words words = Split(tokenizer, engine::WellFormed(text.substr(0, cut), first), rule);
        const Words rest = Split(tokenizer, engine::WellFormed(text.substr(cut), second), rule);
        words.insert(words.end(), rest.begin(), rest.end());
        Require(words == whole, "a cut changes the words", text);
    }
}

// Texts longer than what is gathered at once take other ways.
void CheckLong(engine::Tokenizer& tokenizer, std::string_view text, WordRule rule,
               std::size_t step) {
    constexpr std::size_t kLong = 150'000;
    std::string longText;
    while (longText.size() < kLong)
        longText.append(text);
    Gathering atOnce(tokenizer, rule), pieces(tokenizer, rule);
    atOnce.Text(longText);
    atOnce.Finish();
    for (std::size_t at = 0; at < longText.size(); at += step * 977)
        pieces.Text(std::string_view(longText).substr(at, step * 977));
    pieces.Finish();
    Require(atOnce.broken || pieces.broken || atOnce.words == pieces.words,
            "pieces of a long text give other words", text);
}

} // namespace

void FuzzWords(const Target&, std::string_view input) {
    static engine::Tokenizer tokenizer;
    if (input.empty())
        return;
    // The first byte: how to cut.
    const auto how = static_cast<unsigned char>(input.front());
    const std::size_t step = 1 + how % 16;
    const auto rule = how & 0x10 ? WordRule::Blanks : WordRule::Letters;
    input.remove_prefix(1);
    (void)tokenizer.Split(input, rule); // nobody hands on ill-formed text; it costs nothing either
    std::string buffer;
    const std::string text(engine::WellFormed(input, buffer));
    const Words whole = Split(tokenizer, text, rule);
    CheckCuts(tokenizer, input, rule, whole, step);
    Gathering pieces(tokenizer, rule);
    for (std::size_t at = 0; at < input.size(); at += step)
        pieces.Text(input.substr(at, step));
    pieces.Finish();
    Require(pieces.words == whole, "pieces give other words", input);
    // It takes long, so few inputs come to it.
    if (how >= 0xC0 && std::accumulate(input.begin(), input.end(), 0U) % 64 == 1)
        CheckLong(tokenizer, input, rule, step);
}

void FuzzAlphabet(const Target&, std::string_view input) {
    // An alphabet, an empty line, a text.
    const std::size_t gap = std::min(input.find("\n\n"), input.size());
    try {
        const auto alphabet = engine::Alphabet::Parse(input.substr(0, gap));
        engine::Tokenizer tokenizer(alphabet);
        std::string buffer;
        const std::string_view text = engine::WellFormed(input.substr(gap), buffer);
        (void)Split(tokenizer, text, WordRule::Letters);
        (void)Split(tokenizer, text, WordRule::Blanks);
    } catch (const engine::AlphabetError& error) {
        Require(error.what()[0] != '\0', "an error without words");
    }
}

} // namespace fuzz
