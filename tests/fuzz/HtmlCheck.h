// A strict look at the pages that HtmlWriter makes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace fuzz {

// Ends the process where tags are not balanced, a tag or an attribute is none that the writer
// uses, or a sign of the text is not escaped. Answers the number of anchors <a name="hN">, which
// count from 1 without a gap.
std::size_t CheckHtml(std::string_view html);

// The text of the page's body as an HTML parser understands it.
[[nodiscard]] std::string BodyText(std::string_view html);

// Text without blanks and control characters, which parsers treat in their own ways.
[[nodiscard]] std::string WithoutBlanks(std::string_view utf8);

} // namespace fuzz
