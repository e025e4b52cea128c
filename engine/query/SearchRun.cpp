// Execution of plans against the word lists.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/SearchRun.h"

#include "engine/index/NameFilter.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace engine {
namespace {

using Kind = RequestNode::Kind;

constexpr std::size_t kManyNames = 2000;

// Names, fields and lengths of documents, looked up one by one; name patterns as sets once many
// documents have been asked about.
class Names {
  public:
    explicit Names(IndexFile& index)
        : m_index(index),
          m_name(index.Db(), "SELECT name FROM document WHERE id = ?1", sqlite::Use::Often),
          m_words(index.Db(), "SELECT words FROM document WHERE id = ?1", sqlite::Use::Often),
          m_field(index.Db(),
                  "SELECT first, last FROM field WHERE document = ?1 AND name = ?2 ORDER BY first",
                  sqlite::Use::Often) {}

    bool Matches(std::int64_t id, const std::string& pattern) {
        PatternSet& set = m_patterns[pattern];
        if (set.asked++ < kManyNames) {
            m_name.Bind(1, id);
            const bool matches = m_name.Step() && MatchesPattern(pattern, m_name.Text(0));
            m_name.Reset();
            return matches;
        }
        if (set.documents.empty())
            Load(pattern, set);
        return static_cast<std::size_t>(id) < set.documents.size() &&
               set.documents[static_cast<std::size_t>(id)];
    }

    std::uint32_t WordCount(std::int64_t id) {
        m_words.Bind(1, id);
        const auto count = m_words.Step() ? static_cast<std::uint32_t>(m_words.Int64(0)) : 0;
        m_words.Reset();
        return count;
    }

    Spans Ranges(std::int64_t id, const std::string& field) {
        Spans ranges;
        m_field.Bind(1, id).Bind(2, field);
        while (m_field.Step())
            ranges.push_back({static_cast<std::uint32_t>(m_field.Int64(0)),
                              static_cast<std::uint32_t>(m_field.Int64(1))});
        m_field.Reset();
        return ranges;
    }

  private:
    struct PatternSet {
        std::size_t asked = 0;
        std::vector<bool> documents;
    };

    void Load(const std::string& pattern, PatternSet& set) {
        const std::string prefix = pattern.substr(0, pattern.find_first_of("*?"));
        sqlite::Statement all(m_index.Db(), "SELECT id, name FROM document WHERE name >= ?1 AND "
                                            "name <= ?1 || char(1114111)");
        all.Bind(1, prefix);
        set.documents.resize(1);
        while (all.Step()) {
            if (!MatchesPattern(pattern, all.Text(1)))
                continue;
            const auto id = static_cast<std::size_t>(all.Int64(0));
            if (id >= set.documents.size())
                set.documents.resize(id + id / 2 + 1);
            set.documents[id] = true;
        }
    }

    IndexFile& m_index;
    sqlite::Statement m_name, m_words, m_field;
    std::map<std::string, PatternSet> m_patterns;
};

// Every document, ascending.
class AllDocuments {
  public:
    explicit AllDocuments(IndexFile& index)
        : m_next(index.Db(), "SELECT id FROM document WHERE id >= ?1 ORDER BY id", sqlite::Use::Often) {}

    std::int64_t Seek(std::int64_t id) {
        constexpr int kSteps = 32; // looking it up anew is cheaper than more of them
        for (int step = 0; m_id < id; ++step) {
            if (step % kSteps == 0 && (!m_running || step > 0)) {
                m_next.Reset();
                m_next.Bind(1, id);
                m_running = true;
            }
            m_id = m_next.Step() ? m_next.Int64(0) : kNoDocument;
        }
        return m_id;
    }

  private:
    sqlite::Statement m_next;
    bool m_running = false;
    std::int64_t m_id = 0;
};

// Whether it is enough to know which words a document holds, wherever they stand.
bool IsDecidedByPresence(const PlanNode& node) {
    switch (node.kind) {
    case Kind::Phrase:
        return node.slots.size() == 1 && !node.slots.front().any;
    case Kind::And:
    case Kind::Or:
    case Kind::AndNot:
        return IsDecidedByPresence(*node.left) && IsDecidedByPresence(*node.right);
    default:
        return false;
    }
}

} // namespace

// The document at hand.
class SearchRun::Facts final : public DocumentFacts {
  public:
    Facts(IndexFile& index, std::vector<SlotCursor>& cursors)
        : documents(index), m_names(index), m_cursors(cursors) {}
    std::int64_t id = 0;
    AllDocuments documents;

    void SlotPlaces(const Slot& slot, std::vector<std::uint32_t>& places) override {
        SlotCursor& cursor = m_cursors[slot.number];
        if (cursor.Seek(id) == id)
            cursor.Places(places);
        else
            places.clear();
    }
    std::uint32_t WordCount() override { return m_names.WordCount(id); }
    Spans FieldRanges(const std::string& name) override { return m_names.Ranges(id, name); }
    bool NameMatches(const std::string& pattern) override { return m_names.Matches(id, pattern); }

  private:
    Names m_names;
    std::vector<SlotCursor>& m_cursors;
};

SearchRun::SearchRun(IndexFile& index, Plan plan)
    : m_index(index), m_plan(std::move(plan)), m_postings(index.Db()) {}

SearchRun::~SearchRun() = default;

void SearchRun::OpenCursors(Visit visit) {
    m_cursors.clear();
    m_cursors.reserve(m_plan.slots);
    Open(*m_plan.root, visit);
    m_facts = std::make_unique<Facts>(m_index, m_cursors);
}

void SearchRun::Open(const PlanNode& node, Visit visit) {
    for (const Slot& slot : node.slots)
        m_cursors.emplace_back(m_postings, slot, visit);
    if (node.left)
        Open(*node.left, visit);
    if (node.right)
        Open(*node.right, visit);
}

std::int64_t SearchRun::NextOfPhrase(const PlanNode& node, std::int64_t from) {
    if (node.slots.empty())
        return kNoDocument;
    std::int64_t id = from;
    for (std::size_t agreed = 0; agreed < node.slots.size();) {
        agreed = 0;
        for (const Slot& slot : node.slots) {
            const std::int64_t next = slot.any ? id : m_cursors[slot.number].Seek(id);
            if (next == kNoDocument)
                return kNoDocument;
            agreed = next == id ? agreed + 1 : 0;
            id = next;
        }
    }
    return id;
}

std::int64_t SearchRun::NextOfBoth(const PlanNode& node, std::int64_t from) {
    if (node.right->universal)
        return Next(*node.left, from);
    if (node.left->universal)
        return Next(*node.right, from);
    for (std::int64_t id = from;;) {
        const std::int64_t left = Next(*node.left, id);
        if (left == kNoDocument)
            return kNoDocument;
        id = Next(*node.right, left);
        if (id == left || id == kNoDocument)
            return id;
    }
}

// The first document from one on that has the words to satisfy the node.
std::int64_t SearchRun::Next(const PlanNode& node, std::int64_t from) {
    switch (node.kind) {
    case Kind::Phrase:
        return node.universal ? m_facts->documents.Seek(from) : NextOfPhrase(node, from);
    case Kind::And:
    case Kind::Near:
    case Kind::Before:
        return NextOfBoth(node, from);
    case Kind::Or:
        return std::min(Next(*node.left, from), Next(*node.right, from));
    case Kind::AndNot:
    case Kind::NotNear:
    case Kind::Contains:
        return Next(*node.left, from);
    case Kind::Not:
    case Kind::FirstWord:
    case Kind::LastWord:
    case Kind::NameIs:
    case Kind::NameIsNot:
        break;
    }
    return m_facts->documents.Seek(from);
}

// One word, the commonest request: there is nothing to judge.
void SearchRun::RankWord(Ranking& ranking) {
    SlotCursor& cursor = m_cursors.front();
    for (std::int64_t id = cursor.Seek(1); id != kNoDocument; id = cursor.Seek(id + 1))
        ranking.Add(id, cursor.Count());
}

bool SearchRun::IsPresent(const PlanNode& node, std::int64_t id) {
    switch (node.kind) {
    case Kind::And:
        return IsPresent(*node.left, id) && IsPresent(*node.right, id);
    case Kind::Or:
        return IsPresent(*node.left, id) || IsPresent(*node.right, id);
    case Kind::AndNot:
        return IsPresent(*node.left, id) && !IsPresent(*node.right, id);
    default:
        return m_cursors[node.slots.front().number].Seek(id) == id;
    }
}

// Hits of both sides may coincide, so that these are the most there can be.
std::size_t SearchRun::MostHits(const PlanNode& node, std::int64_t id) {
    if (node.kind == Kind::Phrase) {
        SlotCursor& cursor = m_cursors[node.slots.front().number];
        return cursor.Seek(id) == id ? cursor.Count() : 0;
    }
    return MostHits(*node.left, id) + (node.kind == Kind::AndNot ? 0 : MostHits(*node.right, id));
}

bool SearchRun::AreWordsNear(const PlanNode& node, std::int64_t id) {
    SlotCursor& left = m_cursors[node.left->slots.front().number];
    SlotCursor& right = m_cursors[node.right->slots.front().number];
    if (left.Seek(id) != id || right.Seek(id) != id)
        return false;
    left.Places(m_left);
    right.Places(m_right);
    return AreNear(m_left, m_right, node.distance);
}

// Places are only looked at where a document may be among the best.
void SearchRun::RankByPresence(Ranking& ranking) {
    Evaluation evaluation(*m_facts);
    PlanNode& root = *m_plan.root;
    for (std::int64_t id = Next(root, 1); id != kNoDocument; id = Next(root, id + 1)) {
        if (!IsPresent(root, id))
            continue;
        m_facts->id = id;
        if (!ranking.CanRank(MostHits(root, id)))
            ranking.Pass();
        else if (evaluation.Judge(root))
            ranking.Add(id, Covered(root.spans));
    }
}

void SearchRun::RankJudged(Ranking& ranking) {
    Evaluation evaluation(*m_facts);
    PlanNode& root = *m_plan.root;
    const bool twoWords = root.kind == Kind::Near && IsDecidedByPresence(*root.left) &&
                          IsDecidedByPresence(*root.right) && root.left->kind == Kind::Phrase &&
                          root.right->kind == Kind::Phrase;
    for (std::int64_t id = Next(root, 1); id != kNoDocument; id = Next(root, id + 1)) {
        m_facts->id = id;
        if (twoWords && !ranking.CanRank(MostHits(root, id))) {
            if (AreWordsNear(root, id))
                ranking.Pass();
        } else if (evaluation.Judge(root)) {
            ranking.Add(id, Covered(root.spans));
        }
    }
}

std::vector<FoundByWords> SearchRun::Run(std::size_t most) {
    Ranking ranking(most);
    OpenCursors(Visit::All);
    const PlanNode& root = *m_plan.root;
    if (root.kind == Kind::Phrase && root.slots.size() == 1 && !root.universal)
        RankWord(ranking);
    else if (IsDecidedByPresence(root))
        RankByPresence(ranking);
    else
        RankJudged(ranking);
    m_found = ranking.Found();

    // Word lists are read forwards, so the hits of the best are fetched in the order of their ids.
    const std::vector<RankedDocument> best = ranking.TakeBest(m_index);
    std::vector<std::pair<std::int64_t, std::size_t>> byId;
    for (std::size_t i = 0; i < best.size(); ++i)
        byId.emplace_back(best[i].id, i);
    std::sort(byId.begin(), byId.end());
    std::vector<FoundByWords> found(best.size());
    OpenCursors(Visit::Few);
    Evaluation evaluation(*m_facts);
    for (const auto& [id, rank] : byId) {
        m_facts->id = id;
        (void)evaluation.Judge(*m_plan.root);
        found[rank] = {id, Cover(m_plan.root->spans)};
    }
    return found;
}

} // namespace engine
