// Character references of HTML: "&eacute;", "&#233;", "&#xE9;".
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace engine {

// The character, as UTF-8, that a name without "&" and ";" stands for; empty when unknown.
[[nodiscard]] std::string NamedCharacter(std::string_view name);

// Decodes the reference that text begins with ("&…") onto the end of out and returns its length
// in text; 0 when it is none, out is then as before. Names from the early days of HTML count
// without ";" too.
std::size_t DecodeReference(std::string_view text, std::string& out);

// Decodes every reference in text.
[[nodiscard]] std::string DecodeReferences(std::string_view text);

} // namespace engine
