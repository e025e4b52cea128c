// What lies inside a signed envelope (CMS, also known as PKCS #7).
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace engine {

// The content of a signed envelope in DER, as in the body of an opaquely signed mail. The signature
// is not verified: a finder shows what is there. Empty where the envelope is encrypted, detached
// or none.
[[nodiscard]] std::optional<std::string> UnwrapSigned(std::string_view der);

} // namespace engine
