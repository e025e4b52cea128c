// The texts within PPT documents: records that follow each other without a common bracket.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Flow.h"
#include "engine/readers/OfficeArt.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace engine {

// One text: of a placeholder or of a shape.
struct PptText {
    bool title = false;
    std::u16string text;                  // 0x0D ends a paragraph, 0x0B a line
    std::vector<std::size_t> fields;      // places of "*" that stand for a number or a date
    std::optional<std::uint32_t> outline; // stands in the slide list, there at this place
};

// Collects texts from records as they come.
class PptTexts {
  public:
    // Whether the record was part of a text.
    bool Take(const OfficeRecord& record);
    [[nodiscard]] std::vector<PptText>& All() { return m_texts; }

  private:
    std::vector<PptText> m_texts;
};

// All texts straight within a record's payload.
[[nodiscard]] std::vector<PptText> ReadPptTexts(std::string_view payload);

// A heading or paragraphs.
void PutPptText(const PptText& text, bool mayBeTitle, Flow& flow);

} // namespace engine
