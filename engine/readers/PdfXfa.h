// Texts of a form that is described in XML inside a PDF.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace engine {

// Appends the texts that a packet's part of that name holds: of "template" what the form shows,
// of "datasets" what was filled in. xml may hold other parts too.
void AppendXfaTexts(std::string_view xml, std::string_view part, std::vector<std::string>& texts);

} // namespace engine
