// Word lists read from the full-text table's pages are those that the table itself gives.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/IndexFile.h"
#include "engine/query/Postings.h"
#include "sqlite/Error.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace engine {
namespace {

using Lists = std::map<std::string, std::map<std::int64_t, std::vector<std::uint32_t>>>;

class OneText final : public TermSource {
  public:
    explicit OneText(const std::string& terms) : m_terms(terms) {}
    bool Next(std::string_view& terms) override {
        terms = m_terms;
        return !std::exchange(m_given, true);
    }

  private:
    const std::string& m_terms;
    bool m_given = false;
};

class Postings : public testing::Test {
  protected:
    Postings() : m_index(m_folder.filePath(QStringLiteral("x.ix")).toStdString(), IndexMode::Update, {}) {}

    // Common words, rare ones, one that stands in a document often enough to fill pages.
    std::string MakeTerms(std::int64_t id) {
        std::string terms;
        const auto count = std::uniform_int_distribution(1, 60)(m_random);
        for (int i = 0; i < count; ++i) {
            const int rank = std::geometric_distribution<int>(0.02)(m_random);
            terms += "w" + std::to_string(rank) + "\n";
        }
        if (id % 400 == 7)
            for (int i = 0; i < 20'000; ++i)
                terms += (i % 3 == 0 ? "often\n" : "w1\n");
        // Leaps in the first one's list must not land in the other's.
        for (int i = 0; i < 10; ++i)
            terms += id < 2000 ? "twin1\ntwin2\n" : "twin2\n";
        return terms + "every\n" + "only" + std::to_string(id) + "\n";
    }
    void Put(std::int64_t id) {
        m_texts[id] = MakeTerms(id);
        Run("INSERT INTO words(rowid, text) VALUES(?1, '')", id);
    }
    void Remove(std::int64_t id) {
        Run("INSERT INTO words(words, rowid, text) VALUES('delete', ?1, '')", id);
        m_texts.erase(id);
    }
    void Run(const char* sql, std::int64_t id) {
        OneText terms(m_texts.at(id));
        m_index.Words().Set(&terms);
        sqlite::Statement statement(m_index.Db(), sql);
        statement.Bind(1, id).Run();
    }
    void Exec(const std::string& sql) { m_index.Db().Exec(sql); }

    // What the table says of itself.
    Lists TheTables() {
        Exec("CREATE VIRTUAL TABLE IF NOT EXISTS temp.places USING fts5vocab('main', 'words', 'instance')");
        sqlite::Statement rows(m_index.Db(), "SELECT term, doc, offset FROM temp.places");
        Lists lists;
        while (rows.Step())
            lists[std::string(rows.Text(0))][rows.Int64(1)].push_back(
                static_cast<std::uint32_t>(rows.Int64(2)) + 1);
        return lists;
    }
    void Compare(const char* when) {
        SCOPED_TRACE(when);
        PostingIndex postings(m_index.Db());
        const Lists expected = TheTables();
        for (const auto& [word, documents] : expected) {
            PostingList list(postings, word);
            auto document = documents.begin();
            for (auto id = list.Seek(1); id != kNoDocument; id = list.Seek(id + 1), ++document) {
                ASSERT_NE(document, documents.end()) << word;
                std::vector<std::uint32_t> places;
                list.Places(places);
                ASSERT_EQ(id, document->first) << word;
                ASSERT_EQ(places, document->second) << word << " in " << id;
                ASSERT_EQ(list.Count(), places.size());
            }
            ASSERT_EQ(document, documents.end()) << word;
            Leap(postings, word, documents);
        }
        for (const char* none : {"", "a", "every1", "w", "zzz", "only"})
            EXPECT_EQ(PostingList(postings, none).Seek(1), kNoDocument);
    }
    // Goes on by leaps of every length.
    void Leap(PostingIndex& postings, const std::string& word,
              const std::map<std::int64_t, std::vector<std::uint32_t>>& documents) {
        PostingList list(postings, word);
        for (std::int64_t from = 1;;) {
            const auto expected = documents.lower_bound(from);
            const std::int64_t id = list.Seek(from);
            ASSERT_EQ(id, expected == documents.end() ? kNoDocument : expected->first) << word;
            if (id == kNoDocument)
                return;
            const int power = std::uniform_int_distribution(0, 12)(m_random);
            from = id + std::uniform_int_distribution<std::int64_t>(1, std::int64_t{1} << power)(m_random);
        }
    }

    QTemporaryDir m_folder;
    std::mt19937 m_random{5};
    IndexFile m_index;
    std::map<std::int64_t, std::string> m_texts;
};

TEST_F(Postings, AgreeWithTheTableInEveryState) {
    Compare("empty");
    std::int64_t last = 0;
    for (int round = 0; round < 6; ++round) {
        sqlite::Transaction transaction(m_index.Db());
        for (int i = 0; i < 700; ++i)
            Put(++last);
        for (int i = 0; i < 150; ++i) {
            const auto id = std::uniform_int_distribution<std::int64_t>(1, last)(m_random);
            if (m_texts.count(id) == 0)
                continue;
            Remove(id);
            if (i % 3 == 0)
                Put(id); // another text under the same number, in the same transaction
        }
        transaction.Commit();
        if (round % 2 == 0)
            Compare("several segments");
    }
    // Stops half-way: segments are partly used up.
    for (int step = 0; step < 3; ++step) {
        Exec("INSERT INTO words(words, rank) VALUES('merge', -20)");
        Compare("while merging");
    }
    Exec("INSERT INTO words(words) VALUES('optimize')");
    Compare("one segment");
}

TEST_F(Postings, DamageIsToldAndNeverReadBeyond) {
    for (std::int64_t id = 1; id <= 300; ++id)
        Put(id);
    Exec("INSERT INTO words(words) VALUES('optimize')");
    sqlite3_db_config(m_index.Db().Handle(), SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
    sqlite::Statement all(m_index.Db(), "SELECT id, block FROM words_data WHERE id >= 10");
    std::map<std::int64_t, std::string> pages;
    while (all.Step())
        pages[all.Int64(0)] = std::string(all.Blob(1));
    const auto set = [this](std::int64_t id, const std::string& block) {
        sqlite::Statement write(m_index.Db(), "UPDATE words_data SET block = ?2 WHERE id = ?1");
        write.Bind(1, id).BindBlob(2, block).Run();
    };
    for (const auto& [id, block] : pages)
        for (int i = 0; i < 40; ++i) {
            std::string broken = block;
            const auto at = std::uniform_int_distribution<std::size_t>(0, block.size() - 1)(m_random);
            if (i % 8 == 0)
                broken.resize(at);
            else
                broken[at] = static_cast<char>(m_random());
            set(id, broken);
            try {
                PostingIndex postings(m_index.Db());
                for (const char* word : {"every", "often", "w0", "w1", "only7"}) {
                    PostingList list(postings, word);
                    std::vector<std::uint32_t> places;
                    int steps = 0;
                    for (auto at2 = list.Seek(1); at2 != kNoDocument && ++steps < 10'000; at2 = list.Seek(at2 + 1))
                        list.Places(places);
                }
            } catch (const sqlite::Error& error) {
                EXPECT_EQ(error.Kind(), sqlite::ErrorKind::Corrupt);
            }
            set(id, block);
        }
}

} // namespace
} // namespace engine
