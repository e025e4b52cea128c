// A request made ready for one index: words looked up, and an expression that finds candidates.
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
    bool any = false;               // every word fits
    std::string prefix;             // not empty: every word that begins so fits; words is empty
    int firstPhrase = -1;           // number of the first word's phrase in the expression
};

struct PlanNode {
    RequestNode::Kind kind = RequestNode::Kind::Phrase;
    std::vector<Slot> slots;     // Phrase
    bool joined = false;         // Phrase: stands in the expression as one phrase, slots[0].firstPhrase
    bool decided = false;        // AndNot: the expression has left out what must be left out
    std::unique_ptr<PlanNode> left, right;
    std::uint32_t distance = 0;
    std::string name;            // field or name pattern
    bool matched = false;        // of the last evaluation
    Spans spans;                 // of the last evaluation
};

struct Plan {
    std::unique_ptr<PlanNode> root;
    bool nothing = false;       // no document can match
    bool everyDocument = false; // candidates cannot be narrowed down by words
    bool gather = false;        // some slot holds too many words for one expression
    std::string expression;     // for the full-text table, when neither of the two
};

// The expression that finds the words first to last - 1 of a slot.
[[nodiscard]] std::string SlotExpression(const Slot& slot, std::size_t first, std::size_t last);
// The expression that finds a joined phrase.
[[nodiscard]] std::string PhraseExpression(const PlanNode& phrase);

// Which words stand for each other in this search.
struct SynonymUse {
    bool everyWord = false;              // else only words with "&"
    const Thesaurus* thesaurus = nullptr; // may be null: no synonyms
};

// Throws RequestError TooManyWords and sqlite::Error. conditions may be null.
[[nodiscard]] Plan MakePlan(const RequestNode& request, const RequestNode* conditions,
                            Vocabulary& vocabulary, const SynonymUse& synonyms);

} // namespace engine
