// Unpacks the rich text of messages.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace engine {

// The RTF within a compressed body, as far as it is whole; empty where it is no such body. An
// unpacked one grows to at most 32 times its size.
[[nodiscard]] std::string UnpackRtf(std::string_view packed);

} // namespace engine
