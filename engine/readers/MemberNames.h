// Names of members and attachments that come from hostile hands, made harmless and unique.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace engine {

// A path inside an archive: relative, "/" between its parts, none of which is empty, "." or
// "..", no control characters, at most kMaxMemberPath bytes. Example: "/../a//b" gives "a/b". A
// path of which nothing remains becomes "unnamed". utf8 is well-formed.
[[nodiscard]] std::string CleanMemberPath(std::string_view utf8);

// What follows the last "/".
[[nodiscard]] std::string_view LastPart(std::string_view path);

// A single file name out of what a sender wrote as one: path parts of the sender's machine fall
// away ("C:\tmp\a.pdf" and "../a.pdf" give "a.pdf"), any other slash becomes "_". May be empty.
[[nodiscard]] std::string CleanFileName(std::string_view utf8);

// Keeps names apart: the second "a/b.txt" becomes "a/b (2).txt".
class UniqueNames {
  public:
    [[nodiscard]] std::string Add(std::string name);

  private:
    // Hashes only: a million paths would take too much room. Two that collide get a number, that
    // is all. With each the number to try next, so that a million equal names do not take forever.
    std::unordered_map<std::uint64_t, int> m_seen;
};

} // namespace engine
