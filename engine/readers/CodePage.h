// Text of binary documents: code pages by their numbers, and UTF-16.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace engine {

inline constexpr unsigned kWesternPage = 1252;
inline constexpr unsigned kUtf16Page = 1200;

// The charset that a code page's number stands for, as ICU knows it; windows-1252 where the
// number means nothing.
[[nodiscard]] std::string CharsetOfCodePage(unsigned page);
// Text of a code page as UTF-8. What cannot be decoded becomes U+FFFD.
[[nodiscard]] std::string DecodeCodePage(std::string_view bytes, unsigned page);
// Appends UTF-16, lowest byte first, as UTF-8; half a character becomes U+FFFD.
void AppendUtf16(std::string& to, std::string_view bytes);

// The code page of texts in a Windows language (an LCID) that are not Unicode.
[[nodiscard]] unsigned CodePageOfLanguage(unsigned language);
// The code page that a font's charset number asks for; 0: none in particular.
[[nodiscard]] unsigned CodePageOfFontCharset(unsigned charset);

} // namespace engine
