// Word lists from pages of the full-text table that are not as they should be.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Postings.h"
#include "sqlite/Error.h"
#include "tests/fuzz/Packing.h"
#include "tests/fuzz/Target.h"

#include <sqlite3.h>

#include <cstdlib>
#include <map>

namespace fuzz {
namespace {

// A table of several segments, with a word that fills pages of its own.
class Table {
  public:
    Table() : m_database(":memory:") {
        m_database.Exec(
            "CREATE VIRTUAL TABLE words USING fts5(text, content='', tokenize='ascii')");
        m_database.Exec("INSERT INTO words(words, rank) VALUES('pgsz', 200)");
        Put(1, 60);
        m_database.Exec("INSERT INTO words(words) VALUES('optimize')");
        Put(61, 90);
        sqlite3_db_config(m_database.Handle(), SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
        sqlite::Statement rows(m_database, "SELECT id, block FROM words_data ORDER BY id");
        while (rows.Step())
            m_pages[rows.Int64(0)] = std::string(rows.Blob(1));
    }
    [[nodiscard]] sqlite::Database& Db() { return m_database; }
    void Set(std::int64_t id, std::string_view bytes) {
        sqlite::Statement write(m_database, "UPDATE words_data SET block = ?2 WHERE id = ?1");
        write.Bind(1, id).BindBlob(2, bytes).Run();
    }
    void Restore(std::int64_t id) { Set(id, m_pages.at(id)); }
    // The page that a part's name stands for: its place in the order of the pages.
    [[nodiscard]] std::int64_t PageOf(std::string_view name) const {
        const auto place = static_cast<std::size_t>(std::atoi(std::string(name).c_str()));
        return std::next(m_pages.begin(), static_cast<std::ptrdiff_t>(place % m_pages.size()))
            ->first;
    }
    [[nodiscard]] const std::map<std::int64_t, std::string>& Pages() const { return m_pages; }

  private:
    void Put(int from, int to) {
        sqlite::Transaction transaction(m_database);
        sqlite::Statement insert(m_database, "INSERT INTO words(rowid, text) VALUES(?1, ?2)");
        for (int id = from; id <= to; ++id) {
            std::string text = "every w" + std::to_string(id % 7) + " only" + std::to_string(id);
            for (int i = 0; id % 20 == 0 && i < 700; ++i)
                text += " often";
            insert.Bind(1, id).Bind(2, std::string_view(text)).Run();
            insert.Reset();
        }
        transaction.Commit();
    }

    sqlite::Database m_database;
    std::map<std::int64_t, std::string> m_pages;
};

void ReadAll(sqlite::Database& database) {
    engine::PostingIndex postings(database);
    Require(postings.SegmentCount() < 1'000'000, "segments out of nothing");
    for (const char* word : {"", "every", "often", "only40", "only85", "w3", "zzz"}) {
        for (const std::int64_t leap : {1, 7}) {
            engine::PostingList list(postings, word);
            std::vector<std::uint32_t> places;
            std::int64_t last = 0;
            int steps = 0;
            for (auto id = list.Seek(1); id != engine::kNoDocument && ++steps < 1000;
                 id = list.Seek(id + leap)) {
                Require(id > last, "documents out of order");
                last = id;
                places.clear();
                list.Places(places);
                Require(places.size() <= list.Count() + 1, "more places than were counted");
                if (id > engine::kNoDocument - 10)
                    break;
            }
        }
    }
}

} // namespace

void FuzzPostings(const Target&, std::string_view input) {
    static Table table;
    const std::vector<Part> parts = CutParts(input, "1");
    {
        sqlite::Transaction transaction(table.Db());
        for (const Part& part : parts)
            table.Set(table.PageOf(part.name), part.bytes);
        transaction.Commit();
    }
    try {
        ReadAll(table.Db());
    } catch (const sqlite::Error& error) {
        Require(error.Kind() == sqlite::ErrorKind::Corrupt, "damage under another name",
                error.what());
    }
    sqlite::Transaction transaction(table.Db());
    for (const Part& part : parts)
        table.Restore(table.PageOf(part.name));
    transaction.Commit();
}

} // namespace fuzz
