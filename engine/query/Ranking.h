// Keeps the documents with the most hits while candidates stream by.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"

#include <cstdint>
#include <vector>

namespace engine {

struct RankedDocument {
    std::int64_t id = 0;
    std::size_t count = 0; // of hits
};

class Ranking {
  public:
    explicit Ranking(std::size_t most) : m_most(most) {}
    void Add(std::int64_t id, std::size_t count) {
        ++m_found;
        if (m_full && count <= m_least) {
            if (count == m_least)
                m_ties.push_back(id);
            return;
        }
        m_candidates.push_back({id, count});
        if (m_candidates.size() >= 4 * m_most + 64)
            Shrink();
    }
    // Whether a document with that many hits could be among the best.
    [[nodiscard]] bool CanRank(std::size_t count) const { return !m_full || count >= m_least; }
    // Counts a document that cannot.
    void Pass() { ++m_found; }
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
    std::vector<std::int64_t> m_ties;         // with exactly m_least, in case not all have more
};

} // namespace engine
