// Opening and upgrading: old forms, missing and foreign files, Retry and Cancel.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "StoreFixture.h"

using namespace velmora;

namespace {

using OpenConnTest = ArchiveTest;
using NoArchiveTest = StoreTest;

bool Has(const QStringList& reports, qsizetype index, const QString& piece) {
    return reports.value(index).contains(piece);
}

TEST_F(OpenConnTest, OpensOnceAtTheFirstAccessAndMakesTheStamps) {
    EXPECT_EQ(holder->gConnection, nullptr);
    EXPECT_EQ(GetRsIdxdFolders()->RecordCount(), 0);
    const Connection* first = holder->gConnection.get();
    EXPECT_EQ(Count("tbltimbri"), 0);
    EXPECT_EQ(Text("SELECT group_concat(name || ' ' || type, ', ') FROM "
                   "pragma_table_info('tbltimbri')"),
              "i_id INTEGER, sdescr TEXT(50), i_idparent INT");
    DbExecute(QStringLiteral("UPDATE tbltimbri SET sdescr = ''"));
    EXPECT_EQ(holder->gConnection.get(), first);
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(OpenConnTest, TheArchiveInCapitalsIsTheSameArchive) {
    globals->gArchivePath = platform::Capitals(globals->gArchivePath);
    EXPECT_TRUE(GetRsIdxdFolders());
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(OpenConnTest, UpgradesAnOldForm) {
    {
        sqlite::Database old = Beside();
        old.Exec("DROP INDEX TblMailFolders_sstoreid; ALTER TABLE TblMailFolders DROP COLUMN "
                 "sstoreid; INSERT INTO TblMailFolders(sentryid) VALUES('kept');"
                 "DROP TABLE tblOcrFiles;"
                 "CREATE TABLE tblOcrFiles(i_id INTEGER PRIMARY KEY AUTOINCREMENT, spath TEXT(255) "
                 "COLLATE UNICODE_NOCASE, sfilename VARCHAR(50) COLLATE UNICODE_NOCASE, shash "
                 "TEXT(64), SUSER TEXT(255));"
                 "CREATE UNIQUE INDEX tblOcrFiles_uniqueIDX ON tblOcrFiles(spath, sfilename);"
                 "INSERT INTO tblOcrFiles(i_id, spath, sfilename) VALUES(7, '\\A', 'B.TIF')");
    }
    OpenConn();
    EXPECT_TRUE(reporter.reports.isEmpty());
    EXPECT_EQ(Text("SELECT sentryid || coalesce(sstoreid, '-') FROM TblMailFolders"), "kept-");
    EXPECT_EQ(Text("SELECT i_id || spath || sfilename FROM tblOcrFiles"), "7\\AB.TIF");
    EXPECT_EQ(Text("SELECT type FROM pragma_table_info('tblOcrFiles') WHERE name='sfilename'"),
              "TEXT(255)");
    EXPECT_THROW(Beside().Exec("INSERT INTO tblOcrFiles(spath, sfilename) VALUES('\\a','b.tif')"),
                 sqlite::Error)
        << "the unique index is back, without case";

    const std::string schema = Text("SELECT group_concat(sql, ';') FROM sqlite_schema");
    holder->gConnection.reset();
    OpenConn();
    EXPECT_EQ(Text("SELECT group_concat(sql, ';') FROM sqlite_schema"), schema);
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(OpenConnTest, AnyTablesColumnOfThatNameHidesTheMissingOne) {
    Beside().Exec("DROP INDEX TblMailFolders_sstoreid;"
                  "ALTER TABLE TblMailFolders DROP COLUMN sstoreid;"
                  "ALTER TABLE TblDocFields ADD COLUMN SStoreId TEXT");
    OpenConn();
    EXPECT_EQ(Text("SELECT count(*) FROM pragma_table_info('TblMailFolders')"), "3");
    EXPECT_EQ(Count("tbltimbri"), 0) << "the other steps ran";
}

TEST_F(NoArchiveTest, AMissingDatabaseIsToldAndNeverMade) {
    const RecordSetPtr rs = GetRsIdxdFolders();
    EXPECT_FALSE(rs);
    // One report of the opening, one of the statement that then finds no open connection.
    ASSERT_EQ(reporter.reports.size(), 2);
    EXPECT_TRUE(Has(reporter.reports, 0, QStringLiteral("ModDb/OpenConn")));
    EXPECT_TRUE(Has(reporter.reports, 0, File(QStringLiteral("db.mdb"))));
    EXPECT_TRUE(Has(reporter.reports, 1, QStringLiteral("ModDb/GetRs")));
    EXPECT_FALSE(QFile::exists(File(QStringLiteral("db.mdb"))));
    ASSERT_NE(holder->gConnection, nullptr);
    EXPECT_FALSE(holder->gConnection->IsOpen());
    EXPECT_EQ(NumberOf([&] { return rs->RecordCount(); }), kNoRecordSet)
        << "no crash for the caller";

    // The next statement fails again; with the database in its place all goes on.
    DbExecute(QStringLiteral("DELETE FROM tblMailFolders"));
    EXPECT_EQ(reporter.reports.size(), 3);
    CreateDatabase(globals->gArchivePath);
    EXPECT_TRUE(GetRsIdxdFolders());
    EXPECT_EQ(Count("tbltimbri"), 0);
    EXPECT_EQ(reporter.reports.size(), 3);
}

TEST_F(NoArchiveTest, RetryAfterTheCauseIsGoneGoesOn) {
    reporter.answers = {[] { return true; }, // still missing: reported once more
                        [&] {
                            CreateDatabase(globals->gArchivePath);
                            return true;
                        }};
    EXPECT_TRUE(GetRsIdxdFolders());
    EXPECT_EQ(reporter.reports.size(), 2);
    EXPECT_EQ(Count("tbltimbri"), 0);
}

TEST_F(NoArchiveTest, ForeignFilesAreToldApart) {
    const struct {
        const char* name;
        QByteArray content;
        int number;
        const char16_t* words;
    } cases[] = {
        {"text", QByteArray("Dear Sir, ").repeated(300), 26, u"not a database"},
        {"short", "x", kNotADatabase, u"not a database"},
        {"empty", "", kNotADatabase, u"not a database"},
        {"jet", QByteArray("\0\1\0\0Standard Jet DB\0\1\0\0\0", 24) + QByteArray(4096, '\0'), 26,
         u"Jet"},
    };
    for (const auto& c : cases) {
        QFile file(File(QStringLiteral("db.mdb")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(c.content);
        file.close();
        reporter.reports.clear();
        holder->gConnection.reset();
        OpenConn();
        ASSERT_EQ(reporter.reports.size(), 1) << c.name;
        EXPECT_TRUE(Has(reporter.reports, 0, QString::fromUtf16(c.words))) << c.name;
        EXPECT_TRUE(Has(reporter.reports, 0, QStringLiteral("(n.%1)").arg(c.number))) << c.name;
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), c.content) << c.name << ": left as it was";
        file.remove();
    }
    QDir(Folder()).mkdir(QStringLiteral("db.mdb"));
    reporter.reports.clear();
    holder->gConnection.reset();
    OpenConn();
    EXPECT_TRUE(Has(reporter.reports, 0, QStringLiteral("missing")));
}

TEST_F(NoArchiveTest, AnotherProgramsDatabaseIsNotTakenOver) {
    sqlite::Database(DatabaseFile(), {sqlite::OpenMode::Create}).Exec("CREATE TABLE t(x)");
    OpenConn();
    ASSERT_EQ(reporter.reports.size(), 1);
    EXPECT_TRUE(Has(reporter.reports, 0, QStringLiteral("not a database of this program")));
    EXPECT_EQ(Text("SELECT group_concat(name) FROM sqlite_schema"), "t");
}

TEST_F(OpenConnTest, DamageIsTold) {
    {
        sqlite::Database database = Beside();
        database.Exec("INSERT INTO tblOcrFiles(spath) VALUES(hex(zeroblob(30000)))");
    }
    QFile file(File(QStringLiteral("db.mdb")));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.seek(4096); // all but the first page
    file.write(QByteArray(static_cast<int>(file.size() - 4096), '\x5A'));
    file.close();
    EXPECT_FALSE(GetRsOcrFile({}, {}));
    ASSERT_FALSE(reporter.reports.isEmpty());
    EXPECT_TRUE(Has(reporter.reports, reporter.reports.size() - 1, QStringLiteral("damaged")));
}

TEST_F(OpenConnTest, AWideningThatFindsTheTableTakenIsReportedAndLeavesTheRest) {
    OpenConn();
    holder->gConnection.reset();
    sqlite::Database other = Beside();
    auto lock = std::make_unique<sqlite::Transaction>(other);
    OpenConn();
    ASSERT_EQ(reporter.reports.size(), 1) << "Cancel: the second widening is not tried";
    EXPECT_TRUE(Has(reporter.reports, 0, QStringLiteral("ModDb/UpdateDBFormat")));
    EXPECT_TRUE(Has(reporter.reports, 0, QStringLiteral("locked")));
    // The program goes on with the format that it finds.
    EXPECT_TRUE(GetRsIdxdFolders());

    holder->gConnection.reset();
    reporter.answers = {[&] {
        lock.reset();
        return true;
    }};
    OpenConn();
    EXPECT_EQ(reporter.reports.size(), 2);
}

TEST_F(OpenConnTest, StatementsOfOthersFailWithTheirWords) {
    reporter.answers = {[] {
        DbExecute(QStringLiteral("CREATE TABLE late(x)"));
        return true;
    }};
    DbExecute(QStringLiteral("INSERT INTO late VALUES(1)"));
    ASSERT_EQ(reporter.reports.size(), 1);
    EXPECT_TRUE(Has(reporter.reports, 0, QStringLiteral("no such table: late")));
    EXPECT_EQ(Count("late"), 1) << "Retry ran the statement again";
    EXPECT_FALSE(GetRs(QStringLiteral("SELECT nonsense")));
    EXPECT_EQ(reporter.reports.size(), 2);
}

} // namespace
