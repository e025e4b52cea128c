// Makes blocks of a DOC document's paragraphs: headings, lists, tables within tables.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocStyles.h"
#include "engine/readers/Flow.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

// One story or a part of it. What a paragraph is turns out at its end only.
class DocFlow {
  public:
    DocFlow(Flow& flow, const DocStyles& styles) : m_flow(flow), m_styles(styles) {}

    void Put(char32_t character);
    void Break() { m_text += '\n'; }
    // What comes behind the paragraph.
    void Defer(std::function<void()> aside) { m_asides.push_back(std::move(aside)); }
    // cell: the mark that ends it ends a cell too.
    void EndParagraph(DocParagraphForm form, bool cell);
    // Puts out what has no mark at its end, and closes tables and lists.
    void End();

  private:
    struct Table {
        bool inCell = false;
    };
    void SetDepth(std::size_t depth);
    void OpenCell();
    void OpenParagraph(const DocParagraphForm& form);
    void OpenItem(const DocParagraphForm& form);
    void EndLists();
    void PutText();

    Flow& m_flow;
    const DocStyles& m_styles;
    std::string m_text; // of the paragraph; line ends are breaks
    std::vector<std::function<void()>> m_asides;
    std::vector<Table> m_tables;
    int m_listDepth = 0;
    int m_list = -1;
};

} // namespace engine
