// What a DOCX document's styles and numberings say about a paragraph: heading, list or neither.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/OpenXml.h"

#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace engine {

// A paragraph's place in outline and lists; what is -1 is not said.
struct ParagraphForm {
    std::string style;
    int outline = -1;   // 0 the highest, 9 body text
    int numbering = -1; // 0 none
    int listLevel = -1; // from 0
};

class DocxStyles {
  public:
    // Reads the parts that the main part refers to; missing ones leave everything plain text.
    void Read(OpenXmlPackage& package, const Relationships& relationships);

    // Fills in what form does not say itself from its style and the styles that is based on.
    [[nodiscard]] ParagraphForm Resolve(ParagraphForm form) const;
    // Whether the list shows numbers rather than bullets.
    [[nodiscard]] bool IsNumbered(int numbering, int listLevel) const;

    struct Style {
        std::string basedOn;
        ParagraphForm form;
    };

  private:
    std::map<std::string, Style, std::less<>> m_styles;
    std::map<int, int> m_abstractOf;               // numbering to its definition
    std::map<std::pair<int, int>, bool> m_bullets; // definition and level
};

// The number that text is, or fallback.
[[nodiscard]] int ToNumber(std::string_view text, int fallback);

} // namespace engine
