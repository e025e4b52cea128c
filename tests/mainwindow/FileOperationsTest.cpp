// File operations on real folders, with real rows before and after.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "FileOperationsFixture.h"
#include "core/Events.h"
#include "mainwindow/FileMessageIds.h"
#include "mainwindow/FileProgress.h"
#include "mainwindow/NameFile.h"

#include <QMimeData>
#include <QSysInfo>
#include <cerrno>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

TEST_F(FileOperationsTest, ARenamedDocumentKeepsItsRows) {
    AddDocument(u"one.tif"_s);
    EXPECT_TRUE(operations.lvwFiles_AfterLabelEdit(Logical(u"one.tif"_s), u"it's \"two\".tif"_s));
    EXPECT_EQ(BytesOf(Docs(u"it's \"two\".tif"_s)), "content");
    EXPECT_EQ(Rows(u"it's \"two\".tif"_s), 3);
    EXPECT_EQ(Rows(u"one.tif"_s), 0);
    // A change of case alone is a change on the disk, and none for the rows.
    EXPECT_TRUE(
        operations.lvwFiles_AfterLabelEdit(Logical(u"it's \"two\".tif"_s), u"IT'S \"two\".tif"_s));
    EXPECT_TRUE(QFile::exists(Docs(u"IT'S \"two\".tif"_s)));
    EXPECT_EQ(Rows(u"it's \"two\".tif"_s), 3);

    // Folders: the documents directly in it, no deeper ones.
    AddDocument(u"Sub/a.tif"_s);
    AddDocument(u"Sub/Deep/b.tif"_s);
    EXPECT_TRUE(operations.lvwFiles_AfterLabelEdit(Logical(u"Sub"_s), u"New"_s));
    EXPECT_EQ(Rows(u"New/a.tif"_s), 3);
    EXPECT_EQ(Rows(u"New/Deep/b.tif"_s), 0);
    EXPECT_EQ(Rows(u"Sub/Deep/b.tif"_s), 3);
    EXPECT_TRUE(operations.treFolders_AfterLabelEdit(Logical(u"New"_s), u"Newer"_s));
    EXPECT_EQ(Rows(u"Newer/a.tif"_s), 3);
    EXPECT_TRUE(dialogue.told.isEmpty() && reporter.reports.isEmpty());
}

TEST_F(FileOperationsTest, RefusedNamesKeepTheOldOne) {
    AddDocument(u"one.tif"_s);
    AddDocument(u"two.tif"_s, "two");
    for (const QString& name : {u"a?"_s, u"a/b"_s, u"a\\b"_s, u"a:b"_s, u".."_s, u""_s}) {
        dialogue.told.clear();
        EXPECT_FALSE(operations.lvwFiles_AfterLabelEdit(Logical(u"one.tif"_s), name));
        EXPECT_EQ(dialogue.told, QStringList{Told(194, 99)}) << name.toStdString();
    }
    dialogue.told.clear();
    EXPECT_FALSE(operations.lvwFiles_AfterLabelEdit(Logical(u"one.tif"_s), u"two.tif"_s));
    ASSERT_EQ(dialogue.told.size(), 1);
    EXPECT_TRUE(dialogue.told[0].contains(u"two.tif"_s));
    // A twin that differs by case does not stand in for what is gone.
    EXPECT_FALSE(operations.lvwFiles_AfterLabelEdit(Logical(u"ONE.tif"_s), u"three.tif"_s));
    EXPECT_EQ(BytesOf(Docs(u"one.tif"_s)) + BytesOf(Docs(u"two.tif"_s)), "contenttwo");
    EXPECT_EQ(Rows(u"one.tif"_s) + Rows(u"two.tif"_s), 6);
}

TEST_F(FileOperationsTest, ANewFolderGetsTheFirstFreeName) {
    const QString base = GetMessage(202);
    EXPECT_EQ(operations.NewFolder(Logical()), Logical(base));
    WriteFile(Docs(GetMessage(203) + u"2)"_s), "a file in the way");
    EXPECT_EQ(operations.NewFolder(Logical()), Logical(GetMessage(203) + u"3)"_s));
    EXPECT_TRUE(QFileInfo(Docs(base)).isDir());
    EXPECT_EQ(operations.NewFolder(Logical(u"gone"_s)), QString());
    EXPECT_EQ(dialogue.told, QStringList{Told(330, 99, Icon::Critical)});
}

TEST_F(FileOperationsTest, IndexedFoldersAndTheRootAreProtected) {
    const RecordSetPtr rows = GetRsIdxdFolders();
    rows->AddNew();
    rows->Fields(u"spath").SetValue(platform::Capitals(Logical()));
    rows->Fields(u"suser").SetValue(program->gUserKey);
    rows->UpdateBatch();
    const FileSelection root{true, NodeKind::Root, {Logical()}};
    const FileSelection indexed{true, NodeKind::Indexed, {Logical()}};
    EXPECT_FALSE(operations.DeleteFileOrFolder(root).done);
    EXPECT_FALSE(operations.CopyToClipboard(root, false));
    EXPECT_TRUE(dialogue.told.isEmpty());
    EXPECT_FALSE(operations.DeleteFileOrFolder(indexed).done);
    EXPECT_FALSE(operations.CopyToClipboard(indexed, true));
    EXPECT_EQ(dialogue.told, QStringList({Told(139, 98), Told(137, 98)}));
    EXPECT_FALSE(operations.ClipboardFull());
    // Neither a drop nor a paste from outside takes it, or a folder above it, away.
    dialogue.told.clear();
    QDir().mkpath(ThePlace().Path("home", u"elsewhere"_s));
    const QString elsewhere = ThePlace().Logical("home", u"elsewhere"_s);
    EXPECT_FALSE(operations.Drop({{Logical()}, true}, elsewhere).done);
    EXPECT_EQ(dialogue.told, QStringList{Told(135, 119)});
    EXPECT_TRUE(QFileInfo(Docs()).isDir());
    // A sub-folder can be deleted.
    dialogue.answers = {Answer::Yes};
    EXPECT_TRUE(operations.DeleteFileOrFolder({true, NodeKind::Below, {Logical(u"Sub"_s)}}).done);
    EXPECT_FALSE(QFile::exists(Docs(u"Sub"_s)));
}

TEST_F(FileOperationsTest, DeletingGoesToTheTrashAndLeavesTheRows) {
    AddDocument(u"one.tif"_s);
    const FileSelection selection{false, NodeKind::Below, {Logical(u"one.tif"_s)}};
    EXPECT_FALSE(operations.DeleteFileOrFolder(selection).done); // No
    EXPECT_TRUE(QFile::exists(Docs(u"one.tif"_s)));
    dialogue.answers = {Answer::Yes};
    EXPECT_EQ(operations.DeleteFileOrFolder(selection).removed, selection.paths);
    EXPECT_EQ(BytesOf(ThePlace().Path("home", u"data/Trash/files/one.tif"_s)), "content");
    EXPECT_EQ(Rows(u"one.tif"_s), 3);
    // Gone already: told, and skipped.
    dialogue.answers = {Answer::Yes};
    shell.script.problemAnswers = {{platform::ProblemChoice::Skip, false}};
    EXPECT_TRUE(operations.DeleteFileOrFolder(selection).removed.isEmpty());
    ASSERT_EQ(shell.script.problems.size(), 1u);
    EXPECT_EQ(shell.script.problems[0].error.code, ENOENT);
    EXPECT_EQ(shell.ended, shell.works.size());
}

TEST_F(FileOperationsTest, PastingCopiesWithoutRowsAndMovesWithThem) {
    AddDocument(u"one.tif"_s);
    AddDocument(u"Sub/two.tif"_s);
    EXPECT_FALSE(operations.PasteClipboard(Logical(u"Other"_s)).done); // empty: nothing
    EXPECT_TRUE(operations.CopyToClipboard(
        {false, NodeKind::Below, {Logical(u"one.tif"_s), Logical(u"Sub"_s)}}, false));
    EXPECT_TRUE(operations.ClipboardFull());
    EXPECT_TRUE(operations.CutPaths().isEmpty());
    EXPECT_TRUE(operations.PasteClipboard(Logical(u"Other"_s)).done);
    EXPECT_EQ(BytesOf(Docs(u"Other/Sub/two.tif"_s)), "content");
    EXPECT_EQ(Rows(u"Other/one.tif"_s) + Rows(u"Other/Sub/two.tif"_s), 0);
    EXPECT_EQ(Rows(u"one.tif"_s) + Rows(u"Sub/two.tif"_s), 6);
    EXPECT_TRUE(operations.ClipboardFull());

    EXPECT_TRUE(QDir(Docs(u"Other"_s)).removeRecursively() && QDir().mkpath(Docs(u"Other"_s)));
    EXPECT_TRUE(operations.CopyToClipboard(
        {false, NodeKind::Below, {Logical(u"one.tif"_s), Logical(u"Sub"_s)}}, true));
    EXPECT_EQ(operations.CutPaths().size(), 2);
    const OperationOutcome outcome = operations.PasteClipboard(Logical(u"Other"_s));
    EXPECT_EQ(outcome.removed.size(), 2);
    EXPECT_EQ(Rows(u"Other/one.tif"_s) + Rows(u"Other/Sub/two.tif"_s), 6);
    EXPECT_FALSE(QFile::exists(Docs(u"Sub"_s)));
    EXPECT_FALSE(operations.ClipboardFull());
    EXPECT_EQ(shell.works, std::vector<ShellWork>({ShellWork::Copy, ShellWork::Move}));

    clipboard.elsewhere = {u"smb://server/x"_s};
    EXPECT_FALSE(operations.PasteClipboard(Logical(u"Other"_s)).done);
    EXPECT_TRUE(dialogue.told.last().contains(u"smb://server/x"_s));
}

TEST_F(FileOperationsTest, RowsFollowWhatReallyMovedEvenAfterACancel) {
    for (const char* name : {"a.tif", "b.tif", "c.tif"}) {
        AddDocument(u"Sub/"_s + QLatin1StringView(name), "new");
    }
    QDir().mkpath(Docs(u"Other/Sub"_s));
    WriteFile(Docs(u"Other/Sub/b.tif"_s), "old");
    // Merge; cancelled at b, when a has moved.
    shell.script.conflictAnswers = {{platform::ConflictChoice::Replace, false},
                                    {platform::ConflictChoice::Cancel, false}};
    EXPECT_TRUE(operations.Drop({{Logical(u"Sub"_s)}, true}, Logical(u"Other"_s)).done);
    EXPECT_EQ(Rows(u"Other/Sub/a.tif"_s), 3);
    EXPECT_EQ(Rows(u"Sub/b.tif"_s) + Rows(u"Sub/c.tif"_s), 6);
    // Kept beside: the rows go to the new name.
    shell.script.conflictAnswers = {{platform::ConflictChoice::Replace, false},
                                    {platform::ConflictChoice::KeepBoth, false}};
    operations.Drop({{Logical(u"Sub"_s)}, true}, Logical(u"Other"_s));
    EXPECT_EQ(Rows(u"Other/Sub/b (2).tif"_s) + Rows(u"Other/Sub/c.tif"_s), 6);
    EXPECT_EQ(BytesOf(Docs(u"Other/Sub/b.tif"_s)), "old");
    EXPECT_FALSE(QFile::exists(Docs(u"Sub"_s)));
}

TEST_F(FileOperationsTest, DropsThatCannotBeAreRefused) {
    const FileList sub{{Logical(u"Sub"_s)}, true};
    EXPECT_FALSE(FileOperations::CanDrop(sub, Logical(u"Sub/Deep"_s)));
    EXPECT_FALSE(operations.Drop(sub, Logical(u"Sub/Deep"_s)).done);
    EXPECT_FALSE(operations.Drop(sub, {}, true).done);
    EXPECT_EQ(dialogue.told, QStringList({Told(135, 119), Told(135, 119)}));
    EXPECT_TRUE(QFileInfo(Docs(u"Sub/Deep"_s)).isDir());
    EXPECT_TRUE(FileOperations::CanDrop(sub, Logical(u"Other"_s)));
}

TEST_F(FileOperationsTest, CancelAtTheWindowStopsTheWorkAndASecondOneDoesNotBegin) {
    WriteFile(Docs(u"big"_s), QByteArray(64 << 20, 'b'));
    WriteFile(Docs(u"small"_s), "s");
    bool tried = false;
    ScopedYield yield([&] {
        if (operations.IsBusy() && !std::exchange(tried, true)) {
            EXPECT_FALSE(operations.Drop({{Logical(u"small"_s)}, true}, Logical(u"Sub"_s)).done);
            EXPECT_FALSE(operations.lvwFiles_AfterLabelEdit(Logical(u"small"_s), u"x"_s));
            shell.cancelled = true;
        }
    });
    operations.Drop({{Logical(u"big"_s), Logical(u"small"_s)}, false}, Logical(u"Other"_s));
    EXPECT_TRUE(tried);
    EXPECT_FALSE(operations.IsBusy());
    EXPECT_TRUE(QDir(Docs(u"Other"_s)).entryList(QDir::Files | QDir::Hidden).size() <= 2);
    EXPECT_TRUE(QFile::exists(Docs(u"small"_s)));
    EXPECT_EQ(shell.ended, 1u);
}

TEST_F(FileOperationsTest, ListsOfFilesTravelInTheDesktopsFormats) {
    const QByteArray odd = ThePlace().Path("home").toUtf8() + "/b\xE4r\n100% #'\"";
    const QString path = platform::ToLogical(platform::DecodeName(odd));
    for (const bool move : {false, true}) {
        const auto data = ToMimeData({{path, Logical()}, move});
        EXPECT_TRUE(HasFileList(*data));
        EXPECT_TRUE(data->data(u"text/uri-list"_s).contains("b%E4r%0A100%25%20%23"));
        EXPECT_EQ(data->data(u"x-special/gnome-copied-files"_s).left(3), move ? "cut" : "cop");
        EXPECT_EQ(data->data(u"application/x-kde-cutselection"_s), move ? "1" : "0");
        const FileList back = FromMimeData(*data);
        EXPECT_EQ(back.paths, QStringList({path, Logical()}));
        EXPECT_EQ(back.move, move);
    }
    QMimeData foreign;
    QStringList elsewhere;
    foreign.setData(u"text/uri-list"_s, "# comment\r\nsmb://server/x\r\nfile://other.host/a\r\n"
                                        "file:/home/a\r\nfile://localhost/home/b/\r\n"
                                        "file:///home/%00\r\nfile:///home/a\r\n");
    EXPECT_EQ(FromMimeData(foreign, &elsewhere).paths,
              QStringList({u"\\home\\a"_s, u"\\home\\b"_s}));
    EXPECT_EQ(elsewhere.size(), 3);
    EXPECT_FALSE(HasFileList(QMimeData()));
}

TEST_F(FileOperationsTest, ADocumentsNameFollowsTheRules) {
    WriteFile(Docs(u"Taken.TIF"_s), "x");
    EXPECT_EQ(CheckedFileName(u"report"_s, Logical()), u"report.TIF"_s);
    EXPECT_EQ(CheckedFileName(u"report.tif"_s, Logical()), u"report.tif"_s);
    EXPECT_TRUE(dialogue.told.isEmpty());
    EXPECT_EQ(CheckedFileName(u"taken"_s, Logical()), QString());
    EXPECT_EQ(CheckedFileName(u"  "_s, Logical()), QString());
    EXPECT_EQ(CheckedFileName(u"a&b"_s, Logical()), QString());
    EXPECT_EQ(CheckedFileName(QString(250, u'n'), Logical()), QString());
    EXPECT_EQ(dialogue.told,
              QStringList({Told(193, 88), Told(88, 115), Told(88, 115), Told(88, 115)}));
}

TEST_F(FileOperationsTest, ProgressIsToldInFigures) {
    RateMeter rate;
    for (int second = 0; second <= 20; ++second) {
        rate.Add(second < 10 ? 0 : (second - 9) * 1'048'576LL, second * 1000);
    }
    EXPECT_NEAR(static_cast<double>(rate.BytesPerSecond().value()), 1'048'576, 10);
    platform::CarryProgress now;
    now.bytes = 10 << 20;
    now.totalBytes = 130 << 20;
    now.totalFiles = 4;
    EXPECT_EQ(RateText(now, rate), GetMessage(kBytesPerTime, {u"1 Mb"_s}) + u", "_s +
                                       GetMessage(kMinutesLeft, {u"2"_s}));
    EXPECT_EQ(ProgressPart(now), 76);
    now.counting = true;
    EXPECT_EQ(ProgressPart(now), std::nullopt);
    EXPECT_EQ(RateText(now, RateMeter()), QString());
    EXPECT_EQ(OneLine(u"a\nb\u202Egpj"_s), u"a\uFFFDb\uFFFDgpj"_s);
}

} // namespace
} // namespace velmora
