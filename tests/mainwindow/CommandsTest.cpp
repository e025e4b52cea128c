// The commands of the main window, and what the file list shows.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/Commands.h"
#include "core/Messages.h"
#include "mainwindow/FileOrder.h"
#include "mainwindow/FolderFiles.h"
#include "mainwindow/UpdateFileIndex.h"
#include "tests/indexing/IndexingFixture.h"

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class CommandsTest : public IndexingTest {
  protected:
    static QStringList Names(const FolderContent& content) {
        QStringList names;
        for (const FileRow& row : content.rows) {
            names << row.name;
        }
        return names;
    }
};

TEST_F(CommandsTest, EveryKeyOfABarIsACommandWithAnAccessKeyOfItsOwn) {
    for (const qint32 locale : {0, 1031, 1034, 1036, 1040}) {
        program->gLocaleId = locale;
        for (const QString& bar :
             {u"MENU"_s, u"FILEMENU"_s, u"EDITMENU"_s, u"TOOLSMENU"_s, u"INFOMENU"_s,
              u"POPUPMENU"_s, u"MNUOTHERSEARCHES"_s, u"STD"_s}) {
            QSet<QChar> used;
            int commands = 0;
            for (const QString& key : KeysOfBar(bar)) {
                if (key.isEmpty()) {
                    continue;
                }
                ++commands;
                const Command* command = FindCommand(key);
                ASSERT_TRUE(command) << key.toStdString();
                const QString caption = WithAccessKey(GetMessage(command->caption), used);
                EXPECT_EQ(caption.count(u'&'), 1) << caption.toStdString();
            }
            EXPECT_GT(commands, 1);
            if (bar != u"STD") {
                EXPECT_EQ(used.size(), commands) << bar.toStdString() << locale;
            }
        }
    }
    EXPECT_FALSE(FindCommand(u"NOSUCHKEY"_s));
}

TEST_F(CommandsTest, OfAScannedDocumentTheFolderOfItsTextIsIndexed) {
    const RecordSetPtr rows = GetRsOcrFile({}, {});
    rows->AddNew();
    rows->Fields(u"spath").SetValue(u"\\A"_s);
    rows->Fields(u"sfilename").SetValue(u"SCAN.TIF"_s);
    rows->Fields(u"suser").SetValue(Program().gUserKey);
    rows->UpdateBatch();
    const QString id = rows->Fields(u"i_id").Text();
    const auto paths = [](const QString& item, bool isFile = true) {
        return UpdateFileIndex(item, isFile).Items();
    };
    EXPECT_EQ(paths(u"\\A\\scan.tif"_s),
              QStringList{platform::Capitals(ArchiveIndexPath() + u"\\ocr\\1\\"_s + id)});
    EXPECT_EQ(paths(u"\\A\\other.tif"_s), QStringList());
    EXPECT_EQ(paths(u"\\A\\x.txt"_s), QStringList{u"\\A\\X.TXT"_s});
    EXPECT_EQ(paths(u"\\A"_s, false), QStringList{u"\\A"_s});
}

TEST_F(CommandsTest, AFolderIsListedWithItsSubFoldersFirst) {
    for (const char* name : {"file10.txt", "File9.txt", "b/x", "a10/x", "A9/x", ".hidden"}) {
        WriteFile(Docs(QString::fromLatin1(name)), "x");
    }
    WriteFile(Docs(u"big.txt"_s), QByteArray(10'000, 'x'));
    FolderContent content = ReadFolder(LogicalDocs());
    EXPECT_EQ(Names(content), QStringList({u"A9"_s, u"a10"_s, u"b"_s, u"big.txt"_s, u"File9.txt"_s,
                                           u"file10.txt"_s}));
    SortRows(content.rows, FileColumn::Size, true);
    EXPECT_EQ(Names(content).mid(3), QStringList({u"big.txt"_s, u"File9.txt"_s, u"file10.txt"_s}));
    EXPECT_TRUE(content.rows.front().isFolder);
    EXPECT_FALSE(ReadFolder(LogicalDocs(u"gone"_s)).exists);
}

TEST_F(CommandsTest, SizesAreShownInTheirUnit) {
    EXPECT_EQ(SizeText(0), u"0 b"_s);
    EXPECT_EQ(SizeText(999), u"999 b"_s);
    EXPECT_EQ(SizeText(1000), u"0.98 Kb"_s);
    EXPECT_EQ(SizeText(1024), u"1 Kb"_s);
    EXPECT_EQ(SizeText(1536), u"1.5 Kb"_s);
    EXPECT_EQ(SizeText(1'000'000), u"976.56 Kb"_s);
    EXPECT_EQ(SizeText(1'000'001), u"0.95 Mb"_s);
    EXPECT_EQ(SizeText(20LL * 1024 * 1024 * 1024), u"20480 Mb"_s);
    program->gLocaleId = 1031;
    EXPECT_EQ(SizeText(1536), u"1,5 Kb"_s);
}

} // namespace
} // namespace velmora
