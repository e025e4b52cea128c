// The elements of OpenDocument that matter for its text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace engine {

enum class OdfTag : std::uint8_t {
    Other,
    Skipped,
    Meta,
    Body,
    Spreadsheet,
    MasterPage,
    Margin,
    Page,
    SpeakerNotes,
    Paragraph,
    Heading,
    List,
    OrderedList,
    ListItem,
    Table,
    Row,
    Cell,
    Blanks,
    Tabulator,
    LineBreak,
    Note,
    Annotation,
    Frame,
    Image,
    Shape, // holds paragraphs of its own
    Described,
    Dated, // who wrote an annotation and when; as a field in a text something else
};

struct OdfMeaning {
    std::string_view name;
    OdfTag tag;
};

// Sorted by name. The vocabulary's older form has the same names in other namespaces.
inline constexpr std::array kOdfMeanings{
    OdfMeaning{"annotation", OdfTag::Annotation},
    OdfMeaning{"binary-data", OdfTag::Skipped},
    OdfMeaning{"body", OdfTag::Body},
    OdfMeaning{"caption", OdfTag::Shape},
    OdfMeaning{"circle", OdfTag::Shape},
    OdfMeaning{"connector", OdfTag::Shape},
    OdfMeaning{"covered-table-cell", OdfTag::Cell},
    OdfMeaning{"creator", OdfTag::Dated},
    OdfMeaning{"custom-shape", OdfTag::Shape},
    OdfMeaning{"date", OdfTag::Dated},
    OdfMeaning{"desc", OdfTag::Described},
    OdfMeaning{"ellipse", OdfTag::Shape},
    OdfMeaning{"event-listeners", OdfTag::Skipped},
    OdfMeaning{"footer", OdfTag::Margin},
    OdfMeaning{"footer-first", OdfTag::Margin},
    OdfMeaning{"footer-left", OdfTag::Margin},
    OdfMeaning{"forms", OdfTag::Skipped},
    OdfMeaning{"frame", OdfTag::Frame},
    OdfMeaning{"h", OdfTag::Heading},
    OdfMeaning{"header", OdfTag::Margin},
    OdfMeaning{"header-first", OdfTag::Margin},
    OdfMeaning{"header-left", OdfTag::Margin},
    OdfMeaning{"image", OdfTag::Image},
    OdfMeaning{"line", OdfTag::Shape},
    OdfMeaning{"line-break", OdfTag::LineBreak},
    OdfMeaning{"list", OdfTag::List},
    OdfMeaning{"list-header", OdfTag::ListItem},
    OdfMeaning{"list-item", OdfTag::ListItem},
    OdfMeaning{"master-page", OdfTag::MasterPage},
    OdfMeaning{"measure", OdfTag::Shape},
    OdfMeaning{"meta", OdfTag::Meta},
    OdfMeaning{"note", OdfTag::Note},
    OdfMeaning{"note-citation", OdfTag::Skipped},
    OdfMeaning{"notes", OdfTag::SpeakerNotes},
    OdfMeaning{"object", OdfTag::Skipped}, // a chart's numbers, a formula's code
    OdfMeaning{"object-ole", OdfTag::Skipped},
    OdfMeaning{"ordered-list", OdfTag::OrderedList},
    OdfMeaning{"p", OdfTag::Paragraph},
    OdfMeaning{"page", OdfTag::Page},
    OdfMeaning{"path", OdfTag::Shape},
    OdfMeaning{"polygon", OdfTag::Shape},
    OdfMeaning{"polyline", OdfTag::Shape},
    OdfMeaning{"rect", OdfTag::Shape},
    OdfMeaning{"regular-polygon", OdfTag::Shape},
    OdfMeaning{"ruby-text", OdfTag::Skipped},
    OdfMeaning{"s", OdfTag::Blanks},
    OdfMeaning{"scripts", OdfTag::Skipped},
    OdfMeaning{"settings", OdfTag::Skipped},
    OdfMeaning{"spreadsheet", OdfTag::Spreadsheet},
    OdfMeaning{"tab", OdfTag::Tabulator},
    OdfMeaning{"tab-stop", OdfTag::Tabulator},
    OdfMeaning{"table", OdfTag::Table},
    OdfMeaning{"table-cell", OdfTag::Cell},
    OdfMeaning{"table-row", OdfTag::Row},
    OdfMeaning{"text-box", OdfTag::Shape},
    OdfMeaning{"title", OdfTag::Described},
    OdfMeaning{"tracked-changes", OdfTag::Skipped}, // holds what was deleted
    OdfMeaning{"unordered-list", OdfTag::List},
};
static_assert(std::is_sorted(kOdfMeanings.begin(), kOdfMeanings.end(),
                             [](const OdfMeaning& a, const OdfMeaning& b) {
                                 return a.name < b.name;
                             }));

[[nodiscard]] inline OdfTag OdfTagOf(std::string_view name) {
    const auto* const found =
        std::lower_bound(kOdfMeanings.begin(), kOdfMeanings.end(), name,
                         [](const OdfMeaning& a, std::string_view b) { return a.name < b; });
    return found != kOdfMeanings.end() && found->name == name ? found->tag : OdfTag::Other;
}

} // namespace engine
