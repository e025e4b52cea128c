// Cuts HTML into text, start tags and end tags, as browsers do it: nothing is an error.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace engine {

class HtmlScanner {
  public:
    // html is UTF-8 (or any charset that contains ASCII, for a look at the tags) and stays valid.
    explicit HtmlScanner(std::string_view html) : m_html(html) {}

    enum class What { Text, StartTag, EndTag, End };
    // Goes to the next piece. Comments, declarations and processing instructions are left out.
    What Next();

    // The text of a Text, with its character references as they stand.
    [[nodiscard]] std::string_view Text() const { return m_text; }
    // The tag's name in small letters; longer names than any that has a meaning are cut.
    [[nodiscard]] std::string_view Name() const { return {m_name.data(), m_nameLength}; }
    // Whether a start tag ends with "/>".
    [[nodiscard]] bool SelfClosed() const { return m_selfClosed; }
    // An attribute's value, decoded; empty when absent. name in small letters.
    [[nodiscard]] std::string Attribute(std::string_view name) const;

    // After the start tag of an element that holds no tags (script, title): what stands before
    // its end tag, which is passed over. Without an end tag: the rest with toEnd, else nothing.
    std::string_view RawText(bool toEnd);

  private:
    bool ReadMarkup();
    void SkipComment();
    void SkipDeclaration();
    void ReadName(std::size_t at);
    [[nodiscard]] std::size_t TagEnd(std::size_t at) const;

    std::string_view m_html;
    std::size_t m_at = 0;
    What m_what = What::End;
    std::string_view m_text;
    std::array<char, 16> m_name{};
    std::size_t m_nameLength = 0;
    std::string_view m_attributes;
    bool m_selfClosed = false;
    bool m_noCommentEnd = false; // there is none from here on
    bool m_noRawEnd = false;
};

} // namespace engine
