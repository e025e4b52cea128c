// How the characters and paragraphs of a DOC document look, as far as that changes its text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocPieces.h"
#include "engine/readers/DocSprms.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace engine {

struct DocParagraphForm {
    std::uint16_t style = 0;
    std::int16_t outline = -1;   // 0 the highest, 9 body text; -1 not said
    std::int16_t list = -1;      // from 1; 0 none; -1 not said
    std::int16_t listLevel = -1; // from 0; -1 not said
    std::int16_t depth = 0;      // tables around it
    bool rowEnd = false;         // it is the mark behind the last cell of a row
    bool cellEnd = false;        // of a table within a table, whose cells end like paragraphs

    void Apply(DocSprm what, std::string_view value);
};

struct DocCharacterForm {
    bool deleted = false;      // by an author whose changes are tracked
    char16_t symbol = 0;       // stands instead of the character
    std::int32_t picture = -1; // its place in the stream "Data"
    std::int32_t font = -1;

    void Apply(DocSprm what, std::string_view value);
};

class DocFormats {
  public:
    // data is the stream "Data"; all three stay valid as long as the object.
    DocFormats(const DocHeader& header, std::string_view tables, std::string_view data);

    // at is a place in the document's stream. A paragraph is asked for by its mark.
    [[nodiscard]] DocParagraphForm ParagraphAt(std::uint32_t at) const;
    // end: from there on it may be another one.
    [[nodiscard]] DocCharacterForm CharacterAt(std::uint32_t at, std::uint32_t& end) const;
    void Apply(std::string_view list, DocParagraphForm& form) const;

  private:
    template <typename Form> struct Run {
        std::uint32_t begin = 0, end = 0;
        Form form;
    };
    void ReadPages(std::string_view tables, bool paragraphs);
    void ReadParagraphPage(std::string_view page);
    void ReadCharacterPage(std::string_view page);

    const DocHeader& m_header;
    std::string_view m_data;
    std::vector<Run<DocParagraphForm>> m_paragraphs; // by their places
    std::vector<Run<DocCharacterForm>> m_characters; // those that look special
};

} // namespace engine
