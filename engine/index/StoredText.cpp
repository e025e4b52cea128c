// Decompression of stored text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/StoredText.h"

#include <zstd.h>

namespace engine {
namespace {

constexpr std::size_t kLargestChunk = std::size_t{16} << 20;

} // namespace

WordRule RuleFor(std::string_view name, std::string_view path) {
    return path.empty() && name.size() > 4 && name.ends_with(".OCR") ? WordRule::Blanks : WordRule::Letters;
}

std::string Decompress(std::string_view bytes, std::size_t plainLength) {
    if (plainLength > kLargestChunk)
        throw IndexError(IndexFault::Damaged, "a stored text has no sensible length");
    std::string text(plainLength, '\0');
    const std::size_t size = ZSTD_decompress(text.data(), text.size(), bytes.data(), bytes.size());
    if (ZSTD_isError(size) != 0 || size != plainLength)
        throw IndexError(IndexFault::Damaged, "a stored text cannot be unpacked");
    return text;
}

} // namespace engine
