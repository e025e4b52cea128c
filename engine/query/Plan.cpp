// Words of the request become words of the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Plan.h"

#include <algorithm>
#include <utility>

namespace engine {
namespace {

using Kind = RequestNode::Kind;
using NodePtr = std::unique_ptr<PlanNode>;

NodePtr MakeNode(Kind kind, NodePtr left, NodePtr right) {
    auto node = std::make_unique<PlanNode>();
    node->kind = kind;
    node->left = std::move(left);
    node->right = std::move(right);
    return node;
}

class Resolver {
  public:
    Resolver(Vocabulary& vocabulary, const SynonymUse& synonyms)
        : m_vocabulary(vocabulary), m_synonyms(synonyms) {}
    NodePtr Resolve(const RequestNode& request);

  private:
    NodePtr Phrase(const std::vector<WordPattern>& words);
    NodePtr PlainPhrase(const std::vector<WordPattern>& words);
    Slot MakeSlot(const WordPattern& pattern);
    bool WantsSynonyms(const WordPattern& pattern) const {
        return m_synonyms.thesaurus != nullptr &&
               (pattern.kind == WordPattern::Kind::Synonyms ||
                (m_synonyms.everyWord && pattern.kind == WordPattern::Kind::Exact));
    }

    Vocabulary& m_vocabulary;
    const SynonymUse& m_synonyms;
};

NodePtr Resolver::Resolve(const RequestNode& request) {
    if (request.kind == Kind::Phrase)
        return Phrase(request.words);
    NodePtr node = MakeNode(request.kind, request.left ? Resolve(*request.left) : nullptr,
                            request.right ? Resolve(*request.right) : nullptr);
    node->distance = request.distance;
    node->name = request.name;
    return node;
}

Slot Resolver::MakeSlot(const WordPattern& pattern) {
    Slot slot;
    // "*" alone is any word: there is no need to name them all.
    slot.any = pattern.kind == WordPattern::Kind::Wildcard &&
               pattern.text.find_first_not_of('*') == std::string::npos;
    if (!slot.any)
        slot.words = m_vocabulary.Expand(pattern);
    if (WantsSynonyms(pattern)) {
        for (const std::vector<std::string>& synonym : m_synonyms.thesaurus->Synonyms(pattern.text))
            if (synonym.size() == 1 && m_vocabulary.Holds(synonym.front()))
                slot.words.push_back(synonym.front());
        std::sort(slot.words.begin(), slot.words.end());
        slot.words.erase(std::unique(slot.words.begin(), slot.words.end()), slot.words.end());
    }
    return slot;
}

NodePtr Resolver::PlainPhrase(const std::vector<WordPattern>& words) {
    NodePtr node = MakeNode(Kind::Phrase, nullptr, nullptr);
    for (const WordPattern& word : words)
        node->slots.push_back(MakeSlot(word));
    return node;
}

// A single word may stand for phrases too: "car" for "motor vehicle".
NodePtr Resolver::Phrase(const std::vector<WordPattern>& words) {
    NodePtr node = PlainPhrase(words);
    if (words.size() != 1 || !WantsSynonyms(words.front()))
        return node;
    for (const std::vector<std::string>& synonym :
         m_synonyms.thesaurus->Synonyms(words.front().text)) {
        if (synonym.size() < 2)
            continue;
        std::vector<WordPattern> phrase;
        for (const std::string& word : synonym)
            phrase.push_back({WordPattern::Kind::Exact, word, {}, 0, 0, words.front().position});
        NodePtr other = MakeNode(Kind::Phrase, nullptr, nullptr);
        for (const WordPattern& word : phrase) {
            Slot slot;
            slot.words = m_vocabulary.Expand(word);
            other->slots.push_back(std::move(slot));
        }
        node = MakeNode(Kind::Or, std::move(node), std::move(other));
    }
    return node;
}

// Whether documents without any of the words can satisfy the part.
bool IsUniversal(const PlanNode& node) {
    switch (node.kind) {
    case Kind::Phrase:
        return !node.slots.empty() && std::all_of(node.slots.begin(), node.slots.end(),
                                                  [](const Slot& slot) { return slot.any; });
    case Kind::And:
    case Kind::Near:
    case Kind::Before:
        return node.left->universal && node.right->universal;
    case Kind::Or:
        return node.left->universal || node.right->universal;
    case Kind::AndNot:
    case Kind::NotNear:
    case Kind::Contains:
        return node.left->universal;
    case Kind::Not:
    case Kind::FirstWord:
    case Kind::LastWord:
    case Kind::NameIs:
    case Kind::NameIsNot:
        break;
    }
    return true;
}

void Finish(PlanNode& node, Plan& plan) {
    for (Slot& slot : node.slots)
        slot.number = plan.slots++;
    if (node.left)
        Finish(*node.left, plan);
    if (node.right)
        Finish(*node.right, plan);
    node.universal = IsUniversal(node);
}

} // namespace

Plan MakePlan(const RequestNode& request, const RequestNode* conditions, Vocabulary& vocabulary,
              const SynonymUse& synonyms) {
    Plan plan;
    Resolver resolver(vocabulary, synonyms);
    plan.root = resolver.Resolve(request);
    if (conditions != nullptr)
        plan.root = MakeNode(Kind::And, std::move(plan.root), resolver.Resolve(*conditions));
    Finish(*plan.root, plan);
    return plan;
}

} // namespace engine
