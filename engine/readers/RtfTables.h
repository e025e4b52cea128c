// What an RTF document's tables say of its fonts and styles.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

namespace engine {

class RtfFonts {
  public:
    // The code page of a font, or fallback where it tells none.
    [[nodiscard]] int CodePageOf(int font, int fallback) const;

    // The entries of the table, as they come; an entry ends with its name.
    void Begin(int font) { m_entry = {}, m_number = font; }
    void SetCharset(int charset) { m_entry.charset = charset; }
    void SetCodePage(int codePage) { m_entry.codePage = codePage; }
    void End(std::string_view name);

  private:
    struct Font {
        int charset = -1;
        int codePage = 0;
        int named = 0; // code page that the name tells
    };
    std::unordered_map<int, Font> m_fonts;
    Font m_entry;
    int m_number = 0;
};

class RtfStyles {
  public:
    // The level of a heading that has this style, from 1; 0: it is none.
    [[nodiscard]] int HeadingOf(int style) const;

    void Begin(int style) { m_entry = {}, m_number = style; }
    void SetOutline(int outline) { m_entry.outline = outline; }
    void SetBase(int style) { m_entry.base = style; }
    void End(std::string_view name);

  private:
    struct Style {
        int outline = -1;
        int base = -1;
    };
    std::unordered_map<int, Style> m_styles;
    Style m_entry;
    int m_number = 0;
};

// The level of a heading at an outline level from 0; 0: body text.
[[nodiscard]] int HeadingOfOutline(int outline);

} // namespace engine
