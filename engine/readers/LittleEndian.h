// Numbers out of binary records, lowest byte first.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace engine {

// The number at bytes[at]. What lies behind the end counts as zeros, so that a record cut short
// needs no test of its own at every field.
template <typename Number>
[[nodiscard]] constexpr Number ReadLittleEndian(std::string_view bytes, std::size_t at) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(Number) && at < bytes.size() && i < bytes.size() - at; ++i)
        value |= std::uint64_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
    return static_cast<Number>(value);
}

[[nodiscard]] constexpr std::uint8_t U8(std::string_view bytes, std::size_t at) {
    return ReadLittleEndian<std::uint8_t>(bytes, at);
}
[[nodiscard]] constexpr std::uint16_t U16(std::string_view bytes, std::size_t at) {
    return ReadLittleEndian<std::uint16_t>(bytes, at);
}
[[nodiscard]] constexpr std::uint32_t U32(std::string_view bytes, std::size_t at) {
    return ReadLittleEndian<std::uint32_t>(bytes, at);
}
[[nodiscard]] constexpr std::uint64_t U64(std::string_view bytes, std::size_t at) {
    return ReadLittleEndian<std::uint64_t>(bytes, at);
}

// The part of bytes that begins at at and is at most size long; empty where there is none.
[[nodiscard]] constexpr std::string_view Slice(std::string_view bytes, std::uint64_t at,
                                               std::uint64_t size = ~std::uint64_t{0}) {
    if (at >= bytes.size())
        return {};
    const std::uint64_t left = bytes.size() - at;
    return bytes.substr(static_cast<std::size_t>(at),
                        static_cast<std::size_t>(size < left ? size : left));
}

} // namespace engine
