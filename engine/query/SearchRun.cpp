// Execution of plans against the full-text table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/SearchRun.h"

#include "engine/index/NameFilter.h"

#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <utility>

namespace engine {
namespace {

// Documents judged at a time when words do not narrow them down: bounds the places in memory.
constexpr std::int64_t kBatch = 20'000;
constexpr std::size_t kManyNames = 2000;

void CallJudge(const Fts5ExtensionApi* api, Fts5Context* row, sqlite3_context* context, int,
               sqlite3_value**) {
    auto* run = static_cast<SearchRun*>(api->xUserData(row));
    sqlite3_result_int64(context, run->Judge(api, row));
}

void CallPlaces(const Fts5ExtensionApi* api, Fts5Context* row, sqlite3_context* context, int,
                sqlite3_value**) {
    static_cast<SearchRun*>(api->xUserData(row))->TakePlaces(api, row);
    sqlite3_result_null(context);
}

// Word numbers of one phrase in the row at hand.
void AppendPlaces(const Fts5ExtensionApi* api, Fts5Context* row, int phrase,
                  std::vector<std::uint32_t>& places) {
    Fts5PhraseIter iterator;
    int column = 0;
    int offset = 0;
    if (api->xPhraseFirst(row, phrase, &iterator, &column, &offset) != SQLITE_OK)
        return;
    for (; column >= 0; api->xPhraseNext(row, &iterator, &column, &offset))
        places.push_back(static_cast<std::uint32_t>(offset) + 1);
}

void SortUnique(std::vector<std::uint32_t>& places) {
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
}

} // namespace

// Names, fields and lengths of documents, looked up one by one; name patterns as sets once many
// documents have been asked about.
class SearchRun::Names {
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

// The candidate that the full-text table stands at.
class SearchRun::RowFacts final : public DocumentFacts {
  public:
    RowFacts(const Fts5ExtensionApi* api, Fts5Context* row, Names& names)
        : m_api(api), m_row(row), m_names(names), m_id(api->xRowid(row)) {}
    void SlotPlaces(const Slot& slot, std::vector<std::uint32_t>& places) override {
        if (slot.firstPhrase < 0)
            return;
        const int count = std::max(static_cast<int>(slot.words.size()), 1);
        for (int i = 0; i < count; ++i)
            AppendPlaces(m_api, m_row, slot.firstPhrase + i, places);
        if (count > 1)
            SortUnique(places);
    }
    void PhrasePlaces(const PlanNode& phrase, std::vector<std::uint32_t>& places) override {
        if (phrase.slots.front().firstPhrase >= 0)
            AppendPlaces(m_api, m_row, phrase.slots.front().firstPhrase, places);
    }
    std::uint32_t WordCount() override { return m_names.WordCount(m_id); }
    Spans FieldRanges(const std::string& name) override { return m_names.Ranges(m_id, name); }
    bool NameMatches(const std::string& pattern) override { return m_names.Matches(m_id, pattern); }

  private:
    const Fts5ExtensionApi* m_api;
    Fts5Context* m_row;
    Names& m_names;
    std::int64_t m_id;
};

// Documents of one batch, with the places of every slot gathered beforehand.
class SearchRun::BatchFacts final : public DocumentFacts {
  public:
    explicit BatchFacts(Names& names) : m_names(names) {}
    using Places = std::unordered_map<std::int64_t, std::vector<std::uint32_t>>;
    std::map<const Slot*, Places> slots;
    std::map<const PlanNode*, Places> phrases;
    std::int64_t id = 0;

    void SlotPlaces(const Slot& slot, std::vector<std::uint32_t>& places) override {
        Take(slots[&slot], places);
    }
    void PhrasePlaces(const PlanNode& phrase, std::vector<std::uint32_t>& places) override {
        Take(phrases[&phrase], places);
    }
    std::uint32_t WordCount() override { return m_names.WordCount(id); }
    Spans FieldRanges(const std::string& name) override { return m_names.Ranges(id, name); }
    bool NameMatches(const std::string& pattern) override { return m_names.Matches(id, pattern); }

    // Every document that has a place of any slot or phrase, ascending.
    [[nodiscard]] std::vector<std::int64_t> Documents() const {
        std::vector<std::int64_t> ids;
        for (const auto& [slot, places] : slots)
            for (const auto& [each, _] : places)
                ids.push_back(each);
        for (const auto& [phrase, places] : phrases)
            for (const auto& [each, _] : places)
                ids.push_back(each);
        std::sort(ids.begin(), ids.end());
        ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
        return ids;
    }

  private:
    void Take(const Places& all, std::vector<std::uint32_t>& places) const {
        if (const auto found = all.find(id); found != all.end())
            places = found->second;
    }
    Names& m_names;
};

SearchRun::SearchRun(IndexFile& index, Plan plan)
    : m_index(index), m_plan(std::move(plan)), m_names(std::make_unique<Names>(index)) {
    fts5_api* api = index.Words().Api();
    int rc = api->xCreateFunction(api, "velmora_judge", this, &CallJudge, nullptr);
    if (rc == SQLITE_OK)
        rc = api->xCreateFunction(api, "velmora_places", this, &CallPlaces, nullptr);
    if (rc != SQLITE_OK)
        throw sqlite::Error(rc, "cannot register the search functions");
}

SearchRun::~SearchRun() = default;

std::int64_t SearchRun::Judge(const Fts5ExtensionApi* api, Fts5Context* row) {
    try {
        RowFacts facts(api, row, *m_names);
        PlanNode& root = *m_plan.root;
        m_hits.clear();
        if (root.kind == RequestNode::Kind::Phrase && root.joined && root.slots.size() == 1) {
            // One word, the commonest request: its places are its hits.
            facts.PhrasePlaces(root, m_hits);
        } else {
            if (!Evaluate(root, facts))
                return -1;
            m_hits = Cover(root.spans);
        }
        m_ranking->Add(api->xRowid(row), m_hits);
        return static_cast<std::int64_t>(m_hits.size());
    } catch (...) {
        m_failure = std::current_exception();
        return -1;
    }
}

void SearchRun::TakePlaces(const Fts5ExtensionApi* api, Fts5Context* row) {
    m_hits.clear();
    for (int phrase = 0; phrase < api->xPhraseCount(row); ++phrase)
        AppendPlaces(api, row, phrase, m_hits);
}

void SearchRun::RankCandidates(Ranking& ranking) {
    sqlite::Statement candidates(m_index.Db(),
                                 "SELECT velmora_judge(words) FROM words WHERE words MATCH ?1");
    candidates.Bind(1, m_plan.expression);
    m_ranking = &ranking;
    while (candidates.Step() && !m_failure) {
    }
    m_ranking = nullptr;
    if (m_failure)
        std::rethrow_exception(m_failure);
}

void SearchRun::Gather(const std::string& expression, std::int64_t first, std::int64_t last,
                       BatchFacts::Places& places) {
    sqlite::Statement rows(m_index.Db(), "SELECT rowid, velmora_places(words) FROM words "
                                         "WHERE words MATCH ?1 AND rowid BETWEEN ?2 AND ?3");
    rows.Bind(1, expression).Bind(2, first).Bind(3, last);
    while (rows.Step()) {
        std::vector<std::uint32_t>& into = places[rows.Int64(0)];
        into.insert(into.end(), m_hits.begin(), m_hits.end());
    }
}

void SearchRun::LoadSlots(PlanNode& node, BatchFacts& batch, std::int64_t first, std::int64_t last) {
    if (node.joined) {
        Gather(PhraseExpression(node), first, last, batch.phrases[&node]);
    } else {
        for (const Slot& slot : node.slots) {
            BatchFacts::Places& places = batch.slots[&slot];
            for (std::size_t i = 0; i < slot.words.size(); ++i)
                Gather(SlotExpression(slot, i, i + 1), first, last, places);
            if (!slot.prefix.empty())
                Gather(SlotExpression(slot, 0, 0), first, last, places);
            if (slot.words.size() > 1)
                for (auto& [id, each] : places)
                    SortUnique(each);
        }
    }
    if (node.left)
        LoadSlots(*node.left, batch, first, last);
    if (node.right)
        LoadSlots(*node.right, batch, first, last);
}

// Where no expression finds the candidates: the places of all words are gathered for a range of
// documents at a time, and each document that has one, or every document, is judged.
void SearchRun::RankGathered(Ranking& ranking) {
    const auto most = sqlite::QueryInt64(m_index.Db(), "SELECT max(id) FROM document").value_or(0);
    sqlite::Statement documents(
        m_index.Db(), "SELECT id FROM document WHERE id BETWEEN ?1 AND ?2", sqlite::Use::Often);
    for (std::int64_t first = 1; first <= most; first += kBatch) {
        BatchFacts batch(*m_names);
        LoadSlots(*m_plan.root, batch, first, first + kBatch - 1);
        std::vector<std::int64_t> ids;
        if (m_plan.everyDocument) {
            documents.Bind(1, first).Bind(2, first + kBatch - 1);
            while (documents.Step())
                ids.push_back(documents.Int64(0));
            documents.Reset();
        } else {
            ids = batch.Documents();
        }
        for (const std::int64_t id : ids) {
            batch.id = id;
            if (Evaluate(*m_plan.root, batch))
                ranking.Add(id, Cover(m_plan.root->spans));
        }
    }
}

std::vector<RankedDocument> SearchRun::Run(std::size_t most) {
    if (m_plan.nothing)
        return {};
    Ranking ranking(most);
    if (m_plan.gather || m_plan.everyDocument)
        RankGathered(ranking);
    else
        RankCandidates(ranking);
    m_found = ranking.Found();
    return ranking.TakeBest(m_index);
}

} // namespace engine
