// Opening, statements, transactions, and what failures look like.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "TemporaryFile.h"
#include "sqlite/Statement.h"

#include <fstream>
#include <gmock/gmock.h>
#include <thread>
#include <unistd.h>

using namespace sqlite;
using namespace std::chrono_literals;

namespace {

// The kind of the error that the work throws; fails the test when it throws none.
template <class Work> ErrorKind KindOf(Work&& work) {
    try {
        work();
    } catch (const Error& error) {
        return error.Kind();
    }
    ADD_FAILURE() << "no error";
    return ErrorKind::Other;
}

Database Made(const std::string& path) {
    Database database(path, {OpenMode::Create, 0ms});
    database.Exec("CREATE TABLE t(id INTEGER PRIMARY KEY, name TEXT UNIQUE)");
    return database;
}

TEST(Database, OnlyCreateMakesAFile) {
    const TemporaryFile file;
    EXPECT_EQ(KindOf([&] { Database(file.Path(), {OpenMode::ReadWrite}); }), ErrorKind::CantOpen);
    EXPECT_EQ(KindOf([&] { Database(file.Path(), {OpenMode::ReadOnly}); }), ErrorKind::CantOpen);
    EXPECT_FALSE(std::filesystem::exists(file.Path()));
    EXPECT_EQ(KindOf([] { Database("", {OpenMode::Create}); }), ErrorKind::CantOpen);
    Made(file.Path());
    EXPECT_TRUE(std::filesystem::exists(file.Path()));
    Database reader(file.Path(), {OpenMode::ReadOnly});
    EXPECT_TRUE(reader.IsReadOnly());
    EXPECT_EQ(KindOf([&] { reader.Exec("INSERT INTO t(name) VALUES('x')"); }), ErrorKind::ReadOnly);
}

TEST(Database, ANameThatLooksLikeAnAddressIsAName) {
    const TemporaryFile file("plain");
    const auto folder = std::filesystem::path(file.Path()).parent_path();
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    Made("file:odd?mode=memory");
    std::filesystem::current_path(before);
    EXPECT_TRUE(std::filesystem::exists(folder / "file:odd?mode=memory"));
}

TEST(Database, ReadsPragmasAndCountsChanges) {
    const TemporaryFile file;
    Database database = Made(file.Path());
    EXPECT_EQ(database.ReadPragma("journal_mode"), "delete");
    EXPECT_EQ(database.SetPragma("journal_mode", "WAL"), "wal");
    database.SetPragma("user_version", "7");
    EXPECT_EQ(database.ReadPragmaInt("user_version"), 7);
    database.Exec("INSERT INTO t(name) VALUES('a'),('b'); UPDATE t SET name = name || '!'");
    EXPECT_EQ(database.Changes(), 2);
    EXPECT_EQ(database.TotalChanges(), 4);
    EXPECT_EQ(database.LastRowId(), 2);
}

TEST(Statement, EveryTypeComesBackAsItWent) {
    Database database(":memory:", {OpenMode::Create});
    Statement statement(database, "SELECT ?1, ?2, ?3, ?4, ?5, ?6, ?7", Use::Often);
    const std::string text("a\0b\xC3\x88", 5);
    const std::string bytes("\0\xFF\x01", 3);
    statement.Bind(1, INT64_MIN)
        .Bind(2, 0.1)
        .Bind(3, text)
        .BindBlob(4, bytes)
        .Bind(5, nullptr)
        .Bind(6, std::string_view()) // a text of no length, not a null
        .Bind(7, std::optional<int>());
    ASSERT_TRUE(statement.Step());
    EXPECT_EQ(statement.Int64(0), INT64_MIN);
    EXPECT_EQ(statement.Double(1), 0.1);
    EXPECT_EQ(statement.Text(2), text);
    EXPECT_EQ(statement.Blob(3), bytes);
    EXPECT_EQ(statement.Type(3), ColumnType::Blob);
    EXPECT_TRUE(statement.IsNull(4));
    EXPECT_EQ(statement.Type(5), ColumnType::Text);
    EXPECT_TRUE(statement.IsNull(6));
    EXPECT_FALSE(statement.Step());

    statement.Reset();
    statement.Bind(3, "other");
    ASSERT_TRUE(statement.Step());
    EXPECT_EQ(statement.Text(2), "other");
    EXPECT_EQ(statement.Int64(0), INT64_MIN) << "bindings stay through Reset";
    statement.Reset();
    statement.ClearBindings();
    ASSERT_TRUE(statement.Step());
    EXPECT_TRUE(statement.IsNull(0));
}

TEST(Statement, RefusesWhatIsNotExactlyOneStatement) {
    Database database(":memory:", {OpenMode::Create});
    EXPECT_THROW(Statement(database, ""), Error);
    EXPECT_THROW(Statement(database, "SELECT 1; SELECT 2"), Error);
    EXPECT_NO_THROW(Statement(database, "SELECT 1 ; \n"));
    // A misspelt name must not turn into a text.
    EXPECT_THROW(Statement(database, "SELECT \"nothing\""), Error);
    Database closed;
    EXPECT_THROW(Statement(closed, "SELECT 1"), Error);
    Statement one(database, "SELECT ?1");
    EXPECT_THROW(one.Bind(2, 1), Error);
}

TEST(Error, TellsWhatHappenedAndWhere) {
    const TemporaryFile file;
    Database database = Made(file.Path());
    try {
        database.Exec("SELECT missing FROM t");
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.Message(), "no such column: missing");
        EXPECT_THAT(error.what(), testing::EndsWith("in: SELECT missing FROM t"));
        EXPECT_EQ(error.Kind(), ErrorKind::Other);
    }
    database.Exec("INSERT INTO t(name) VALUES('a')");
    Statement insert(database, "INSERT INTO t(name) VALUES(?1)");
    insert.Bind(1, "a");
    EXPECT_EQ(KindOf([&] { insert.Step(); }), ErrorKind::Constraint);
    insert.Bind(1, "b"); // usable again at once
    EXPECT_FALSE(insert.Step());
}

TEST(Error, SortsDamageFromForeignFiles) {
    const TemporaryFile file;
    std::ofstream(file.Path()) << "This is a letter, not a database. " << std::string(2000, 'x');
    Database letter(file.Path());
    try {
        letter.Exec("SELECT * FROM sqlite_schema");
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.Kind(), ErrorKind::Corrupt);
        EXPECT_EQ(error.Code(), 26); // SQLITE_NOTADB
    }
}

TEST(Error, AFullDiskIsToldAndCostsOnlyTheTransaction) {
    const TemporaryFile file;
    Database database = Made(file.Path());
    database.SetPragma("max_page_count", "10"); // fails like a full disk
    database.Exec("INSERT INTO t(name) VALUES('kept')");
    const auto fill = [&] {
        Transaction transaction(database);
        for (int i = 0;; ++i) {
            Statement insert(database, "INSERT INTO t(name) VALUES(?1)");
            insert.Bind(1, std::to_string(i) + std::string(500, 'x')).Run();
        }
    };
    EXPECT_EQ(KindOf(fill), ErrorKind::Full);
    EXPECT_FALSE(database.InTransaction());
    EXPECT_EQ(QueryInt64(database, "SELECT count(*) FROM t"), 1);
}

TEST(Transaction, LeavesNothingUnlessCommitted) {
    const TemporaryFile file;
    Database database = Made(file.Path());
    {
        Transaction transaction(database);
        database.Exec("INSERT INTO t(name) VALUES('lost')");
    }
    EXPECT_EQ(QueryInt64(database, "SELECT count(*) FROM t"), 0);
    {
        Transaction transaction(database);
        database.Exec("INSERT INTO t(name) VALUES('kept')");
        transaction.Commit();
        EXPECT_FALSE(transaction.IsActive());
    }
    EXPECT_EQ(QueryText(database, "SELECT name FROM t"), "kept");
    EXPECT_FALSE(database.InTransaction());
}

TEST(Database, WaitsForALockAndThenTellsIt) {
    const TemporaryFile file;
    Database owner = Made(file.Path());
    Database other(file.Path(), {OpenMode::ReadWrite, 50ms});
    auto lock = std::make_unique<Transaction>(owner);
    owner.Exec("INSERT INTO t(name) VALUES('first')");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(KindOf([&] { Transaction second(other); }), ErrorKind::Busy);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 45ms);

    other.SetBusyTimeout(60s);
    owner.SetBusyTimeout(60s); // its commit has to wait for the other's look at the file
    std::thread releaser([&] {
        lock->Commit();
        lock.reset();
    });
    other.Exec("INSERT INTO t(name) VALUES('second')");
    releaser.join();
    EXPECT_EQ(QueryInt64(other, "SELECT count(*) FROM t"), 2);
}

TEST(Database, AStatementCanBeStoppedFromAnotherThread) {
    Database database(":memory:", {OpenMode::Create});
    Statement endless(database, "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c) "
                                "SELECT count(*) FROM c");
    std::atomic<bool> done = false;
    std::thread stopper([&] {
        while (!done) {
            database.Interrupt();
            std::this_thread::yield();
        }
    });
    EXPECT_EQ(KindOf([&] { endless.Step(); }), ErrorKind::Interrupt);
    done = true;
    stopper.join();
}

} // namespace
