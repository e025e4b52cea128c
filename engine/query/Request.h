// A parsed request: a tree of conditions over words.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

// What one word of a request stands for. Texts are folded.
struct WordPattern {
    enum class Kind : std::uint8_t { Exact, Wildcard, Fuzzy, Stem, Sound, Synonyms, Range };
    Kind kind = Kind::Exact;
    std::string text;            // Wildcard: with "*" and "?"; Range: the lower bound, digits
    std::string upper;           // Range: the upper bound
    int differences = 0;         // Fuzzy: how many letters may differ
    std::size_t fixedLetters = 0; // Fuzzy: characters at the beginning that must match
    std::size_t position = 1;    // where it stands in the request, in characters from 1
};

struct RequestNode {
    enum class Kind : std::uint8_t {
        Phrase,    // words, one behind the other
        And,       // both sides; hits of both
        Or,        // either side; hits of both
        AndNot,    // left without right; hits of left
        Not,       // documents without child; no hits
        Near,      // instances of either side within distance of the other
        Before,    // the same, left before right
        NotNear,   // instances of left without right within distance
        Contains,  // child inside the field
        FirstWord, // first word of the document
        LastWord,  // last word of the document
        NameIs,    // documents whose name matches the pattern
        NameIsNot, // documents whose name does not
    };
    Kind kind = Kind::Phrase;
    std::vector<WordPattern> words;     // Phrase
    std::unique_ptr<RequestNode> left;  // also the child of Not and Contains
    std::unique_ptr<RequestNode> right;
    std::uint32_t distance = 0;         // in words
    std::string name;                   // field, or pattern in capitals
};

// A request that cannot be understood. what() is a short English clause.
class RequestError : public std::runtime_error {
  public:
    enum class Reason : std::uint8_t {
        OperandMissing,     // an operator without something to work on
        OperatorMissing,    // two parts without an operator between them
        ParenthesisMissing, // ( without )
        ParenthesisExtra,   // ) without (
        QuoteMissing,       // " without its twin
        NumberMissing,      // w/ without a number
        FilterMalformed,
        NotBesideNear,      // "not" as an operand of w/N
        TooLong,            // nested too deeply or too many parts
        TooManyWords,       // a pattern that stands for too many words
    };
    RequestError(Reason why, std::size_t where, std::string what);
    Reason reason;
    std::size_t position; // in characters of the request, from 1
    std::string token;    // the piece of the request that it is about
};

class Tokenizer;

// Null for a request without any word. Throws RequestError.
[[nodiscard]] std::unique_ptr<RequestNode> ParseRequestText(std::string_view request,
                                                            Tokenizer& tokenizer);
// Parses file conditions: xfilter(...) parts side by side, all of which must hold.
[[nodiscard]] std::unique_ptr<RequestNode> ParseFileConditions(std::string_view conditions,
                                                               Tokenizer& tokenizer);

} // namespace engine
