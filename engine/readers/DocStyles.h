// What the styles and lists of a DOC document say of a paragraph.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocFormats.h"

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

namespace engine {

class DocStyles {
  public:
    DocStyles(const DocHeader& header, std::string_view tables, const DocFormats& formats);

    // Fills in what the paragraph does not say itself.
    [[nodiscard]] DocParagraphForm Resolve(DocParagraphForm form) const;
    // Whether a list shows numbers rather than bullets. list from 1, level from 0.
    [[nodiscard]] bool IsNumbered(int list, int level) const;

  private:
    struct Style {
        std::uint16_t basedOn = 0xFFF;
        DocParagraphForm form;
    };
    void ReadStyles(std::string_view sheet, const DocFormats& formats);
    void ReadLists(const DocHeader& header, std::string_view tables);

    std::vector<Style> m_styles;
    std::vector<std::uint32_t> m_uses; // the list that each number stands for
    std::map<std::uint32_t, std::vector<std::uint8_t>> m_lists; // kinds of numbers, by level
};

} // namespace engine
