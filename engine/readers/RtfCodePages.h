// Bytes of old code pages to UTF-8, as they come out of RTF: a few at a time, in many fonts.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace engine {

// Numbers of code pages that no system has.
inline constexpr int kSymbolPage = 42; // the Symbol font: Greek letters and signs
inline constexpr int kPicturePage = 1; // fonts of pictures: their characters mean nothing

// The code page that a font's name tells, as in "Arial CE", or that its characters are signs; 0:
// it tells none.
[[nodiscard]] int CodePageOfFontName(std::string_view name);

// The character at a place of the Symbol font; 0: a sign without a meaning.
[[nodiscard]] char32_t SymbolCharacter(unsigned char place);

class RtfCodePages {
  public:
    RtfCodePages();
    ~RtfCodePages();
    RtfCodePages(const RtfCodePages&) = delete;
    RtfCodePages& operator=(const RtfCodePages&) = delete;

    // Bytes that follow belong to that code page; an unknown one means windows-1252.
    void Select(int codePage);
    [[nodiscard]] int Selected() const { return m_number; }
    // Appends to utf8. A character whose second byte is missing waits for the next call.
    void Decode(std::string_view bytes, std::string& utf8);
    // Whether such a character waits.
    [[nodiscard]] bool IsWaiting() const { return !m_waiting.empty(); }
    // Gives up waiting: U+FFFD takes the character's place.
    void EndCharacter(std::string& utf8);

  private:
    struct Page;
    Page& Find(int codePage);
    std::map<int, std::unique_ptr<Page>> m_pages;
    Page* m_page;
    int m_number;
    std::string m_waiting;
};

} // namespace engine
