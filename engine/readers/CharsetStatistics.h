// Guesses the charset of text by what it would say in each.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace engine {

struct CharsetGuess {
    std::string name = "windows-1252"; // as ICU knows it
    bool fits = false;                 // what it says looks like some language that is known here
};

// The charset in which bytes are most probably text of some language, even when there are only
// few of them. They are neither UTF-8 nor UTF-16 and hold something that is not ASCII.
[[nodiscard]] CharsetGuess GuessCharset(std::string_view bytes);

// How improbable UTF-16 text is by its units alone, in half bits for each. Text of the languages
// known here has less than kMostForText, and less than kMostForSureText where most of it is in
// common use; what only chance has put together has more than kMostForAnything.
[[nodiscard]] double ImprobabilityOf(std::u32string_view units);
inline constexpr double kMostForSureText = 18;
inline constexpr double kMostForText = 21;
inline constexpr double kMostForAnything = 28;

} // namespace engine
