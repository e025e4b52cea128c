// Runs of the index update over real documents, with the real engine and its workers.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Events.h"
#include "core/Messages.h"
#include "engine/index/IndexFile.h"
#include "platform/Names.h"
#include "tests/indexing/IndexingFixture.h"

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class UpdateIndexTest : public IndexingTest {
  protected:
    UpdateIndexTest() {
        WriteFile(Docs(u"one.txt"_s), "heron");
        WriteFile(Docs(u"sub/two.txt"_s), "heron kite");
    }
    static PathDictionary Paths(const QStringList& paths) {
        PathDictionary dictionary;
        for (const QString& path : paths) {
            dictionary.Add(path);
        }
        return dictionary;
    }
    static QString CapitalDocs(const QString& file = {}) {
        return platform::Capitals(LogicalDocs(file));
    }
    static QStringList ListFiles() {
        return QDir(platform::ToMachine(RememberingView::GetTemporaryFolder()))
            .entryList({u"vms*"_s}, QDir::Files);
    }
};

TEST_F(UpdateIndexTest, AFullRunListsOcrTextsAndAllFolders) {
    AddRow(LogicalDocs());
    WriteFile(Docs(u"table.csv"_s), "heron");
    const engine::IndexReport first = RunFull();
    EXPECT_EQ(view.LinesWith(u"<+>"_s),
              QStringList({ArchiveIndexPath() + u"\\ocr<+>"_s, CapitalDocs() + u"<+>"_s}));
    EXPECT_EQ(first.added, 2u);
    EXPECT_TRUE(first.problems.empty()) << first.problems.front().file.toStdString();
    EXPECT_EQ(Found(u"heron"_s), QStringList({u"one.txt"_s, u"two.txt"_s}));
    EXPECT_EQ(view.total, 100);
    QStringList logged = view.log.split(u'\n', Qt::SkipEmptyParts);
    logged.sort();
    EXPECT_EQ(logged, QStringList({Docs(u"one.txt"_s), Docs(u"sub/two.txt"_s)}));
    EXPECT_EQ(view.steps.constLast(), GetMessage(144));
    EXPECT_TRUE(ListFiles().isEmpty()); // they tell what a person keeps where
    EXPECT_TRUE(dialogue.told.isEmpty());

    QFile::remove(Docs(u"one.txt"_s));
    const engine::IndexReport second = RunFull();
    EXPECT_EQ(second.removed, 1u);
    EXPECT_EQ(second.unchanged, 1u);
    EXPECT_EQ(Found(u"heron"_s), QStringList{u"two.txt"_s});
}

TEST_F(UpdateIndexTest, APartialRunWithoutAnIndexMakesOneOfThatPartOnly) {
    AddRow(LogicalDocs());
    UpdateMembers members;
    members.FileOrFolderToAdd = Paths({LogicalDocs(u"sub"_s), LogicalDocs(u"gone.txt"_s)});
    Run(members);
    EXPECT_EQ(view.LinesWith(u"SUB"_s),
              QStringList({CapitalDocs(u"sub"_s) + u"<+>"_s, CapitalDocs(u"gone.txt"_s)}));
    EXPECT_EQ(Found(u"heron"_s), QStringList{u"two.txt"_s});
    EXPECT_FALSE(members.FileOrFolderToAdd);
    ASSERT_EQ(members.IndexReport.problems.size(), 1u);

    // Nothing to add: the job runs all the same and sees what has gone.
    QFile::remove(Docs(u"sub/two.txt"_s));
    UpdateMembers nothing;
    EXPECT_EQ(Run(nothing).removed, 1u);
    EXPECT_FALSE(view.steps.contains(GetMessage(63))); // no compression
}

TEST_F(UpdateIndexTest, FilesOfARemovedFolderLeaveWhetherTheyAreThereOrNot) {
    WriteFile(Docs(u"kept/x.txt"_s), "heron");
    AddRow(LogicalDocs());
    RunFull();
    UpdateMembers members;
    members.FileOrFolderToRemove = Paths({LogicalDocs(u"sub"_s)});
    EXPECT_EQ(Run(members).removed, 1u);
    EXPECT_EQ(view.LinesWith(u"two.txt"_s), QStringList{CapitalDocs() + u"\\SUB\\two.txt"_s});
    EXPECT_TRUE(view.steps.contains(GetMessage(235)));
    EXPECT_EQ(Found(u"kite"_s), QStringList());

    // A folder that is not mounted any more: nothing can be listed, its documents leave even in a
    // run that does not look for deleted files.
    AddMailRow(0, {});
    QDir(Docs(u"kept"_s)).removeRecursively();
    members.FileOrFolderToRemove = Paths({LogicalDocs(u"kept"_s)});
    EXPECT_EQ(Run(members).removed, 1u);
    EXPECT_EQ(Found(u"heron"_s), QStringList{u"one.txt"_s});
    EXPECT_TRUE(ListFiles().isEmpty());
}

TEST_F(UpdateIndexTest, MailIsAskedForAndKeptWhenItIsNotRenewed) {
    WriteFile(Docs(u"store/m.txt"_s), "pelican");
    AddMailRow(1, LogicalDocs(u"store"_s));
    AddRow(LogicalDocs(u"sub"_s));
    UpdateMembers members;
    members.IndexMail = members.UpdateAll = true;
    dialogue.answers = {Answer::Yes};
    Run(members);
    EXPECT_EQ(dialogue.told, QStringList{GetMessage(10) + u'|' + GetMessage(142) + u'\n' +
                                         GetMessage(181) + u"|2"_s});
    EXPECT_EQ(view.LinesWith(u"<+>"_s).value(0), LogicalDocs(u"store"_s) + u"<+>"_s);
    EXPECT_EQ(Found(u"pelican"_s), QStringList{u"m.txt"_s});

    // Who tries again has answered before.
    dialogue.told.clear();
    members.Retry = members.IndexMail = members.UpdateAll = true;
    Run(members);
    EXPECT_TRUE(dialogue.told.isEmpty());
    EXPECT_TRUE(members.IndexMail);

    // Answered No, and in a partial run: what was deleted from the disk stays in the index.
    QFile::remove(Docs(u"store/m.txt"_s));
    QFile::remove(Docs(u"sub/two.txt"_s));
    members.IndexMail = members.UpdateAll = true;
    dialogue.answers = {Answer::No};
    Run(members);
    EXPECT_FALSE(members.IndexMail);
    UpdateMembers partial;
    Run(partial);
    EXPECT_EQ(Found(u"pelican"_s), QStringList{u"m.txt"_s});
    EXPECT_EQ(Found(u"kite"_s), QStringList{u"two.txt"_s});

    // Unattended nobody is asked, and mail is renewed.
    dialogue.told.clear();
    program->gAutoIndexing = true;
    UpdateMembers unattended;
    unattended.IndexMail = unattended.UpdateAll = true;
    Run(unattended);
    EXPECT_TRUE(dialogue.told.isEmpty());
    EXPECT_EQ(Found(u"pelican or kite"_s), QStringList());
}

TEST_F(UpdateIndexTest, ACancelEndsTheRunAndARebuildLeavesTheOldIndex) {
    AddRow(LogicalDocs());
    RunFull();
    WriteFile(Docs(u"three.txt"_s), "heron");
    UpdateMembers members;
    members.ForceRecreate = members.UpdateAll = true;
    UpdateStatus status(view);
    const ScopedYield abortAtOnce([&] {
        status.Abort();
        members.Cancelled = true;
    });
    UpdateIndex(members, view, status);
    EXPECT_TRUE(members.IndexReport.aborted);
    EXPECT_EQ(SummaryMessage(members), GetMessage(3118));
    EXPECT_EQ(Found(u"heron"_s), QStringList({u"one.txt"_s, u"two.txt"_s}));
    EXPECT_TRUE(ListFiles().isEmpty());
}

TEST_F(UpdateIndexTest, ADamagedIndexIsMadeAnewAndWhatMayBeMissingIsAskedFor) {
    AddRow(LogicalDocs());
    const QByteArray garbage(20'000, 'x');
    WriteFile(IndexFile(), garbage);
    UpdateMembers members;
    members.FileOrFolderToAdd = Paths({LogicalDocs(u"one.txt"_s)});
    EXPECT_FALSE(Run(members).fault); // answered No
    EXPECT_TRUE(members.IndexReport.otherFoldersMissing);
    EXPECT_EQ(BytesOf(members.IndexReport.damagedKept), garbage);
    ASSERT_EQ(dialogue.told.size(), 1);
    EXPECT_TRUE(dialogue.told[0].contains(GetMessage(3192, {members.IndexReport.damagedKept})));
    EXPECT_TRUE(dialogue.told[0].contains(GetMessage(3193)));
    EXPECT_TRUE(dialogue.told[0].contains(GetMessage(3194)));
    EXPECT_EQ(Found(u"heron"_s), QStringList{u"one.txt"_s});

    // It is asked again until all folders have come in.
    dialogue.answers = {Answer::Yes};
    members.FileOrFolderToAdd = Paths({LogicalDocs(u"one.txt"_s)});
    EXPECT_FALSE(Run(members).otherFoldersMissing);
    EXPECT_EQ(Found(u"heron"_s), QStringList({u"one.txt"_s, u"two.txt"_s}));
    EXPECT_EQ(dialogue.told.size(), 2);

    // A run over all folders misses nothing, and unattended it is made without asking.
    WriteFile(IndexFile(), garbage);
    EXPECT_FALSE(RunFull().damagedKept.isEmpty());
    EXPECT_EQ(Found(u"heron"_s).size(), 2);
    EXPECT_FALSE(dialogue.told.constLast().contains(GetMessage(3193)));
    WriteFile(IndexFile(), garbage);
    program->gAutoIndexing = true;
    UpdateMembers unattended;
    unattended.FileOrFolderToAdd = Paths({LogicalDocs(u"one.txt"_s)});
    EXPECT_FALSE(Run(unattended).otherFoldersMissing);
    EXPECT_EQ(Found(u"heron"_s).size(), 2);
    EXPECT_EQ(dialogue.told.size(), 3);
}

TEST_F(UpdateIndexTest, AnUnsuitableIndexIsRebuiltWholeWhenThePersonWantsIt) {
    AddRow(LogicalDocs());
    RunFull();
    WriteFile(platform::ToMachine(platform::JoinPath(gProgramPath(), u"default.abc"_s)),
              "letter U+005F # _\n");
    UpdateMembers members;
    members.FileOrFolderToAdd = Paths({LogicalDocs(u"one.txt"_s)});
    EXPECT_EQ(Run(members).fault, engine::IndexFault::Unsuitable); // answered No
    ASSERT_EQ(dialogue.told.size(), 1);
    EXPECT_TRUE(dialogue.told[0].contains(GetMessage(3105)));
    EXPECT_TRUE(dialogue.told[0].contains(GetMessage(3108)));
    EXPECT_EQ(SummaryMessage(members), GetMessage(3124));

    // All folders come in, not only what this run was to add.
    dialogue.answers = {Answer::Yes};
    members.FileOrFolderToAdd = Paths({LogicalDocs(u"one.txt"_s)});
    EXPECT_FALSE(Run(members).fault);
    EXPECT_EQ(Found(u"heron"_s), QStringList({u"one.txt"_s, u"two.txt"_s}));
}

TEST_F(UpdateIndexTest, AnIndexInUseIsTold) {
    AddRow(LogicalDocs());
    RunFull();
    const engine::WriterLock other(platform::EncodeName(IndexFile()).toStdString());
    EXPECT_EQ(RunFull().fault, engine::IndexFault::Busy);
    EXPECT_EQ(dialogue.told, QStringList{GetMessage(226) + u'|' + GetMessage(3102) + u"|4"_s});
}

TEST_F(UpdateIndexTest, FoldersThatCannotBeReadDoNotPassForNone) {
    AddRow(LogicalDocs());
    RunFull();
    connection->gConnection.reset();
    QFile::rename(ThePlace().Path("home", u"archive/db.mdb"_s),
                  ThePlace().Path("home", u"archive/away"_s));
    UpdateMembers members;
    members.ForceRecreate = members.UpdateAll = true;
    Run(members); // every report is cancelled
    EXPECT_FALSE(reporter.reports.isEmpty());
    EXPECT_TRUE(members.IndexReport.aborted);
    EXPECT_EQ(Found(u"heron"_s).size(), 2);
}

TEST_F(UpdateIndexTest, TheStatusHandlerHasItsLimits) {
    UpdateStatus status(view);
    status.ReceiveProgress(100);
    status.ReceiveProgress(101);
    EXPECT_EQ(view.total, 100);
    constexpr std::array kSteps{143, 78, 147, 170, 105, 11, 63, 144};
    for (int step = -1; step <= 10; ++step) {
        view.steps.clear();
        status.ReceiveStep(step);
        EXPECT_EQ(view.steps, step < 1 || step > 8
                                  ? QStringList()
                                  : QStringList{GetMessage(kSteps[size_t(step - 1)])});
    }
    view.log = QString(30'000, u'x');
    status.ReceiveFileInfo(u"/a"_s, 40);
    EXPECT_EQ(view.log, QString(30'000, u'x') + u"/a\n"_s);
    EXPECT_EQ(view.file, 40);
    view.log = QString(30'001, u'x');
    status.ReceiveFileInfo(u"/b"_s, 50);
    EXPECT_EQ(view.log, u"/b\n"_s);
    // Several at once give what one after the other would give.
    view.log = QString(29'998, u'x');
    status.ReceiveFiles({u"/1"_s, u"/2"_s, u"/3"_s}, 60);
    EXPECT_EQ(view.log, u"/2\n/3\n"_s);

    // The button is pressed while the engine asks: it hears of it at once.
    const ScopedYield press([&] { status.Abort(); });
    EXPECT_TRUE(status.CheckForAbort());
}

} // namespace
} // namespace velmora
