// Every operation of the data layer: its forms, its scope, and names that make trouble.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "StoreFixture.h"

using namespace velmora;

namespace {

class ModDbTest : public ArchiveTest {
  protected:
    ~ModDbTest() override { EXPECT_EQ(reporter.reports, QStringList()); }

    static void AddFolder(const QString& path, const QString& user = Program().gUserKey) {
        Add(QStringLiteral("tblIdxdFolders"),
            {{QStringLiteral("spath"), path}, {QStringLiteral("suser"), user}});
    }
    // Values of one column, in order, with "|" between them.
    std::string All(const std::string& column, const std::string& from) const {
        return Text("SELECT coalesce(group_concat(v, '|'), '') FROM (SELECT " + column +
                    " AS v FROM " + from + ")");
    }
    std::string Folders() const { return All("spath", "TblIdxdFolders ORDER BY spath"); }
    static QString Values(RecordSet& rs, QStringView field) {
        QStringList values;
        for (; !rs.EOF_(); rs.MoveNext()) {
            values << rs.Fields(field).Text();
        }
        return values.join(u'|');
    }
    void MakeTextAnnotation(int file, const char16_t* text, const char16_t* hash,
                            const QString& user = Program().gUserKey) const {
        Add(QStringLiteral("tblTextAnnotation"),
            {{QStringLiteral("i_idfile"), file},
             {QStringLiteral("stesto"), QString::fromUtf16(text)},
             {QStringLiteral("shash"), QString::fromUtf16(hash)},
             {QStringLiteral("suser"), user}});
    }
};

const QString kOther = QStringLiteral("DOMAIN.OTHER");

TEST_F(ModDbTest, FoldersAreTheUsersOwn) {
    AddFolder(QStringLiteral("\\A"));
    AddFolder(QStringLiteral("\\B"), kOther);
    EXPECT_EQ(Values(*GetRsIdxdFolders(), u"SPATH"), QStringLiteral("\\A"));
    globals->gUserKey = QStringLiteral("domain.d'ève");
    EXPECT_EQ(GetRsIdxdFolders()->RecordCount(), 1) << "the key compares without case";
}

TEST_F(ModDbTest, DeleteFoldersByIdTakesOneRowOfThisUser) {
    AddFolder(QStringLiteral("\\A"));
    AddFolder(QStringLiteral("\\A\\B"));
    AddFolder(QStringLiteral("\\C"), kOther);
    DeleteFolders(QStringLiteral("ignored"), 3);
    EXPECT_EQ(Folders(), "\\A|\\A\\B|\\C") << "another user's";
    DeleteFolders(QStringLiteral("ignored"), 1);
    EXPECT_EQ(Folders(), "\\A\\B|\\C");
}

TEST_F(ModDbTest, DeleteFoldersByPathTakesAllThatBeginsLikeIt) {
    for (const char16_t* path : {u"\\È'S", u"\\È'S\\SUB", u"\\È'SNEIGHBOUR", u"\\X\\È'S", u"\\A_B",
                                 u"\\AXB", u"\\A%", u"\\AB%C"}) {
        AddFolder(QString::fromUtf16(path));
    }
    AddFolder(QStringLiteral("\\È'S"), kOther);
    DeleteFolders(QStringLiteral("\\è's"), 0);
    EXPECT_EQ(Folders(), "\\A%|\\A_B|\\AB%C|\\AXB|\\X\\È'S|\\È'S") << "and the neighbour goes too";
    DeleteFolders(QStringLiteral("\\a_b"), 0);
    DeleteFolders(QStringLiteral("\\a%"), 0);
    EXPECT_EQ(Folders(), "\\AB%C|\\AXB|\\X\\È'S|\\È'S") << "no character is a wildcard";
    AddFolder(QStringLiteral("\\D"));
    AddFolder(QStringLiteral("\\D\\E"));
    DeleteFolders(QStringLiteral("\\D\\"), 0);
    EXPECT_EQ(Folders(), "\\AB%C|\\AXB|\\D|\\X\\È'S|\\È'S") << "what is below, not the folder";
}

// OCR and annotation rows are read by the same three forms.
void CheckThreeForms(
    const QString& table, RecordSetPtr (*read)(const QString& path, const QString& name),
    const std::function<void(const QString&, const QString&, const QString&)>& add) {
    SCOPED_TRACE(table.toStdString());
    const QString me = Program().gUserKey;
    add(QStringLiteral("\\DOCS\\L'ÉTÉ"), QStringLiteral("STRASSE.TIF"), me);
    add(QStringLiteral("\\DOCS\\L'ÉTÉ"), QStringLiteral("ΣΑΣ.TIF"), me);
    add(QStringLiteral("\\DOCS\\L'ÉTÉ\\SUB"), QStringLiteral("X.TIF"), me);
    add(QStringLiteral("\\DOCS\\L'ÉTÉ"), QStringLiteral("OTHER.TIF"), kOther);
    const auto names = [&](const char16_t* path, const char16_t* name) {
        const RecordSetPtr rs = read(QString::fromUtf16(path), QString::fromUtf16(name));
        QStringList found;
        for (; !rs->EOF_(); rs->MoveNext()) {
            found << rs->Fields(u"SFILENAME").Text();
        }
        found.sort();
        return found.join(u'|');
    };
    EXPECT_EQ(names(u"", u""), QStringLiteral("STRASSE.TIF|X.TIF|ΣΑΣ.TIF"));
    EXPECT_EQ(names(u"", u"X.TIF"), QStringLiteral("STRASSE.TIF|X.TIF|ΣΑΣ.TIF"))
        << "without a path the name is not looked at";
    EXPECT_EQ(names(u"\\docs\\l'été", u"straße.tif"), QStringLiteral("STRASSE.TIF"));
    EXPECT_EQ(names(u"\\docs\\l'été\\", u"σας.tif"), QStringLiteral("ΣΑΣ.TIF"));
    EXPECT_EQ(names(u"\\docs\\l'été", u""), QStringLiteral("STRASSE.TIF|ΣΑΣ.TIF"));
    EXPECT_EQ(names(u"\\docs\\l'ete", u""), QString()) << "accents count";
    EXPECT_EQ(names(u"\\DOCS\\L'ÉTÉ", u"OTHER.TIF"), QString());
}

TEST_F(ModDbTest, DocumentsAreReadInThreeForms) {
    for (const auto& [table, read] :
         {std::pair(QStringLiteral("tblOcrFiles"), &GetRsOcrFile),
          {QStringLiteral("tblAnnotationFiles"), &GetRsAnnotationFile}}) {
        CheckThreeForms(
            table, read,
            [&table = table](const QString& path, const QString& name, const QString& user) {
                AddDocument(table, path, name, user);
            });
    }
}

TEST_F(ModDbTest, TextAnnotationsByFileAndTheirDeletion) {
    MakeTextAnnotation(1, u"", u"aa");
    MakeTextAnnotation(1, u"text", u"bb");
    MakeTextAnnotation(2, u"text", u"bb");
    MakeTextAnnotation(1, u"", u"cc", kOther);
    EXPECT_EQ(Values(*GetRsTextAnnotation(1), u"shash"), QStringLiteral("aa|bb"));
    DeleteTextAnnotation(QStringLiteral("bb"), true); // the flag: empty texts, whatever the hash
    EXPECT_EQ(All("i_idfile || shash", "TblTextAnnotation ORDER BY 1"), "1bb|1cc|2bb");
    DeleteTextAnnotation(QStringLiteral("bb"), false);
    EXPECT_EQ(All("i_idfile || shash", "TblTextAnnotation"), "1cc");
}

TEST_F(ModDbTest, AnnotationSearchFindsEachDocumentOnce) {
    const int file = static_cast<int>(AddDocument(QStringLiteral("tblAnnotationFiles"),
                                                  QStringLiteral("\\A"), QStringLiteral("B.TIF")));
    MakeTextAnnotation(file, u"Die Straße, 50% off", u"aa");
    MakeTextAnnotation(file, u"die STRASSE noch einmal", u"bb");
    MakeTextAnnotation(file + 1, u"Straße ohne Datei", u"aa");
    const auto found = [](const char16_t* text) {
        return GetRsAnnotationSearch(QString::fromUtf16(text))->RecordCount();
    };
    EXPECT_EQ(found(u"strasse"), 1);
    EXPECT_EQ(Values(*GetRsAnnotationSearch(QStringLiteral("STRAßE")), u"sfilename"),
              QStringLiteral("B.TIF"));
    EXPECT_EQ(found(u"50% o"), 1);
    EXPECT_EQ(found(u"5_%"), 0);
    EXPECT_EQ(found(u"d'or"), 0);
    EXPECT_EQ(found(u""), 1);
    globals->gUserKey = kOther;
    EXPECT_EQ(found(u"strasse"), 0);
}

TEST_F(ModDbTest, MailAndScannerRowsAreTheUsersOwn) {
    for (const QString& user : {Program().gUserKey, kOther}) {
        Add(QStringLiteral("tblMailFolders"), {{QStringLiteral("sentryid"), QStringLiteral("E")},
                                               {QStringLiteral("sstoreid"), QString(3000, u'S')},
                                               {QStringLiteral("suser"), user}});
        Add(QStringLiteral("tblMailConfigs"),
            {{QStringLiteral("iclient"), 2}, {QStringLiteral("suser"), user}});
        Add(QStringLiteral("tblScannerSetting"),
            {{QStringLiteral("ADF"), QStringLiteral("1")}, {QStringLiteral("suser"), user}});
    }
    EXPECT_EQ(GetRsMailFolder()->RecordCount(), 1);
    EXPECT_EQ(GetRsMailFolder()->Fields(u"sstoreid").Text().size(), 3000);
    EXPECT_EQ(GetRsMailConfig()->Fields(u"iclient").Number(), 2);
    EXPECT_EQ(GetRsMailConfig()->RecordCount(), 1);
    EXPECT_EQ(GetRsScannerSetting()->RecordCount(), 1);
    DeleteAllMailFolders();
    DeleteMailConfig();
    EXPECT_EQ(All("suser", "TblMailFolders"), "DOMAIN.OTHER");
    EXPECT_EQ(All("suser", "TblMailConfigs"), "DOMAIN.OTHER");
}

TEST_F(ModDbTest, StampsBelongToAll) {
    OpenConn();
    Beside().Exec("INSERT INTO tbltimbri(sdescr, i_idparent) VALUES('A', 0),('B', 1),('C', 1)");
    EXPECT_EQ(Values(*GetRsTimbri(-1), u"sdescr"), QStringLiteral("A|B|C"));
    EXPECT_EQ(Values(*GetRsTimbri(0), u"sdescr"), QStringLiteral("A"));
    globals->gUserKey = kOther;
    EXPECT_EQ(Values(*GetRsTimbri(1), u"sdescr"), QStringLiteral("B|C"));
}

class MoveTest : public ModDbTest {
  protected:
    const QStringList kTables{QStringLiteral("tblDocFields"), QStringLiteral("tblOcrFiles"),
                              QStringLiteral("tblAnnotationFiles")};
    void AddToAll(const QString& path, const QString& name,
                  const QString& user = Program().gUserKey) {
        for (const QString& table : kTables) {
            AddDocument(table, path, name, user);
        }
    }
    // Rows of all three tables, which must be alike.
    std::string Rows() const {
        std::string first;
        for (const QString& table : kTables) {
            const std::string rows = All("i_id || ':' || spath || '>' || sfilename",
                                         table.toStdString() + " ORDER BY i_id");
            EXPECT_TRUE(first.empty() || first == rows) << rows;
            first = rows;
        }
        return first;
    }
};

TEST_F(MoveTest, AFileTakesItsRowsAlongAndKeepsItsNumbers) {
    AddToAll(QStringLiteral("\\D'OR"), QStringLiteral("STRASSE.TIF"));
    AddToAll(QStringLiteral("\\D'OR"), QStringLiteral("Y.TIF"));
    AddToAll(QStringLiteral("\\D'OR\\SUB"), QStringLiteral("STRASSE.TIF"));
    DbMoveFile(QStringLiteral("\\d'or\\Straße.tif"), QStringLiteral("\\new'è\\ñame's.tif"), false);
    EXPECT_EQ(Rows(), "1:\\NEW'È>ÑAME'S.TIF|2:\\D'OR>Y.TIF|3:\\D'OR\\SUB>STRASSE.TIF");
    DbMoveFile(QStringLiteral("\\none\\x.tif"), QStringLiteral("\\none\\y.tif"), false);
    EXPECT_EQ(Rows(), "1:\\NEW'È>ÑAME'S.TIF|2:\\D'OR>Y.TIF|3:\\D'OR\\SUB>STRASSE.TIF");
}

TEST_F(MoveTest, AFolderTakesTheRowsDirectlyInIt) {
    AddToAll(QStringLiteral("\\OLD"), QStringLiteral("X.TIF"));
    AddToAll(QStringLiteral("\\OLD\\SUB"), QStringLiteral("X.TIF"));
    AddToAll(QStringLiteral("\\OLDER"), QStringLiteral("X.TIF"));
    AddToAll(QStringLiteral("\\OLD"), QStringLiteral("Z.TIF"), kOther);
    DbMoveFile(QStringLiteral("\\old\\"), QStringLiteral("\\new"), true);
    EXPECT_EQ(Rows(), "1:\\NEW>X.TIF|2:\\OLD\\SUB>X.TIF|3:\\OLDER>X.TIF|4:\\OLD>Z.TIF");
}

TEST_F(MoveTest, AFileInSomeTablesOnlyIsNoFailure) {
    AddDocument(QStringLiteral("tblDocFields"), QStringLiteral("\\A"), QStringLiteral("B.TIF"));
    DbMoveFile(QStringLiteral("\\A\\B.TIF"), QStringLiteral("\\A\\C.TIF"), false);
    EXPECT_EQ(All("sfilename", "tblDocFields"), "C.TIF");
    EXPECT_EQ(Count("tblOcrFiles"), 0);
}

class FailingMoveTest : public MoveTest {
  protected:
    ~FailingMoveTest() override { reporter.reports.clear(); } // expected here
};

TEST_F(FailingMoveTest, AllThreeTablesMoveOrNone) {
    AddToAll(QStringLiteral("\\A"), QStringLiteral("X.TIF"));
    AddDocument(QStringLiteral("tblOcrFiles"), QStringLiteral("\\B"), QStringLiteral("X.TIF"),
                kOther); // in the way of the unique index
    DbMoveFile(QStringLiteral("\\A\\X.TIF"), QStringLiteral("\\B\\X.TIF"), false);
    ASSERT_EQ(reporter.reports.size(), 1);
    EXPECT_TRUE(reporter.reports[0].contains(QStringLiteral("ModDb/DbMoveFile")));
    EXPECT_TRUE(reporter.reports[0].contains(QStringLiteral("already exists")));
    EXPECT_EQ(All("spath", "tblDocFields"), "\\A");

    reporter.answers = {[&] {
        Beside().Exec("DELETE FROM tblOcrFiles WHERE suser = 'DOMAIN.OTHER'");
        return true;
    }};
    DbMoveFile(QStringLiteral("\\A\\X.TIF"), QStringLiteral("\\B\\X.TIF"), false);
    EXPECT_EQ(Rows(), "1:\\B>X.TIF");
}

TEST_F(FailingMoveTest, APathThatNoColumnHoldsIsRefused) {
    AddToAll(QStringLiteral("\\A"), QStringLiteral("X.TIF"));
    DbMoveFile(QStringLiteral("\\A"), u'\\' + QString(255, u'x'), true);
    ASSERT_EQ(reporter.reports.size(), 1);
    EXPECT_TRUE(reporter.reports[0].contains(QStringLiteral("256")));
    EXPECT_EQ(Rows(), "1:\\A>X.TIF");
    DbMoveFile(QStringLiteral("\\A"), u'\\' + QString(254, u'x'), true);
    EXPECT_EQ(reporter.reports.size(), 1);
}

TEST_F(FailingMoveTest, OneOcrRowForADocumentWhoeverMadeIt) {
    AddDocument(QStringLiteral("tblOcrFiles"), QStringLiteral("\\A\\È"), QStringLiteral("ß.TIF"));
    try {
        AddDocument(QStringLiteral("tblOcrFiles"), QStringLiteral("\\a\\è"),
                    QStringLiteral("SS.tif"), kOther);
        FAIL();
    } catch (const Error& error) {
        EXPECT_TRUE(error.Text().contains(QStringLiteral("tblOcrFiles.sfilename")));
    }
    EXPECT_EQ(Count("tblOcrFiles"), 1);
}

TEST_F(ModDbTest, ParentsAndChildrenAmongTheIndexedFolders) {
    AddFolder(QStringLiteral("\\HOME\\DOCS"));
    AddFolder(QStringLiteral("\\HOME\\MAIL"));
    const RecordSetPtr rs = GetRsIdxdFolders();
    rs->MoveLast(); // the walk begins at the first row all the same
    const auto answer = [&](const char16_t* path, const char16_t* expectedFolder) {
        QString folder;
        const int result = IsParentOrChildFolder(QString::fromUtf16(path), *rs, folder);
        EXPECT_EQ(folder, QString::fromUtf16(expectedFolder));
        return result;
    };
    EXPECT_EQ(answer(u"\\home\\mail\\", u"\\HOME\\MAIL"), 3);
    EXPECT_EQ(answer(u"\\home\\docs\\sub", u"\\HOME\\DOCS"), 2);
    EXPECT_EQ(answer(u"\\home", u"\\HOME\\DOCS"), 1);
    EXPECT_EQ(answer(u"\\home\\docs2", u""), 0);
}

} // namespace
