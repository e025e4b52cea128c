// The database of a new archive: all of its schema, and how it comes into its folder.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "StoreFixture.h"

using namespace velmora;

namespace {

using TemplateTest = StoreTest;

// One line a table: name, columns in order, indexes by name.
std::string Schema(sqlite::Database& database) {
    sqlite::Statement tables(database, "SELECT name FROM sqlite_schema WHERE type='table' AND name "
                                       "NOT LIKE 'sqlite!_%' ESCAPE '!' ORDER BY rowid");
    std::string schema;
    while (tables.Step()) {
        const std::string table(tables.Text(0));
        schema += table + ":";
        sqlite::Statement columns(
            database, "SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info(?1)");
        columns.Bind(1, table);
        while (columns.Step()) {
            schema += " " + std::string(columns.Text(0)) + " " + std::string(columns.Text(1));
            schema += columns.IsNull(3) ? "" : " DEFAULT";
            schema += columns.Int(4) > 0 ? " KEY," : columns.Int(2) != 0 ? " REQUIRED," : ",";
        }
        sqlite::Statement indexes(
            database, "SELECT l.name, l.\"unique\", group_concat(i.name, '+') FROM "
                      "pragma_index_list(?1) l, pragma_index_info(l.name) i WHERE l.origin='c' "
                      "GROUP BY l.name ORDER BY l.name");
        indexes.Bind(1, table);
        while (indexes.Step()) {
            schema += " " + std::string(indexes.Text(0)) + "(" + std::string(indexes.Text(2)) +
                      (indexes.Int(1) != 0 ? " unique)" : ")");
        }
        schema += "\n";
    }
    return schema;
}

TEST_F(TemplateTest, HasExactlyTheTablesOfAnArchive) {
    CreateDatabase(Program().gArchivePath);
    sqlite::Database database = Beside();
    EXPECT_EQ(
        Schema(database),
        "TblIdxdFolders: SDESCR TEXT(255), SPATH TEXT(255), SICONID TEXT(10), I_ID INTEGER KEY, "
        "SUSER TEXT(255), TblIdxdFolders_I_ID(I_ID)\n"
        "tblOcrFiles: i_id INTEGER KEY, spath TEXT(255), sfilename TEXT(255), shash TEXT(64), "
        "SUSER TEXT(255), tblOcrFiles_filenameidx(sfilename) tblOcrFiles_pathidx(spath+sfilename) "
        "tblOcrFiles_uniqueIDX(spath+sfilename unique)\n"
        "TblAnnotationFiles: i_id INTEGER KEY, spath TEXT(255), sfilename TEXT(255), "
        "suser TEXT(255), TblAnnotationFiles_filenameidx(sfilename) "
        "TblAnnotationFiles_pathidx(spath+sfilename)\n"
        "TblTextAnnotation: I_IDFILE INT KEY, STESTO TEXT(255), SHASH TEXT(50) KEY, "
        "SUSER TEXT(255),\n"
        "TblFieldsDefs: i_id INTEGER KEY, sdescr TEXT(50), itype INT, ilenght INT, "
        "sdefaultvalue TEXT, sfieldname TEXT(20), suser TEXT(255), TblFieldsDefs_i_id(i_id)\n"
        "TblDocFields: i_id INTEGER KEY, TESTO TEXT(50), spath TEXT(255), sfilename TEXT(255), "
        "suser TEXT(255), TblDocFields_i_id(i_id)\n"
        "TblScannerSetting: ScannerName TEXT(50), ShowUI TEXT(50), ADF TEXT(50), "
        "Resolutions TEXT(50), PixelType TEXT(50), PageWidth TEXT(50), PageHeight TEXT(50), "
        "suser TEXT(255),\n"
        "TblMailFolders: i_id INTEGER KEY, sentryid TEXT(255), suser TEXT(255), sstoreid TEXT, "
        "TblMailFolders_i_id(i_id) TblMailFolders_sentryid(sentryid) "
        "TblMailFolders_sstoreid(sstoreid)\n"
        "TblMailConfigs: i_id INTEGER KEY, suser TEXT(255), iclient INT, smailpath TEXT(255), "
        "sidentities TEXT(50), TblMailConfigs_i_id(i_id)\n");
    EXPECT_EQ(database.ReadPragma("journal_mode"), "delete");
    EXPECT_EQ(database.ReadPragma("integrity_check"), "ok");
    // Every text compares without case, wherever it stands.
    EXPECT_EQ(sqlite::QueryInt64(database,
                                 "SELECT count(*) FROM sqlite_schema WHERE type='table' AND sql "
                                 "GLOB '*TEXT(*' AND replace(sql, ') COLLATE UNICODE_NOCASE', '') "
                                 "GLOB '*TEXT([0-9]*'"),
              9);
    EXPECT_EQ(sqlite::QueryInt64(database, "SELECT count(*) FROM sqlite_schema WHERE type='table' "
                                           "AND sql GLOB '*TEXT([0-9]*) [^C]*'"),
              0);
}

TEST_F(TemplateTest, StandsInItsFolderWithTheIndexesBesideIt) {
    CreateDatabase(Program().gArchivePath + u'\\');
    EXPECT_THAT(QDir(Folder()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                testing::UnorderedElementsAre(QStringLiteral("db.mdb"), QStringLiteral("indexes")));
    // Other users of a shared archive must reach it, as far as this user's mask lets them.
    EXPECT_TRUE(QFile::permissions(File(QStringLiteral("db.mdb"))) & QFile::ReadOwner);
}

TEST_F(TemplateTest, NeverTouchesADatabaseThatIsThere) {
    for (const char16_t* name : {u"db.mdb", u"DB.MDB"}) {
        QFile file(File(QString::fromUtf16(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("mine");
        file.close();
        EXPECT_EQ(NumberOf([&] { CreateDatabase(Program().gArchivePath); }), kDatabaseExists);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), QByteArray("mine"));
        file.remove();
    }
}

TEST_F(TemplateTest, TellsWhyItCannotBeMadeAndCanBeRepeated) {
    EXPECT_EQ(NumberOf([&] { CreateDatabase(Program().gArchivePath + QStringLiteral("\\none")); }),
              kFolderMissing);
    // A file in the way of the folder "indexes".
    QFile obstacle(File(QStringLiteral("indexes")));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    obstacle.close();
    EXPECT_EQ(NumberOf([&] { CreateDatabase(Program().gArchivePath); }), kFolderNotMade);
    EXPECT_FALSE(QFile::exists(File(QStringLiteral("db.mdb"))));
    obstacle.remove();
    CreateDatabase(Program().gArchivePath);
    EXPECT_EQ(Count("tblOcrFiles"), 0);
}

} // namespace
