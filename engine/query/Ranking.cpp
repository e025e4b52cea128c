// The best few of many.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Ranking.h"

#include <algorithm>
#include <string>
#include <utility>

namespace engine {
namespace {

// Below this many ties their names are looked up one by one; above, the names are walked in order.
constexpr std::size_t kFewTies = 5000;

// Appends the first most of ids, ascending, in the order of their names.
void TakeFirstByName(IndexFile& index, const std::vector<std::int64_t>& ids, std::size_t count,
                     std::size_t most, std::vector<RankedDocument>& best) {
    if (ids.size() > kFewTies) {
        sqlite::Statement walk(index.Db(), "SELECT id FROM document ORDER BY name, id");
        while (best.size() < most && walk.Step())
            if (std::binary_search(ids.begin(), ids.end(), walk.Int64(0)))
                best.push_back({walk.Int64(0), count});
        return;
    }
    sqlite::Statement find(index.Db(), "SELECT name FROM document WHERE id = ?1", sqlite::Use::Often);
    std::vector<std::pair<std::string, std::int64_t>> named;
    for (const std::int64_t id : ids) {
        find.Bind(1, id);
        named.emplace_back(find.Step() ? std::string(find.Text(0)) : std::string(), id);
        find.Reset();
    }
    std::sort(named.begin(), named.end());
    for (std::size_t i = 0; i < named.size() && best.size() < most; ++i)
        best.push_back({named[i].second, count});
}

bool HasMore(const RankedDocument& a, const RankedDocument& b) { return a.count > b.count; }

} // namespace

// Finds the number of hits that the last place needs; what has less goes, what has just that
// waits in m_ties.
void Ranking::Shrink() {
    if (m_candidates.size() <= m_most || m_most == 0)
        return;
    const auto last = m_candidates.begin() + static_cast<std::ptrdiff_t>(m_most) - 1;
    std::nth_element(m_candidates.begin(), last, m_candidates.end(), HasMore);
    const std::size_t least = last->count;
    if (least > m_least)
        m_ties.clear();
    m_full = true;
    m_least = least;
    const auto stays = std::partition(m_candidates.begin(), m_candidates.end(),
                                      [&](const auto& each) { return each.count > least; });
    for (auto each = stays; each != m_candidates.end(); ++each)
        if (each->count == least)
            m_ties.push_back(each->id);
    m_candidates.erase(stays, m_candidates.end());
}

std::vector<RankedDocument> Ranking::TakeBest(IndexFile& index) {
    Shrink();
    std::vector<RankedDocument> best;
    std::sort(m_candidates.begin(), m_candidates.end(), HasMore);
    // Groups of equal hits; the order inside a group is that of the names.
    for (std::size_t at = 0; at < m_candidates.size() && best.size() < m_most;) {
        std::vector<std::int64_t> group;
        const std::size_t count = m_candidates[at].count;
        for (; at < m_candidates.size() && m_candidates[at].count == count; ++at)
            group.push_back(m_candidates[at].id);
        std::sort(group.begin(), group.end());
        TakeFirstByName(index, group, count, m_most, best);
    }
    std::sort(m_ties.begin(), m_ties.end());
    TakeFirstByName(index, m_ties, m_least, m_most, best);
    m_candidates.clear();
    m_ties.clear();
    return best;
}

} // namespace engine
