// Runs a plan: streams candidates, judges each, ranks, and fetches the hits of the best.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/query/Evaluate.h"
#include "engine/query/Ranking.h"

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

struct Fts5Context;
struct Fts5ExtensionApi;

namespace engine {

class SearchRun {
  public:
    SearchRun(IndexFile& index, Plan plan);
    ~SearchRun();
    // The best documents with their hits. Throws sqlite::Error.
    [[nodiscard]] std::vector<RankedDocument> Run(std::size_t most);
    [[nodiscard]] std::uint64_t Found() const { return m_found; }

    // Called by the database for each candidate; answers the number of hits, -1 for no match.
    [[nodiscard]] std::int64_t Judge(const Fts5ExtensionApi* api, Fts5Context* row);
    // Called by the database: notes where the phrases of the expression stand in the row.
    void TakePlaces(const Fts5ExtensionApi* api, Fts5Context* row);

  private:
    class RowFacts;
    class BatchFacts;
    class Names;
    void RankCandidates(Ranking& ranking);
    void RankGathered(Ranking& ranking);
    void Gather(const std::string& expression, std::int64_t first, std::int64_t last,
                std::unordered_map<std::int64_t, std::vector<std::uint32_t>>& places);
    void LoadSlots(PlanNode& node, BatchFacts& batch, std::int64_t first, std::int64_t last);

    IndexFile& m_index;
    Plan m_plan;
    std::unique_ptr<Names> m_names;
    std::uint64_t m_found = 0;
    Ranking* m_ranking = nullptr;             // while candidates are ranked
    std::vector<std::uint32_t> m_hits;        // of the row at hand
    std::exception_ptr m_failure;
};

} // namespace engine
