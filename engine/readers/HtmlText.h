// Puts the text of HTML into a flow: for HTML files, books and whatever else contains it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Flow.h"

#include <functional>
#include <string>
#include <string_view>

namespace engine {

struct HtmlParts {
    // Takes title, author, keywords and description; nullptr: they are left out.
    DocumentSink* fields = nullptr;
    // Fetches the picture that stands at an address inside the document's own package; false:
    // there is none. Empty: only pictures that are contained in the text itself.
    std::function<bool(const std::string& address, std::string& mime, std::string& bytes)> picture;
    bool wantsPictures = false;
};

// Never fails: what makes no sense is passed over. The flow is not finished.
void ReadHtmlText(std::string_view utf8, Flow& flow, const HtmlParts& parts);

// The charset that the document's first lines declare, or empty.
[[nodiscard]] std::string DeclaredHtmlCharset(std::string_view bytes);

} // namespace engine
