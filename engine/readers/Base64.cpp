// Base64 and data addresses.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Base64.h"

#include "engine/readers/Limits.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <utility>

namespace engine {
namespace {

int Digit(char c) {
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+' || c == '-')
        return 62;
    return c == '/' || c == '_' ? 63 : -1;
}

} // namespace

std::string DecodeBase64(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        const int digit = Digit(c);
        if (digit < 0)
            continue;
        bits = (bits << 6) | static_cast<std::uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>((bits >> count) & 0xFF);
        }
    }
    return bytes;
}

bool DecodeDataAddress(std::string_view address, std::string& mime, std::string& bytes) {
    constexpr std::string_view kScheme = "data:";
    constexpr std::string_view kEncoding = ";base64";
    const std::size_t comma = address.find(',');
    if (!address.starts_with(kScheme) || comma == std::string_view::npos ||
        (address.size() - comma) / 4 * 3 > kMaxPictureBytes)
        return false;
    const std::string_view head = address.substr(kScheme.size(), comma - kScheme.size());
    if (!head.ends_with(kEncoding))
        return false;
    mime = head.substr(0, head.find(';'));
    if (!mime.starts_with("image/") || mime == "image/svg+xml")
        return false;
    bytes = DecodeBase64(address.substr(comma + 1));
    return true;
}

std::string PictureType(std::string_view fileName) {
    constexpr std::array<std::pair<std::string_view, const char*>, 6> kTypes{{
        {"png", "image/png"},
        {"jpg", "image/jpeg"},
        {"jpeg", "image/jpeg"},
        {"gif", "image/gif"},
        {"bmp", "image/bmp"},
        {"webp", "image/webp"},
    }};
    std::string ending(fileName.substr(fileName.rfind('.') + 1));
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const auto& [known, type] : kTypes)
        if (ending == known)
            return type;
    return {};
}

} // namespace engine
