// The control words of RTF that matter to its text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string_view>

namespace engine {

enum class RtfWord : std::uint8_t {
    Other,
    // Text
    Character, // stands for one; argument is its code point
    Unicode,   // \u
    FallbackLength,
    Line,
    Paragraph,
    Cell,
    NestedCell,
    Row,
    NestedRow,
    AnnounceRow,
    // Properties
    PlainParagraph,
    PlainCharacter,
    Font,
    Deleted,
    Style,
    Outline,
    InTable,
    TableLevel,
    List,
    ListLevel,
    HtmlOff, // \htmlrtf
    // The document
    CodePage, // argument is its number; -1: the word's own number
    DefaultFont,
    FontCharset,
    FontCodePage,
    BasedOn,
    FromHtml,
    PictureType, // argument: 0 PNG, 1 JPEG
    // Groups
    Through, // marked as to be skipped, but what it holds is text all the same
    Skip,    // the group holds no text
    Look,    // holds no text but groups that may
    Fonts,
    Styles,
    ListText, // argument 1: every item has one
    Header,
    Note,
    TextBox,
    Alternatives, // an old form, then one in Unicode
    Field,        // a property; argument is an index for RtfFieldName
    PropertyName,
    PropertyValue,
    ShapeProperty,
    ShapeName,
    ShapeValue,
    Picture,
    HtmlTag,
};

struct RtfMeaning {
    RtfWord word = RtfWord::Other;
    int argument = 0;
};
[[nodiscard]] RtfMeaning RtfMeaningOf(std::string_view name);

// The name under which a property goes to the sink.
[[nodiscard]] std::string_view RtfFieldName(int index);

} // namespace engine
