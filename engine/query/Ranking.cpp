// The best few of many.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Ranking.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

namespace engine {
namespace {

// Below this many ties their names are looked up one by one; above, the names are walked in order.
constexpr std::size_t kFewTies = 2000;

// Moves the first count of documents, in the order of their names, to best.
void MoveFirstByName(IndexFile& index, std::vector<RankedDocument>& documents, std::size_t count,
                     std::vector<RankedDocument>& best) {
    std::unordered_map<std::int64_t, RankedDocument*> wanted;
    for (RankedDocument& document : documents)
        wanted[document.id] = &document;
    if (documents.size() > kFewTies) {
        sqlite::Statement walk(index.Db(), "SELECT id FROM document ORDER BY name, id");
        for (; count > 0 && walk.Step();)
            if (const auto found = wanted.find(walk.Int64(0)); found != wanted.end()) {
                best.push_back(std::move(*found->second));
                --count;
            }
        return;
    }
    sqlite::Statement find(index.Db(), "SELECT name FROM document WHERE id = ?1", sqlite::Use::Often);
    std::vector<std::pair<std::string, std::int64_t>> named;
    for (const RankedDocument& document : documents) {
        find.Bind(1, document.id);
        named.emplace_back(find.Step() ? std::string(find.Text(0)) : std::string(), document.id);
        find.Reset();
    }
    std::sort(named.begin(), named.end());
    for (const auto& [name, id] : named)
        if (count > 0) {
            best.push_back(std::move(*wanted[id]));
            --count;
        }
}

} // namespace

void Ranking::Add(std::int64_t id, const std::vector<std::uint32_t>& hits) {
    ++m_found;
    if (m_full && hits.size() < m_least)
        return;
    if (m_full && hits.size() == m_least) {
        m_ties.push_back({id, hits});
        return;
    }
    m_candidates.push_back({id, hits});
    if (m_candidates.size() >= 4 * m_most + 64)
        Shrink();
}

// Finds the number of hits that the last place needs; what has less goes, what has just that
// waits in m_ties.
void Ranking::Shrink() {
    if (m_candidates.size() <= m_most || m_most == 0)
        return;
    const auto last = m_candidates.begin() + static_cast<std::ptrdiff_t>(m_most) - 1;
    std::nth_element(
        m_candidates.begin(), last, m_candidates.end(),
        [](const auto& a, const auto& b) { return a.hits.size() > b.hits.size(); });
    const std::size_t least = last->hits.size();
    if (least > m_least)
        m_ties.clear();
    m_full = true;
    m_least = least;
    std::vector<RankedDocument> kept;
    for (RankedDocument& document : m_candidates) {
        if (document.hits.size() > m_least)
            kept.push_back(std::move(document));
        else if (document.hits.size() == m_least)
            m_ties.push_back(std::move(document));
    }
    m_candidates = std::move(kept);
}

std::vector<RankedDocument> Ranking::TakeBest(IndexFile& index) {
    Shrink();
    std::vector<RankedDocument> best;
    std::sort(m_candidates.begin(), m_candidates.end(),
              [](const auto& a, const auto& b) { return a.hits.size() > b.hits.size(); });
    // Groups of equal hits; the order inside a group is that of the names.
    for (std::size_t at = 0; at < m_candidates.size() && best.size() < m_most;) {
        std::vector<RankedDocument> group;
        const std::size_t hits = m_candidates[at].hits.size();
        for (; at < m_candidates.size() && m_candidates[at].hits.size() == hits; ++at)
            group.push_back(std::move(m_candidates[at]));
        MoveFirstByName(index, group, m_most - best.size(), best);
    }
    MoveFirstByName(index, m_ties, m_most - best.size(), best);
    m_candidates.clear();
    m_ties.clear();
    return best;
}

} // namespace engine
