// Runs a plan: goes from one document that can match to the next, judges each, ranks them, and
// fetches the hits of the best.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/query/Evaluate.h"
#include "engine/query/Ranking.h"
#include "engine/query/SlotCursor.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace engine {

struct FoundByWords {
    std::int64_t id = 0;
    std::vector<std::uint32_t> hits; // word numbers, ascending
};

class SearchRun {
  public:
    // index stands in a reading transaction until the end of Run.
    SearchRun(IndexFile& index, Plan plan);
    ~SearchRun();
    // The best documents, most hits first, ties by name. Throws sqlite::Error.
    [[nodiscard]] std::vector<FoundByWords> Run(std::size_t most);
    // How many satisfy the request.
    [[nodiscard]] std::uint64_t Found() const { return m_found; }

  private:
    class Facts;
    void OpenCursors(Visit visit);
    void Open(const PlanNode& node, Visit visit);
    [[nodiscard]] std::int64_t Next(const PlanNode& node, std::int64_t from);
    [[nodiscard]] std::int64_t NextOfPhrase(const PlanNode& node, std::int64_t from);
    [[nodiscard]] std::int64_t NextOfBoth(const PlanNode& node, std::int64_t from);
    [[nodiscard]] bool IsPresent(const PlanNode& node, std::int64_t id);
    [[nodiscard]] std::size_t MostHits(const PlanNode& node, std::int64_t id);
    [[nodiscard]] bool AreWordsNear(const PlanNode& node, std::int64_t id);
    void RankWord(Ranking& ranking);
    void RankByPresence(Ranking& ranking);
    void RankJudged(Ranking& ranking);

    IndexFile& m_index;
    Plan m_plan;
    PostingIndex m_postings;
    std::vector<SlotCursor> m_cursors; // by slot number
    std::unique_ptr<Facts> m_facts;
    std::vector<std::uint32_t> m_left, m_right; // places of two words
    std::uint64_t m_found = 0;
};

} // namespace engine
