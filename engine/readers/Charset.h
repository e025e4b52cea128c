// Finds out the charset of text and decodes it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/text/Utf8.h"

#include <functional>
#include <string>
#include <string_view>

namespace engine {

struct Charset {
    std::string name = "UTF-8"; // as ICU knows it
    std::size_t bomBytes = 0;   // to be skipped
    bool wellFormed = false;    // the whole text was checked and is valid UTF-8
};

// Number of bytes at the beginning that are well-formed UTF-8.
[[nodiscard]] std::size_t ValidUtf8Length(std::string_view bytes);

// Whether bytes are text of some charset rather than binary data. Looks at samples only.
[[nodiscard]] bool LooksLikeText(std::string_view bytes);

// In this order: a byte order mark, the NUL pattern of UTF-16 and UTF-32, being valid UTF-8,
// what the document declares (declared may be empty or nonsense), statistics. Short texts that
// the statistics cannot tell are windows-1252.
[[nodiscard]] Charset DetectCharset(std::string_view bytes, std::string_view declared = {});

// The charset that a label stands for when it is found in a document, which is often a larger
// one than its name says (ISO-8859-1 stands for windows-1252). Empty: unknown label.
[[nodiscard]] std::string CharsetOfLabel(std::string_view label);

using TakeText = std::function<void(std::string_view utf8)>;
// Hands on the text in pieces of whole characters, at most 1 MB each, without a copy where it
// is UTF-8 already. What cannot be decoded becomes U+FFFD.
void DecodeText(std::string_view bytes, const Charset& charset, const TakeText& take);
// The same in one piece; bytes beyond limit are left out.
[[nodiscard]] std::string DecodeText(std::string_view bytes, const Charset& charset,
                                     std::size_t limit);

} // namespace engine
