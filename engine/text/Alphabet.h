// What counts as a letter: the alphabet file's exceptions to Unicode's own answer.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace engine {

// What a character does to the word it stands in.
enum class CharRole : std::uint8_t {
    Separator, // ends a word
    Letter,    // part of a word: letters, digits, marks that carry sound
    Ignored,   // vanishes inside a word: accents, soft hyphens, joiners
    Ideograph, // a word of its own
    Unspaced,  // script without blanks between words: a dictionary finds them
};

// A line of the alphabet file that cannot be understood; what() names the line.
struct AlphabetError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Exceptions by code point. The file is UTF-8 text; each line is a role and one character or a
// range, "#" starts a comment. Control characters are no letters:
//   letter U+005F
//   separator U+00B7
//   ignored U+2010-U+2011
class Alphabet {
  public:
    Alphabet() = default;
    // Parses an alphabet file's content; throws AlphabetError.
    [[nodiscard]] static Alphabet Parse(std::string_view text);

    // Role given for the code point, or nullptr where Unicode decides.
    [[nodiscard]] const CharRole* Find(char32_t codePoint) const;
    // The same exceptions in one fixed spelling: two alphabets agree when these are equal.
    [[nodiscard]] std::string Canonical() const;

  private:
    std::map<char32_t, CharRole> m_roles;
};

} // namespace engine
