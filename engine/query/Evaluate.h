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
    // Word numbers, ascending, at which one of the slot's words stands.
    virtual void SlotPlaces(const Slot& slot, std::vector<std::uint32_t>& places) = 0;
    // Word numbers, ascending, at which the joined phrase begins.
    virtual void PhrasePlaces(const PlanNode& phrase, std::vector<std::uint32_t>& places) = 0;
    [[nodiscard]] virtual std::uint32_t WordCount() = 0;
    [[nodiscard]] virtual Spans FieldRanges(const std::string& name) = 0;
    [[nodiscard]] virtual bool NameMatches(const std::string& pattern) = 0;
};

// Whether the document satisfies the tree; root.spans are then the instances, in word numbers.
[[nodiscard]] bool Evaluate(PlanNode& root, DocumentFacts& facts);

} // namespace engine
