// The five message files as they stand in resources/messages/, compiled in.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string_view>

namespace resources {

/// The bytes of the file of a language ("it", "en", "de", "es", "fr"); empty for any other.
[[nodiscard]] std::string_view MessageFile(std::string_view language);

} // namespace resources
