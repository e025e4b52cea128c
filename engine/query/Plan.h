// A request made ready for one index: its words looked up.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/query/Request.h"
#include "engine/query/Spans.h"
#include "engine/query/Thesaurus.h"
#include "engine/query/Vocabulary.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace engine {

// One place of a phrase: any of the words may stand there.
struct Slot {
    std::vector<std::string> words; // sorted; empty: no word of the index fits
    bool any = false;               // every word fits; words is empty
    std::size_t number = 0;         // of this slot in its plan, from 0
};

struct PlanNode {
    RequestNode::Kind kind = RequestNode::Kind::Phrase;
    std::vector<Slot> slots;     // Phrase
    std::unique_ptr<PlanNode> left, right;
    std::uint32_t distance = 0;
    std::string name;            // field or name pattern
    bool universal = false;      // documents without any of its words can satisfy it
    bool matched = false;        // of the last evaluation
    Spans spans;                 // of the last evaluation
};

struct Plan {
    std::unique_ptr<PlanNode> root;
    std::size_t slots = 0;
};

// Which words stand for each other in this search.
struct SynonymUse {
    bool everyWord = false;              // else only words with "&"
    const Thesaurus* thesaurus = nullptr; // may be null: no synonyms
};

// Throws RequestError TooManyWords and sqlite::Error. conditions may be null.
[[nodiscard]] Plan MakePlan(const RequestNode& request, const RequestNode* conditions,
                            Vocabulary& vocabulary, const SynonymUse& synonyms);

} // namespace engine
