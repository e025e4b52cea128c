// Characters in and out of UTF-8.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace engine {

// Decodes the character at text[at], moving at behind it. Ill-formed bytes give U+FFFD, one byte
// each.
[[nodiscard]] char32_t NextCodePoint(std::string_view text, std::size_t& at);
// What is no Unicode scalar value becomes U+FFFD.
void AppendUtf8(std::string& text, char32_t codePoint);

} // namespace engine
