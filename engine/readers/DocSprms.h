// Changes of format in DOC documents: a number for what changes, and its value.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocHeader.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace engine {

// What readers of text want to know.
enum class DocSprm : std::uint8_t {
    Other,
    Style,
    InTable,
    RowEnd,
    TableDepth,
    InnerCell,
    InnerRowEnd,
    Outline,
    List,
    ListLevel,
    FarAway, // the changes stand in the stream "Data"
    Deleted,
    Symbol,
    Picture,
    Font,
};

using TakeSprm = std::function<void(DocSprm what, std::string_view value)>;
// Tells every change in a list of them; ends where the list is damaged.
void ForEachSprm(std::string_view list, DocAge age, const TakeSprm& take);
// What a piece's format says in two bytes, without a list.
void TakeShortSprm(std::uint16_t change, const TakeSprm& take);

} // namespace engine
