// Decoding, and the checks that need no statistics.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Charset.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace engine {
namespace {

constexpr std::size_t kPiece = std::size_t{1024} * 1024;
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

Converter OpenConverter(const char* name) {
    UErrorCode error = U_ZERO_ERROR;
    Converter converter(ucnv_open(name, &error));
    if (error == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    return U_SUCCESS(error) ? std::move(converter) : nullptr;
}

// Length of the well-formed sequence of more than one byte at p, or 0.
std::size_t SequenceLength(const unsigned char* p, const unsigned char* end) {
    const auto left = static_cast<std::size_t>(end - p);
    const auto follows = [&](std::size_t i) { return i < left && (p[i] & 0xC0) == 0x80; };
    const unsigned char lead = p[0];
    if (lead >= 0xC2 && lead <= 0xDF)
        return follows(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        if (!follows(1) || !follows(2) || (lead == 0xE0 && p[1] < 0xA0) ||
            (lead == 0xED && p[1] > 0x9F))
            return 0;
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        if (!follows(1) || !follows(2) || !follows(3) || (lead == 0xF0 && p[1] < 0x90) ||
            (lead == 0xF4 && p[1] > 0x8F))
            return 0;
        return 4;
    }
    return 0;
}

// Passes on UTF-8 with everything ill-formed replaced, one U+FFFD for each byte.
void PassUtf8(std::string_view bytes, const TakeText& take) {
    while (!bytes.empty()) {
        const std::size_t valid = ValidUtf8Length(bytes.substr(0, kPiece));
        if (valid > 0)
            take(bytes.substr(0, valid));
        bytes.remove_prefix(valid);
        // The end of a piece may stand within a character: it is then the next piece's first.
        if (!bytes.empty() && ValidUtf8Length(bytes.substr(0, 4)) == 0) {
            take(kReplacement);
            bytes.remove_prefix(1);
        }
    }
}

void PassWellFormed(std::string_view bytes, const TakeText& take) {
    while (!bytes.empty()) {
        std::size_t length = std::min(bytes.size(), kPiece);
        while (length < bytes.size() && length > 0 &&
               (static_cast<unsigned char>(bytes[length]) & 0xC0) == 0x80)
            --length;
        take(bytes.substr(0, length));
        bytes.remove_prefix(length);
    }
}

void Convert(std::string_view bytes, UConverter* from, const TakeText& take) {
    const Converter to = OpenConverter("UTF-8");
    if (!to)
        throw std::bad_alloc();
    std::array<UChar, 8192> pivot;
    std::array<char, 32768> piece;
    UChar* pivotSource = pivot.data();
    UChar* pivotTarget = pivot.data();
    const char* source = bytes.data();
    const char* const sourceEnd = source + bytes.size();
    UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
    for (bool first = true; error == U_BUFFER_OVERFLOW_ERROR; first = false) {
        error = U_ZERO_ERROR;
        char* target = piece.data();
        ucnv_convertEx(to.get(), from, &target, target + piece.size(), &source, sourceEnd,
                       pivot.data(), &pivotSource, &pivotTarget, pivot.data() + pivot.size(),
                       static_cast<UBool>(first), 1, &error);
        if (target != piece.data())
            take({piece.data(), static_cast<std::size_t>(target - piece.data())});
    }
    if (error == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    if (U_FAILURE(error)) // a sequence that was cut off at the end
        take(kReplacement);
}

} // namespace

std::size_t ValidUtf8Length(std::string_view bytes) {
    const auto* const begin = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* const end = begin + bytes.size();
    const auto* p = begin;
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    while (p != end) {
        if (end - p >= 16) {
            std::uint64_t words[2];
            std::memcpy(words, p, 16);
            if (((words[0] | words[1]) & kHighBits) == 0) {
                p += 16;
                continue;
            }
        }
        if (*p < 0x80) {
            ++p;
            continue;
        }
        const std::size_t length = SequenceLength(p, end);
        if (length == 0)
            break;
        p += length;
    }
    return static_cast<std::size_t>(p - begin);
}

void DecodeText(std::string_view bytes, const Charset& charset, const TakeText& take) {
    bytes.remove_prefix(std::min(charset.bomBytes, bytes.size()));
    if (charset.wellFormed)
        return PassWellFormed(bytes, take);
    if (charset.name == "UTF-8")
        return PassUtf8(bytes, take);
    Converter from = OpenConverter(charset.name.c_str());
    if (!from)
        from = OpenConverter("windows-1252");
    if (!from)
        return PassUtf8(bytes, take);
    Convert(bytes, from.get(), take);
}

std::string DecodeText(std::string_view bytes, const Charset& charset, std::size_t limit) {
    std::string text;
    text.reserve(std::min(bytes.size(), limit) + 64);
    DecodeText(bytes.substr(0, limit), charset, [&text](std::string_view piece) { text += piece; });
    return text;
}

} // namespace engine
