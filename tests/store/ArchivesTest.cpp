// The list of shared archives: reading, changing, choosing.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/Archives.h"
#include "core/MessageIds.h"
#include "core/Messages.h"
#include "core/Settings.h"
#include "store/StoreError.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class ArchivesTest : public testing::Test {
  protected:
    ArchivesTest() { ThePlace().Clear(); }
    static QString ListFile() { return ThePlace().Path("program", u"SharedArchives.xml"_s); }
    static QString Folder(const QString& name) {
        const QString path = ThePlace().Path("home", name);
        QDir().mkpath(path);
        return path;
    }
    static QString Told(int title, const QString& text, Icon icon) {
        return GetMessage(title) + u'|' + text + u'|' + QString::number(static_cast<int>(icon));
    }

    ScopedGlobals program;
    ScriptedReporter reporter;
    ScriptedDialogue dialogue;
};

TEST_F(ArchivesTest, TheFileHoldsCountPathsAndDescriptions) {
    EXPECT_TRUE(ReadArchives().isEmpty());
    const QList<SharedArchive> archives{{u"\\\\NAS\\Büro\\arch"_s, u"Büro"_s},
                                        {u"\\srv\\日本"_s, u"far"_s}};
    ASSERT_TRUE(SaveArchives({archives[0]}));
    EXPECT_EQ(DecodeSettings(BytesOf(ListFile())),
              u"<Velmora>\r\n\t<ARCHIVENUMBERS>1</ARCHIVENUMBERS>\r\n"
              "\t<ARCHIVEPATH_1>\\\\NAS\\Büro\\arch</ARCHIVEPATH_1>\r\n"
              "\t<ARCHIVEDESCRIPTION_1>Büro</ARCHIVEDESCRIPTION_1>\r\n</Velmora>\r\n"_s);
    ASSERT_TRUE(SaveArchives(archives));
    EXPECT_EQ(ReadArchives(), archives);
    EXPECT_EQ(ArchiveText(archives[0]), u"Büro (\\\\NAS\\Büro\\arch)"_s);
    EXPECT_EQ(ArchiveText(archives[1]), u"far (/srv/日本)"_s);

    // Written by other hands: a count that is none or too high, a path of this system, no path.
    WriteFile(ListFile(), "<Velmora>\r\n</Velmora>\r\n");
    EXPECT_TRUE(ReadArchives().isEmpty());
    WriteFile(ListFile(), "<x>\n\t<ARCHIVENUMBERS>999999999</ARCHIVENUMBERS>\n"
                          "\t<ARCHIVEDESCRIPTION_1>lost</ARCHIVEDESCRIPTION_1>\n"
                          "\t<ARCHIVEPATH_2>/srv/a/</ARCHIVEPATH_2>\n</x>\n");
    EXPECT_EQ(ReadArchives(), (QList<SharedArchive>{{u"\\srv\\a"_s, u""_s}}));
    EXPECT_FALSE(SaveArchives({{u"\\a\nb"_s, u"x"_s}}));
    EXPECT_EQ(reporter.reports.size(), 1);
}

// Somebody who reads at any moment, as one would after a kill, finds one whole list or the other.
TEST_F(ArchivesTest, AListIsNeverSeenHalfWritten) {
    QList<SharedArchive> longer;
    for (int i = 0; i < 40; ++i) {
        longer.append({u"\\srv\\archive%1"_s.arg(i), u"Archive %1"_s.arg(i)});
    }
    const QList<SharedArchive> shorter = longer.mid(7, 3);
    ASSERT_TRUE(SaveArchives(longer));
    const QByteArray longBytes = BytesOf(ListFile());
    ASSERT_TRUE(SaveArchives(shorter));
    const QByteArray shortBytes = BytesOf(ListFile());
    std::atomic<bool> done = false;
    std::thread writer([&] {
        for (int i = 0; i < 100; ++i) {
            EXPECT_TRUE(SaveArchives(i % 2 == 0 ? longer : shorter));
        }
        done = true;
    });
    int seen = 0;
    while (!done) {
        const QByteArray bytes = BytesOf(ListFile());
        ASSERT_TRUE(bytes == longBytes || bytes == shortBytes) << bytes.toStdString();
        ++seen;
    }
    writer.join();
    EXPECT_GT(seen, 10);
}

TEST_F(ArchivesTest, AnArchiveIsMadeWhereThereIsNoneAndTakenOverWhereThereIsOne) {
    const QString folder = Folder(u"Gemeinsam"_s);
    EXPECT_FALSE(AddArchive(u"  "_s, u"x"_s));
    EXPECT_FALSE(AddArchive(folder, u" "_s));
    EXPECT_FALSE(AddArchive(u"Gemeinsam"_s, u"x"_s));
    EXPECT_FALSE(AddArchive(folder, u"x"_s)); // answered No
    EXPECT_EQ(dialogue.told,
              QStringList({Told(82, GetMessage(318), Icon::Critical),
                           Told(82, GetMessage(319), Icon::Critical),
                           Told(99, GetMessage(kNoSuchPlace, {u"Gemeinsam"_s}), Icon::Critical),
                           Told(65, GetMessage(324), Icon::Question)}));
    EXPECT_TRUE(QDir(folder).isEmpty());
    EXPECT_FALSE(QFile::exists(ListFile()));

    dialogue.answers = {Answer::Yes};
    ASSERT_TRUE(AddArchive(u' ' + folder + u"/ "_s, u" Büro "_s));
    EXPECT_EQ(QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList({u"db.mdb"_s, u"indexes"_s}));
    const SharedArchive added{platform::ToLogical(folder), u"Büro"_s};
    EXPECT_EQ(ReadArchives(), QList<SharedArchive>{added});

    // Listed a second time, as another installation would: no question, and it is not touched.
    const QByteArray database = BytesOf(folder + u"/db.mdb"_s);
    dialogue.told.clear();
    ASSERT_TRUE(AddArchive(added.path, u"again"_s));
    EXPECT_TRUE(dialogue.told.isEmpty());
    EXPECT_EQ(BytesOf(folder + u"/db.mdb"_s), database);
    EXPECT_EQ(ReadArchives().size(), 2);
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(ArchivesTest, WhatCannotBeMadeIsReportedAndNotListed) {
    dialogue.answers = {Answer::Yes, Answer::Yes};
    const QString gone = ThePlace().Path("home", u"gone"_s);
    EXPECT_FALSE(AddArchive(gone, u"x"_s));
    ASSERT_EQ(reporter.reports.size(), 1);
    EXPECT_TRUE(reporter.reports[0].contains(u"FrmArchiveManagement/cmdSalva_Click"_s));
    EXPECT_FALSE(AddArchive(u"\\\\nas\\share\\x"_s, u"x"_s));
    EXPECT_EQ(reporter.reports.size(), 2);
    EXPECT_FALSE(QFile::exists(ListFile()));
    // The list itself cannot be written: what was there stays.
    const QString folder = Folder(u"a"_s);
    dialogue.answers = {Answer::Yes};
    ASSERT_TRUE(AddArchive(folder, u"x"_s));
    const QByteArray before = BytesOf(ListFile());
    EXPECT_FALSE(SaveArchives({{u"\\a"_s, u"two\nlines"_s}}));
    EXPECT_EQ(BytesOf(ListFile()), before);
}

TEST_F(ArchivesTest, RemovingTakesTheEntryOffTheListOnly) {
    const QString folder = Folder(u"a"_s);
    dialogue.answers = {Answer::Yes};
    ASSERT_TRUE(AddArchive(folder, u"x"_s));
    const SharedArchive archive = ReadArchives().constFirst();
    // Another program has added one meanwhile: it is not lost.
    ASSERT_TRUE(SaveArchives({{u"\\b"_s, u"other"_s}, archive}));
    EXPECT_FALSE(RemoveArchive(archive)); // answered No
    EXPECT_EQ(ReadArchives().size(), 2);
    dialogue.told.clear();
    dialogue.answers = {Answer::Yes, Answer::Yes};
    EXPECT_TRUE(RemoveArchive(archive));
    EXPECT_EQ(dialogue.told, QStringList{Told(66, GetMessage(325), Icon::Question)});
    EXPECT_EQ(ReadArchives(), (QList<SharedArchive>{{u"\\b"_s, u"other"_s}}));
    EXPECT_TRUE(RemoveArchive({u"\\b"_s, u"other"_s}));
    EXPECT_EQ(BytesOf(ListFile()),
              "<Velmora>\r\n\t<ARCHIVENUMBERS>0</ARCHIVENUMBERS>\r\n</Velmora>\r\n");
    EXPECT_TRUE(QFile::exists(folder + u"/db.mdb"_s));
}

TEST_F(ArchivesTest, TheLastChoiceCountsAsLongAsItIsThere) {
    EXPECT_EQ(LastSelectedArchive(3), 0);
    RememberSelectedArchive(2);
    EXPECT_EQ(LastSelectedArchive(3), 2);
    EXPECT_EQ(LastSelectedArchive(2), 0);
    RememberSelectedArchive(-1);
    EXPECT_EQ(LastSelectedArchive(3), 0);
    EXPECT_TRUE(IsArchiveReachable({}));
    EXPECT_FALSE(IsArchiveReachable(platform::ToLogical(Folder(u"empty"_s))));
    EXPECT_EQ(dialogue.told, QStringList{Told(99, GetMessage(328), Icon::Critical)});
}

} // namespace
} // namespace velmora
