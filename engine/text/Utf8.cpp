// UTF-8 by ICU's macros.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/text/Utf8.h"

#include <unicode/utf8.h>

namespace engine {

char32_t NextCodePoint(std::string_view text, std::size_t& at) {
    UChar32 c = 0;
    auto i = static_cast<int64_t>(at);
    const auto length = static_cast<int64_t>(text.size());
    const char* s = text.data();
    U8_NEXT(s, i, length, c);
    if (c < 0) {
        ++at;
        return 0xFFFD;
    }
    at = static_cast<std::size_t>(i);
    return static_cast<char32_t>(c);
}

void AppendUtf8(std::string& text, char32_t codePoint) {
    char buffer[U8_MAX_LENGTH];
    int32_t length = 0;
    UBool failed = false;
    U8_APPEND(buffer, length, U8_MAX_LENGTH, static_cast<UChar32>(codePoint), failed);
    if (failed)
        text += "\xEF\xBF\xBD";
    else
        text.append(buffer, static_cast<std::size_t>(length));
}

} // namespace engine
