// The table of contents of compiled help: HTML lists of objects with a name and an address.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace engine {

struct ChmContentsEntry {
    std::string title;
    std::string address; // of a file inside the help, without its mark; may be empty
    int level = 1;       // 1 to 6
};

[[nodiscard]] std::vector<ChmContentsEntry> ReadChmContents(std::string_view utf8);

} // namespace engine
