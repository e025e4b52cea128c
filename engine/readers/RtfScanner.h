// Cuts RTF into groups, control words and text. Nothing is an error.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string_view>

namespace engine {

class RtfScanner {
  public:
    // rtf stays valid.
    explicit RtfScanner(std::string_view rtf) : m_rtf(rtf) {}

    enum class What {
        Text,   // plain bytes in the charset of their font; line ends of the file are left out
        Open,   // a group begins
        Close,  // a group ends
        Word,   // a control word such as \fs24
        Symbol, // a backslash and a character that is no letter
        Byte,   // a byte written as \'e4
        Binary, // bytes announced by \bin
        End,
    };
    // Goes to the next piece.
    What Next();

    // The bytes of a Text or a Binary, the name of a Word.
    [[nodiscard]] std::string_view Text() const { return m_text; }
    // The character of a Symbol or a Byte.
    [[nodiscard]] char Character() const { return m_character; }
    // The number behind a Word, or fallback where there is none.
    [[nodiscard]] int Number(int fallback) const { return m_hasNumber ? m_number : fallback; }

    // Goes behind the end of the group that is open here, however much it holds.
    void SkipGroup();
    // The second byte of a character that the last Text ended within. It may look like markup.
    // false: none follows.
    bool TakeTrailByte(char& byte);
    // What has not been read so far.
    [[nodiscard]] std::string_view Rest() const { return m_rtf.substr(m_at); }

  private:
    What ReadControl();
    void ReadWord();
    void ReadNumber();
    void SkipBinary();

    std::string_view m_rtf;
    std::size_t m_at = 0;
    std::string_view m_text;
    char m_character = 0;
    bool m_hasNumber = false;
    int m_number = 0;
};

} // namespace engine
