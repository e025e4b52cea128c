// Text comparison without case for all of Unicode: a collation and LIKE.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "sqlite/Database.h"

#include <string>
#include <string_view>

namespace sqlite {

// Name of the collation: COLLATE UNICODE_NOCASE.
inline constexpr char kUnicodeNoCase[] = "UNICODE_NOCASE";

// Gives the connection the collation UNICODE_NOCASE and replaces LIKE, with and without ESCAPE.
// A table that names the collation can be used only by connections that have been through here.
// Call right after opening: SQLite refuses while a statement is running.
//
// Both go by the same full case folding, so that "a LIKE b" of texts without wildcards is the same
// as "a = b" in the collation, and a text always equals its own capitals:
//   È = è, Σ = σ = ς, K = K (Kelvin sign);
//   ß = ẞ = SS = ss, as the capitals of ß are SS;
//   ı (no dot) = I = i, as the capital of ı is I: the one step beyond Unicode's table;
//   İ (with dot) = i followed by a combining dot, and neither I nor i;
//   accents count; composed and decomposed forms differ.
// A byte that is not UTF-8 equals only itself.
void RegisterUnicode(Database& database);

// <0, 0, >0. Order of folded code points, which is that of the alphabet in no language but stable.
[[nodiscard]] int CompareCaseBlind(std::string_view a, std::string_view b);
[[nodiscard]] inline bool EqualCaseBlind(std::string_view a, std::string_view b) {
    return CompareCaseBlind(a, b) == 0;
}

// "%" stands for any run of characters, "_" for one character of the text as it is spelled;
// `escape`, when not 0, makes the next character plain.
[[nodiscard]] bool LikeCaseBlind(std::string_view pattern, std::string_view text,
                                 char32_t escape = 0);

// The text folded as above; two texts are equal without case when their foldings are the same.
[[nodiscard]] std::string FoldCase(std::string_view text);

// A text as a pattern that matches itself only, for LIKE ... ESCAPE '!'.
[[nodiscard]] std::string EscapeLike(std::string_view text);

} // namespace sqlite
