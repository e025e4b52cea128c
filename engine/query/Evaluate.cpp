// The request's tree, evaluated from the leaves up.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Evaluate.h"

#include <algorithm>
#include <utility>

namespace engine {
namespace {

using Kind = RequestNode::Kind;

class Evaluation {
  public:
    explicit Evaluation(DocumentFacts& facts) : m_facts(facts) {}
    void Visit(PlanNode& node, const Spans* field);

  private:
    void VisitPhrase(PlanNode& node, const Spans* field);
    void Places(const Slot& slot, std::vector<std::uint32_t>& places);

    DocumentFacts& m_facts;
    std::vector<std::uint32_t> m_places;
};

void Evaluation::Places(const Slot& slot, std::vector<std::uint32_t>& places) {
    places.clear();
    if (!slot.any) {
        m_facts.SlotPlaces(slot, places);
        return;
    }
    const std::uint32_t count = m_facts.WordCount();
    for (std::uint32_t word = 1; word <= count; ++word)
        places.push_back(word);
}

void Evaluation::VisitPhrase(PlanNode& node, const Spans* field) {
    node.spans.clear();
    if (node.joined) {
        m_places.clear();
        m_facts.PhrasePlaces(node, m_places);
        const auto length = static_cast<std::uint32_t>(node.slots.size());
        for (const std::uint32_t first : m_places)
            node.spans.push_back({first, first + length - 1});
    } else if (!node.slots.empty()) {
        Places(node.slots.front(), m_places);
        for (const std::uint32_t word : m_places)
            node.spans.push_back({word, word});
        for (std::size_t i = 1; i < node.slots.size() && !node.spans.empty(); ++i) {
            Places(node.slots[i], m_places);
            node.spans = Followed(node.spans, m_places);
        }
    }
    if (field != nullptr)
        node.spans = Inside(node.spans, *field);
    node.matched = !node.spans.empty();
}

void Evaluation::Visit(PlanNode& node, const Spans* field) {
    if (node.kind == Kind::Phrase)
        return VisitPhrase(node, field);
    if (node.kind == Kind::Contains) {
        const Spans ranges = m_facts.FieldRanges(node.name);
        Visit(*node.left, &ranges);
        node.matched = node.left->matched && !ranges.empty();
        node.spans = node.matched ? node.left->spans : Spans();
        return;
    }
    if (node.left)
        Visit(*node.left, field);
    const bool judged = node.decided || (node.kind == Kind::And && !node.left->matched);
    if (node.right && !judged)
        Visit(*node.right, field);
    PlanNode* left = node.left.get();
    PlanNode* right = node.right.get();
    node.spans.clear();
    const auto byInstances = [&](Spans spans) {
        node.spans = std::move(spans);
        node.matched = !node.spans.empty();
    };
    switch (node.kind) {
    case Kind::And:
        node.matched = left->matched && right->matched;
        if (node.matched)
            node.spans = Union(left->spans, right->spans);
        break;
    case Kind::Or:
        node.matched = left->matched || right->matched;
        if (node.matched)
            node.spans = Union(left->matched ? left->spans : Spans(),
                               right->matched ? right->spans : Spans());
        break;
    case Kind::AndNot:
        node.matched = left->matched && (node.decided || !right->matched);
        if (node.matched)
            node.spans = left->spans;
        break;
    case Kind::Not:
        node.matched = !left->matched;
        break;
    case Kind::Near:
        byInstances(Near(left->spans, right->spans, node.distance));
        break;
    case Kind::Before:
        byInstances(Before(left->spans, right->spans, node.distance));
        break;
    case Kind::NotNear:
        byInstances(NotNear(left->spans, right->spans, node.distance));
        break;
    case Kind::FirstWord:
    case Kind::LastWord: {
        const std::uint32_t count = m_facts.WordCount();
        const std::uint32_t word = node.kind == Kind::FirstWord ? 1 : count;
        Spans spans;
        if (count > 0)
            spans.push_back({word, word});
        byInstances(field == nullptr ? spans : Inside(spans, *field));
        break;
    }
    case Kind::NameIs:
        node.matched = m_facts.NameMatches(node.name);
        break;
    case Kind::NameIsNot:
        node.matched = !m_facts.NameMatches(node.name);
        break;
    case Kind::Phrase:
    case Kind::Contains:
        break;
    }
}

} // namespace

bool Evaluate(PlanNode& root, DocumentFacts& facts) {
    Evaluation(facts).Visit(root, nullptr);
    return root.matched;
}

} // namespace engine
