// Keeps the documents with the most hits while candidates stream by.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"

#include <cstdint>
#include <vector>

namespace engine {

struct RankedDocument {
    std::int64_t id = 0;
    std::vector<std::uint32_t> hits; // word numbers, ascending
};

class Ranking {
  public:
    explicit Ranking(std::size_t most) : m_most(most) {}
    // Copies the hits when they are enough to get in.
    void Add(std::int64_t id, const std::vector<std::uint32_t>& hits);
    [[nodiscard]] std::uint64_t Found() const { return m_found; }
    // The best, most hits first, ties by name. Empties the ranking.
    [[nodiscard]] std::vector<RankedDocument> TakeBest(IndexFile& index);

  private:
    void Shrink();

    std::size_t m_most;
    std::uint64_t m_found = 0;
    bool m_full = false;                      // there are m_most; then:
    std::size_t m_least = 0;                  // fewer hits cannot get in any more
    std::vector<RankedDocument> m_candidates; // with more than m_least
    std::vector<RankedDocument> m_ties;       // with exactly m_least, in case not all have more
};

} // namespace engine
