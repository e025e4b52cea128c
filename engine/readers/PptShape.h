// A shape on a slide of a PPT document.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/PptText.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace engine {

struct PptShape {
    OfficeShape words;
    std::uint8_t placeholder = 0;   // what the layout wants here; 0: nothing
    std::vector<PptText> texts;     // all of them titles where the shape is the title
    bool hasText = false;           // a text box, though it may be empty
    std::int32_t top = 0, left = 0; // within its group
};

// payload is that of the shape's record.
[[nodiscard]] PptShape ReadPptShape(std::string_view payload);

} // namespace engine
