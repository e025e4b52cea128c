// Role and folded form of every character, looked up in constant time.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/text/Alphabet.h"
#include "engine/text/Utf8.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace engine {

// Filled page by page as characters are met. Not thread-safe: each tokenizer owns one.
class CharTable {
  public:
    explicit CharTable(Alphabet alphabet);

    struct Entry {
        CharRole role = CharRole::Separator;
        std::uint8_t foldLength = 0;   // bytes of the folded form
        std::array<char, 14> fold{};   // UTF-8: no case, accents or width variants
    };
    [[nodiscard]] const Entry& At(char32_t codePoint) {
        auto& page = m_pages[(codePoint >> 8) & 0x1FFF];
        if (!page)
            page = MakePage(codePoint >> 8);
        return (*page)[codePoint & 0xFF];
    }
    // For bytes below 128: the folded letter, 0 for a separator, 1 for what needs At().
    [[nodiscard]] char Ascii(unsigned char byte) const { return m_ascii[byte]; }

  private:
    using Page = std::array<Entry, 256>;
    [[nodiscard]] std::unique_ptr<Page> MakePage(char32_t page) const;

    Alphabet m_alphabet;
    std::array<char, 256> m_ascii{};
    std::array<std::unique_ptr<Page>, 0x2000> m_pages;
};

} // namespace engine
