// Which file names are indexed: include and exclude patterns.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace engine {

// Patterns are parted by blanks, "*" any characters, "?" one; without regard to ASCII case.
// "*.*" takes every name, one without a dot too.
class NameFilter {
  public:
    NameFilter(std::string_view include, std::string_view exclude);
    [[nodiscard]] bool Takes(std::string_view fileName) const;

  private:
    std::vector<std::string> m_include, m_exclude;
};

// Whether text matches the pattern; both in the same case. "?" stands for one UTF-8 character.
[[nodiscard]] bool MatchesPattern(std::string_view pattern, std::string_view text);

} // namespace engine
