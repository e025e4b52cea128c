// The request's tree, evaluated from the leaves up.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Evaluate.h"

#include <algorithm>
#include <utility>

namespace engine {

using Kind = RequestNode::Kind;

void Evaluation::Places(const Slot& slot) {
    if (!slot.any) {
        m_facts.SlotPlaces(slot, m_places);
        return;
    }
    m_places.clear();
    const std::uint32_t count = m_facts.WordCount();
    for (std::uint32_t word = 1; word <= count; ++word)
        m_places.push_back(word);
}

void Evaluation::VisitPhrase(PlanNode& node, const Spans* field) {
    node.spans.clear();
    for (std::size_t i = 0; i < node.slots.size() && (i == 0 || !node.spans.empty()); ++i) {
        Places(node.slots[i]);
        if (i > 0) {
            KeepFollowed(node.spans, m_places);
            continue;
        }
        node.spans.resize(m_places.size());
        for (std::size_t place = 0; place < m_places.size(); ++place)
            node.spans[place] = {m_places[place], m_places[place]};
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
    // What needs both sides need not ask for the second without the first.
    const bool decided = node.right && !node.left->matched && node.kind != Kind::Or;
    node.spans.clear();
    node.matched = false;
    if (decided)
        return;
    if (node.right)
        Visit(*node.right, field);
    Combine(node, field);
}

void Evaluation::Combine(PlanNode& node, const Spans* field) {
    const PlanNode* left = node.left.get();
    const PlanNode* right = node.right.get();
    switch (node.kind) {
    case Kind::And:
        node.matched = right->matched;
        if (node.matched)
            Unite(left->spans, right->spans, node.spans);
        break;
    case Kind::Or:
        node.matched = left->matched || right->matched;
        if (!right->matched)
            node.spans = left->spans;
        else if (!left->matched)
            node.spans = right->spans;
        else
            Unite(left->spans, right->spans, node.spans);
        break;
    case Kind::AndNot:
        node.matched = !right->matched;
        if (node.matched)
            node.spans = left->spans;
        break;
    case Kind::Not:
        node.matched = !left->matched;
        break;
    case Kind::Near:
        Near(left->spans, right->spans, node.distance, m_scratch, node.spans);
        node.matched = !node.spans.empty();
        break;
    case Kind::Before:
        node.spans = Before(left->spans, right->spans, node.distance);
        node.matched = !node.spans.empty();
        break;
    case Kind::NotNear:
        NotNear(left->spans, right->spans, node.distance, node.spans);
        node.matched = !node.spans.empty();
        break;
    case Kind::FirstWord:
    case Kind::LastWord: {
        const std::uint32_t count = m_facts.WordCount();
        const std::uint32_t word = node.kind == Kind::FirstWord ? 1 : count;
        if (count > 0)
            node.spans.push_back({word, word});
        if (field != nullptr)
            node.spans = Inside(node.spans, *field);
        node.matched = !node.spans.empty();
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

} // namespace engine
