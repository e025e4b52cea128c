// Distinct terms, kept in one block of memory and numbered in the order of their first coming.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

class TermSet {
  public:
    TermSet();
    // Number of the term, from 0; a new one is taken in. Terms hold no line feed.
    std::uint32_t Insert(std::string_view term);
    // All terms, each closed by a line feed, in the order of their first coming.
    [[nodiscard]] const std::string& Joined() const { return m_joined; }
    [[nodiscard]] std::size_t Size() const { return m_size; }
    void Clear();

  private:
    struct Slot {
        std::uint64_t hash = 0; // 0: free
        std::uint32_t offset = 0;
        std::uint32_t length = 0;
        std::uint32_t number = 0;
    };
    void Grow();

    std::vector<Slot> m_slots;
    std::uint32_t m_size = 0;
    std::string m_joined;
};

} // namespace engine
