// The list of indexed folders.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Messages.h"
#include "tests/indexing/IndexingFixture.h"

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class IndexedFoldersTest : public IndexingTest {
  protected:
    static QString Make(const QString& name) {
        QDir().mkpath(Docs(name));
        return LogicalDocs(name);
    }
    static QStringList Listed() {
        QStringList paths;
        for (const IndexedFolder& folder : ListIndexedFolders()) {
            paths << folder.path;
        }
        return paths;
    }
    FolderChanges changes;
};

TEST_F(IndexedFoldersTest, AFolderIsWrittenInCapitalsUnderItsOwnName) {
    const QString folder = Make(u"Übersicht 2024"_s);
    ASSERT_TRUE(AddIdxdFolders(platform::Capitals(folder) + u'\\', changes));
    const IndexedFolder row = ListIndexedFolders().value(0);
    EXPECT_EQ(row.path, platform::Capitals(folder));
    EXPECT_EQ(row.description, u"Übersicht 2024"_s); // as it is spelled on the disk
    EXPECT_EQ(row.iconId, u"FLDCL"_s);
    EXPECT_EQ(changes.add.Items(), QStringList{row.path});
    program->gUserKey = u"DOMAIN.BRUNO"_s;
    EXPECT_TRUE(Listed().isEmpty());
}

TEST_F(IndexedFoldersTest, WhatIsCoveredOrMissingIsRefusedWithItsMessage) {
    const QString folder = Make(u"a"_s);
    const QString below = Make(u"a/b"_s);
    ASSERT_TRUE(AddIdxdFolders(folder, changes));
    changes = {};
    EXPECT_FALSE(AddIdxdFolders(platform::Capitals(folder), changes));
    EXPECT_FALSE(AddIdxdFolders(below, changes));
    EXPECT_FALSE(AddIdxdFolders(LogicalDocs(u"gone"_s), changes));
    QDir().mkpath(Docs(u"two\nlines"_s));
    EXPECT_FALSE(AddIdxdFolders(LogicalDocs(u"two\nlines"_s), changes));
    const auto line = [](int title, const QString& text) {
        return GetMessage(title) + u'|' + text + u"|4"_s;
    };
    EXPECT_EQ(dialogue.told, QStringList({line(40, GetMessage(165)), line(134, GetMessage(200)),
                                          line(134, GetMessage(3071, {Docs(u"gone"_s)})),
                                          line(134, GetMessage(3123))}));
    EXPECT_EQ(Listed(), QStringList{platform::Capitals(folder)});
    EXPECT_FALSE(changes.Any());
}

TEST_F(IndexedFoldersTest, AParentReplacesItsChildrenAndNoNeighbour) {
    const QString parent = Make(u"a"_s);
    const QString child = Make(u"a/b"_s);
    const QString neighbour = Make(u"a2"_s);
    AddRow(child);
    AddRow(neighbour);
    dialogue.answers = {Answer::No, Answer::Yes};
    EXPECT_FALSE(AddIdxdFolders(parent, changes));
    EXPECT_EQ(Listed().size(), 2);
    EXPECT_TRUE(AddIdxdFolders(parent, changes));
    EXPECT_EQ(Listed(), QStringList({platform::Capitals(neighbour), platform::Capitals(parent)}));
    EXPECT_EQ(dialogue.told.constLast(), GetMessage(68) + u'|' + GetMessage(164) + u"|2"_s);
    // The children's documents stay: they lie below the parent too.
    EXPECT_EQ(changes.remove.Count(), 0);
}

TEST_F(IndexedFoldersTest, AddingAndRemovingCancelEachOther) {
    const QString folder = Make(u"a"_s);
    ASSERT_TRUE(AddIdxdFolders(folder, changes));
    dialogue.answers = {Answer::No, Answer::Yes};
    EXPECT_FALSE(RemoveIdxdFolders(ListIndexedFolders().constFirst(), changes));
    EXPECT_EQ(dialogue.told,
              QStringList{u"Remove indexed folder confirmation|Do you want to remove "
                          u"the folder 'a'?|2"_s});
    EXPECT_TRUE(RemoveIdxdFolders(ListIndexedFolders().constFirst(), changes));
    EXPECT_TRUE(Listed().isEmpty());
    EXPECT_FALSE(changes.Any());

    AddRow(folder);
    EXPECT_TRUE(RemoveIdxdFolderUnasked(ListIndexedFolders().constFirst(), changes));
    EXPECT_EQ(changes.remove.Items(), QStringList{platform::Capitals(folder)});
    ASSERT_TRUE(AddIdxdFolders(folder, changes));
    EXPECT_FALSE(changes.Any());
}

} // namespace
} // namespace velmora
