// What hangs on a place in a DOC document's main text: notes, comments, text boxes, drawings.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocHeader.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

struct DocAside {
    std::uint64_t anchor = 0;         // the character it hangs on; kNowhere: none
    bool note = false;                // foot note, end note or comment
    std::uint64_t begin = 0, end = 0; // characters of its text
    std::string words;                // text that is no part of the document's own
    static constexpr std::uint64_t kNowhere = ~std::uint64_t{0};
};

// By their anchors. No two of them share characters; what the tables do not tell of a story comes
// as one aside without an anchor.
[[nodiscard]] std::vector<DocAside> ReadDocAsides(const DocHeader& header, std::string_view tables);

// The headers and footers, each text once for every section that has its own.
struct DocMargin {
    bool footer = false;
    std::uint64_t begin = 0, end = 0;
};
[[nodiscard]] std::vector<DocMargin> ReadDocMargins(const DocHeader& header,
                                                    std::string_view tables);

} // namespace engine
