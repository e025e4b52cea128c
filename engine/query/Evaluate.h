// Judges one document by the tree of a plan.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/query/Plan.h"

#include <cstdint>
#include <string>
#include <vector>

namespace engine {

// What the evaluation asks about the document at hand.
class DocumentFacts {
  public:
    virtual ~DocumentFacts() = default;
    // Word numbers, ascending, at which one of the slot's words stands. Replaces what places holds.
    virtual void SlotPlaces(const Slot& slot, std::vector<std::uint32_t>& places) = 0;
    [[nodiscard]] virtual std::uint32_t WordCount() = 0;
    [[nodiscard]] virtual Spans FieldRanges(const std::string& name) = 0;
    [[nodiscard]] virtual bool NameMatches(const std::string& pattern) = 0;
};

// Judges documents one after the other; keeps its memory between them.
class Evaluation {
  public:
    explicit Evaluation(DocumentFacts& facts) : m_facts(facts) {}
    // Whether the document satisfies the tree; root.spans are then the instances, in word numbers.
    [[nodiscard]] bool Judge(PlanNode& root) {
        Visit(root, nullptr);
        return root.matched;
    }

  private:
    void Visit(PlanNode& node, const Spans* field);
    void VisitPhrase(PlanNode& node, const Spans* field);
    void Combine(PlanNode& node, const Spans* field);
    void Places(const Slot& slot);

    DocumentFacts& m_facts;
    std::vector<std::uint32_t> m_places;
    Spans m_scratch;
};

} // namespace engine
