// Recognises files that hold no text of their own: pictures, sound, films, programs, fonts.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string_view>

namespace engine {

// A word for the kind, such as "picture", or nullptr. By the first bytes alone.
[[nodiscard]] const char* MediaKind(std::string_view bytes);
// Whether files of that kind ("picture", "sound", "film") may tell of themselves.
[[nodiscard]] bool IsTagged(std::string_view kind);

} // namespace engine
