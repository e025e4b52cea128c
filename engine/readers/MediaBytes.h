// Takes numbers off the front of a media file's bytes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace engine {

// Number of width bytes (at most 8), the highest first; bytes that are missing are zeros.
inline std::uint64_t BigEndianAt(std::string_view bytes, std::size_t at, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
        value =
            value << 8 | (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0U);
    return value;
}

// At most size bytes from at on; nothing where at is beyond the end.
inline std::string_view Piece(std::string_view bytes, std::uint64_t at, std::uint64_t size) {
    if (at >= bytes.size())
        return {};
    return bytes.substr(static_cast<std::size_t>(at),
                        static_cast<std::size_t>(std::min<std::uint64_t>(size, bytes.size())));
}

} // namespace engine
