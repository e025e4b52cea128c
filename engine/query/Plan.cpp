// Words of the request become words of the index, and the tree an expression.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Plan.h"

#include <algorithm>
#include <utility>

namespace engine {
namespace {

using Kind = RequestNode::Kind;
using NodePtr = std::unique_ptr<PlanNode>;

// The table looks at every word of an expression for each document it finds. Beyond this many
// words in one slot it is faster to gather the places of each word by itself.
constexpr std::size_t kMostExpressionWords = 12;

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
    const bool wild = pattern.kind == WordPattern::Kind::Wildcard;
    const auto mark = wild ? pattern.text.find_first_of("*?") : std::string::npos;
    slot.any = wild && pattern.text.find_first_not_of('*') == std::string::npos;
    // A beginning is what the table finds by itself.
    if (wild && mark > 0 && pattern.text.find_first_not_of('*', mark) == std::string::npos)
        slot.prefix = pattern.text.substr(0, mark);
    else if (!slot.any)
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
    node->joined = !node->slots.empty() &&
                   std::all_of(node->slots.begin(), node->slots.end(),
                               [](const Slot& slot) { return slot.words.size() == 1; });
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
        other->joined = std::all_of(other->slots.begin(), other->slots.end(),
                                    [](const Slot& slot) { return slot.words.size() == 1; });
        node = MakeNode(Kind::Or, std::move(node), std::move(other));
    }
    return node;
}

// Candidates of a part of the request.
struct Candidates {
    enum class Extent : std::uint8_t { None, Some, All } extent = Extent::All;
    std::string expression; // Some
};

class ExpressionWriter {
  public:
    // The expression of candidates of node; phrases are numbered in the order in which they stand
    // in it. isTop: every document that the expression finds satisfies node's part of it.
    Candidates Write(PlanNode& node, bool isTop);

  private:
    using Extent = Candidates::Extent;
    Candidates WriteNode(PlanNode& node, bool isTop);
    Candidates WritePhrase(PlanNode& node);
    Candidates WriteSlot(Slot& slot);
    Candidates WriteBoth(PlanNode& node, bool isTop);
    Candidates WriteEither(PlanNode& node);
    Candidates WriteWithout(PlanNode& node, bool isTop);
    Candidates WriteBeside(PlanNode& required, PlanNode& optional, bool isTop);
    std::string Everything(PlanNode& node);
    int m_phrases = 0;
};

// Takes back the numbers of phrases that did not get into the expression.
void Forget(PlanNode& node) {
    for (Slot& slot : node.slots)
        slot.firstPhrase = -1;
    if (node.left)
        Forget(*node.left);
    if (node.right)
        Forget(*node.right);
}

Candidates ExpressionWriter::Write(PlanNode& node, bool isTop) {
    const int before = m_phrases;
    Candidates candidates = WriteNode(node, isTop);
    if (candidates.extent != Extent::Some) {
        m_phrases = before;
        Forget(node);
    }
    return candidates;
}

Candidates ExpressionWriter::WriteSlot(Slot& slot) {
    if (slot.any || slot.words.size() > kMostExpressionWords)
        return {Extent::All, {}};
    if (slot.words.empty() && slot.prefix.empty())
        return {Extent::None, {}};
    slot.firstPhrase = m_phrases;
    m_phrases += static_cast<int>(std::max<std::size_t>(slot.words.size(), 1));
    return {Extent::Some, "(" + SlotExpression(slot, 0, slot.words.size()) + ")"};
}

Candidates ExpressionWriter::WritePhrase(PlanNode& node) {
    if (node.slots.empty())
        return {Extent::None, {}};
    if (node.joined) {
        node.slots.front().firstPhrase = m_phrases++;
        return {Extent::Some, PhraseExpression(node)};
    }
    Candidates all;
    for (Slot& slot : node.slots) {
        if (slot.any)
            continue; // the other words decide
        Candidates one = WriteSlot(slot);
        if (one.extent != Extent::Some)
            return one;
        all.expression += (all.expression.empty() ? "" : " AND ") + one.expression;
        all.extent = Extent::Some;
    }
    return all;
}

// All phrases of a part, whichever is there: makes their places known without asking for them.
std::string ExpressionWriter::Everything(PlanNode& node) {
    std::string expression;
    const auto add = [&](const std::string& part) {
        if (!part.empty())
            expression += (expression.empty() ? "" : " OR ") + part;
    };
    if (node.kind == Kind::Phrase && node.joined)
        add(WritePhrase(node).expression);
    else
        for (Slot& slot : node.slots)
            add(WriteSlot(slot).expression);
    if (node.left)
        add(Everything(*node.left));
    if (node.right)
        add(Everything(*node.right));
    return expression;
}

// Whether a part holds words that no expression takes because they are too many.
bool IsTooLarge(const PlanNode& node) {
    for (const Slot& slot : node.slots)
        if (slot.words.size() > kMostExpressionWords)
            return true;
    return (node.left && IsTooLarge(*node.left)) || (node.right && IsTooLarge(*node.right));
}

// Candidates of required alone, with the places of optional wherever it stands beside it.
Candidates ExpressionWriter::WriteBeside(PlanNode& required, PlanNode& optional, bool isTop) {
    const int before = m_phrases;
    Candidates left = Write(required, isTop);
    if (left.extent != Extent::Some)
        return left;
    const int copied = m_phrases - before;
    const std::string rest = Everything(optional);
    if (rest.empty())
        return left;
    m_phrases += copied;
    return {Extent::Some,
            "(" + left.expression + ") AND ((" + rest + ") OR (" + left.expression + "))"};
}

Candidates ExpressionWriter::WriteWithout(PlanNode& node, bool isTop) {
    if (!isTop || node.kind != Kind::AndNot || node.right->kind != Kind::Phrase ||
        !node.right->joined)
        return WriteBeside(*node.left, *node.right, isTop);
    Candidates left = Write(*node.left, isTop);
    if (left.extent != Extent::Some)
        return left;
    node.decided = true;
    return {Extent::Some,
            "(" + left.expression + ") NOT " + WritePhrase(*node.right).expression};
}

Candidates ExpressionWriter::WriteBoth(PlanNode& node, bool isTop) {
    const int before = m_phrases;
    Candidates left = Write(*node.left, isTop);
    if (left.extent == Extent::None)
        return left;
    Candidates right = Write(*node.right, isTop);
    if (right.extent == Extent::None || left.extent == right.extent) {
        if (right.extent == Extent::Some)
            right.expression = "(" + left.expression + ") AND (" + right.expression + ")";
        return right;
    }
    // One side finds the candidates, the other only judges them.
    m_phrases = before;
    const bool leftFinds = left.extent == Extent::Some;
    return WriteBeside(leftFinds ? *node.left : *node.right, leftFinds ? *node.right : *node.left,
                       isTop);
}

Candidates ExpressionWriter::WriteEither(PlanNode& node) {
    Candidates left = Write(*node.left, false);
    Candidates right = Write(*node.right, false);
    if (left.extent == Extent::All || right.extent == Extent::All)
        return {Extent::All, {}};
    if (left.extent == Extent::None)
        return right;
    if (right.extent == Extent::None)
        return left;
    return {Extent::Some, "(" + left.expression + ") OR (" + right.expression + ")"};
}

Candidates ExpressionWriter::WriteNode(PlanNode& node, bool isTop) {
    switch (node.kind) {
    case Kind::Phrase:
        return WritePhrase(node);
    case Kind::And:
        return WriteBoth(node, isTop);
    case Kind::Near:
    case Kind::Before:
        return WriteBoth(node, false);
    case Kind::Or:
        return WriteEither(node);
    case Kind::AndNot:
    case Kind::NotNear:
        return WriteWithout(node, isTop && node.kind == Kind::AndNot);
    case Kind::Contains:
        return Write(*node.left, false);
    case Kind::Not:
    case Kind::FirstWord:
    case Kind::LastWord:
    case Kind::NameIs:
    case Kind::NameIsNot:
        break;
    }
    return {Extent::All, {}};
}

// Whether documents without any of the words can satisfy the part.
bool NeedsEveryDocument(const PlanNode& node) {
    switch (node.kind) {
    case Kind::Phrase:
        return !node.slots.empty() && std::all_of(node.slots.begin(), node.slots.end(),
                                                  [](const Slot& slot) { return slot.any; });
    case Kind::And:
    case Kind::Near:
    case Kind::Before:
        return NeedsEveryDocument(*node.left) && NeedsEveryDocument(*node.right);
    case Kind::Or:
        return NeedsEveryDocument(*node.left) || NeedsEveryDocument(*node.right);
    case Kind::AndNot:
    case Kind::NotNear:
    case Kind::Contains:
        return NeedsEveryDocument(*node.left);
    case Kind::Not:
    case Kind::FirstWord:
    case Kind::LastWord:
    case Kind::NameIs:
    case Kind::NameIsNot:
        break;
    }
    return true;
}

} // namespace

std::string SlotExpression(const Slot& slot, std::size_t first, std::size_t last) {
    if (!slot.prefix.empty())
        return "\"" + slot.prefix + "\" *";
    std::string expression;
    for (std::size_t i = first; i < last; ++i)
        expression += (expression.empty() ? "\"" : " OR \"") + slot.words[i] + "\"";
    return expression;
}

std::string PhraseExpression(const PlanNode& phrase) {
    std::string text;
    for (const Slot& slot : phrase.slots)
        text += (text.empty() ? "\"" : "\n") + slot.words.front();
    return text + "\"";
}

Plan MakePlan(const RequestNode& request, const RequestNode* conditions, Vocabulary& vocabulary,
              const SynonymUse& synonyms) {
    Plan plan;
    Resolver resolver(vocabulary, synonyms);
    plan.root = resolver.Resolve(request);
    if (conditions != nullptr)
        plan.root = MakeNode(Kind::And, std::move(plan.root), resolver.Resolve(*conditions));
    ExpressionWriter writer;
    const Candidates candidates = writer.Write(*plan.root, true);
    plan.nothing = candidates.extent == Candidates::Extent::None;
    plan.gather = IsTooLarge(*plan.root);
    plan.everyDocument =
        plan.gather ? NeedsEveryDocument(*plan.root) : candidates.extent == Candidates::Extent::All;
    plan.expression = candidates.expression;
    return plan;
}

} // namespace engine
