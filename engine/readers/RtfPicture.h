// A picture inside RTF: hexadecimal digits, or bytes, and what describes it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace engine {

class RtfPicture {
  public:
    // wanted: its bytes are kept, up to the size of a picture that is shown.
    void Begin(bool wanted);
    // A kind that can be shown; without it the bytes are dropped.
    void SetType(std::string_view mime) { m_mime = mime; }
    void SetAlternativeText(std::string_view utf8) { m_text = utf8; }
    void AddHex(std::string_view digits);
    void AddBytes(std::string_view bytes);

    // Its type and its bytes; empty where it cannot be shown.
    [[nodiscard]] std::string Take(std::string& bytes);
    [[nodiscard]] std::string TakeAlternativeText();

  private:
    void Add(char byte);

    bool m_wanted = false;
    std::string m_mime, m_text, m_bytes;
    int m_high = -1; // digit that waits for its second one
};

} // namespace engine
