// Archives that are missing, damaged or there already, and their list of folders.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/cli/Cli.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class ArchiveTest : public CliTest {};

TEST_F(ArchiveTest, AMissingArchiveIsToldByEveryCommand) {
    for (const QStringList& command : {QStringList{u"folders"_s, u"list"_s},
                                       {u"index"_s},
                                       {u"search"_s, u"x"_s},
                                       {u"show"_s, u"x"_s},
                                       {u"words"_s, u"x"_s},
                                       {u"index"_s, u"--problems"_s}}) {
        const CliResult result = Here(command);
        EXPECT_THAT(result, EndsWith(3));
        EXPECT_THAT(result.error, HasSubstr("There is no archive in \"" + PathBytes("archive")));
        EXPECT_THAT(result.error, HasSubstr("velmora init"));
    }
    EXPECT_THAT(Velmora("folders list"), EndsWith(0)) << "one's own is laid at the first start";
    EXPECT_FALSE(QFile::exists(Path("archive"))) << "asking makes none";
}

TEST_F(ArchiveTest, InitMakesFoldersAndLeavesWhatIsThere) {
    EXPECT_THAT(Velmora("init new/folder"), EndsWith(0));
    EXPECT_TRUE(QFile::exists(Path("new/folder/db.mdb")));
    EXPECT_THAT(Velmora("--archive new/folder folders add docs"), EndsWith(0));
    const CliResult again = Velmora("--lang en init new/folder");
    EXPECT_THAT(again, EndsWith(3));
    EXPECT_THAT(again.error, HasSubstr("already exists"));
    EXPECT_THAT(Velmora("--archive new/folder folders list").Lines(),
                ElementsAre(PathBytes("docs")));
    Write("file", "");
    EXPECT_THAT(Velmora("init file/folder"), EndsWith(3));
}

TEST_F(ArchiveTest, ADamagedDatabaseIsToldPlainly) {
    Write("archive/db.mdb", QByteArray(5000, 'x'));
    const CliResult result = Here({u"folders"_s, u"list"_s});
    EXPECT_THAT(result, EndsWith(3));
    EXPECT_THAT(result.error, HasSubstr(PathBytes("archive/db.mdb")));
    EXPECT_THAT(result.error, Not(HasSubstr("Unexpected error")));
}

// The rules of the window hold here: no folder twice, a parent takes the place of its children.
TEST_F(ArchiveTest, FoldersAreListedOnce) {
    for (const char* folder : {"docs/a", "docs/b", "other"}) {
        QDir(m_root.path()).mkpath(QLatin1StringView(folder));
    }
    ASSERT_THAT(Velmora("init archive"), EndsWith(0));
    EXPECT_THAT(Here({u"folders"_s, u"add"_s, u"docs/a"_s, u"docs/b"_s}), EndsWith(0));
    const CliResult twice = Here({u"folders"_s, u"add"_s, u"docs/a"_s, u"other"_s});
    EXPECT_THAT(twice, EndsWith(1));
    EXPECT_THAT(twice.error, HasSubstr("already included"));
    EXPECT_THAT(twice.output, HasSubstr(PathBytes("other"))) << "the others are added";

    const CliResult parent = Here({u"folders"_s, u"add"_s, u"docs"_s});
    EXPECT_THAT(parent, EndsWith(0));
    EXPECT_THAT(parent.error, HasSubstr("[Yes]")) << "what became of the children is told";
    EXPECT_THAT(Here({u"folders"_s, u"list"_s}).Lines(),
                testing::UnorderedElementsAre(PathBytes("docs"), PathBytes("other")));
    EXPECT_THAT(Here({u"folders"_s, u"add"_s, u"docs/a"_s}), EndsWith(1));
    EXPECT_THAT(Here({u"folders"_s, u"add"_s, u"nowhere"_s}), EndsWith(1));

    const CliResult unknown = Here({u"folders"_s, u"remove"_s, u"docs/a"_s, u"other/"_s});
    EXPECT_THAT(unknown, EndsWith(1));
    EXPECT_THAT(unknown.error, HasSubstr("not in the list: " + PathBytes("docs/a")));
    EXPECT_THAT(Here({u"folders"_s, u"list"_s}).Lines(), ElementsAre(PathBytes("docs")));
    // A folder that is gone from the disk can still leave the list.
    QDir(Path("docs")).removeRecursively();
    EXPECT_THAT(Here({u"folders"_s, u"remove"_s, u"docs"_s}), EndsWith(0));
    EXPECT_THAT(Here({u"folders"_s, u"list"_s}).output, IsEmpty());
}

// Names as people and programs make them survive the way through list, index and search.
TEST_F(ArchiveTest, OddNamesOfFoldersAndFiles) {
    const QByteArrayList folders{"with blank",  "quote's \"double\"", "Ünïcödé — 文件",
                                 "back\\slash", "percent %1",         "-dash",
                                 "a>b|c"};
    ASSERT_THAT(Velmora("init archive"), EndsWith(0));
    for (const QByteArray& folder : folders) {
        Write("odd/" + folder + "/file " + folder + ".txt", "aardvark\n");
    }
    Write("odd/star*/wild?card.txt", "aardvark aardvark\n");
    Write("odd/starry/wildXcard.txt", "aardvark aardvark\n");
    QStringList add{u"folders"_s, u"add"_s, u"--"_s};
    m_folder = Path("odd");
    for (const QByteArray& folder : folders) {
        add << QString::fromUtf8(folder);
    }
    add << u"star*"_s << u"starry"_s;
    EXPECT_THAT(Here(add), EndsWith(0));
    const std::vector<std::string> listed = Here({u"folders"_s, u"list"_s}).Lines();
    for (const QByteArray& folder : folders) {
        EXPECT_THAT(listed, testing::Contains(PathBytes("odd") + '/' + folder.toStdString()));
    }
    EXPECT_THAT(Here({u"index"_s}), EndsWith(0));
    const auto found = Here({u"search"_s, u"aardvark"_s, u"--json"_s}).Objects();
    EXPECT_EQ(found.size(), static_cast<std::size_t>(folders.size()) + 2);
    for (const QJsonObject& each : found) {
        const QString file = each[u"file"_s].toString();
        EXPECT_TRUE(QFile::exists(file)) << file.toStdString();
        const CliResult page = Here({u"show"_s, file, u"--query"_s, u"aardvark"_s});
        EXPECT_THAT(page, EndsWith(0)) << file.toStdString();
        EXPECT_EQ(page.Anchors(), each[u"hits"_s].toInt()) << file.toStdString();
    }
    const auto inFolder =
        Here({u"search"_s, u"aardvark"_s, u"--json"_s, u"--folder"_s, u"back\\slash"_s}).Objects();
    ASSERT_EQ(inFolder.size(), 1U);
    EXPECT_EQ(inFolder[0][u"file"_s], Path("odd/back\\slash/file back\\slash.txt"));
}

} // namespace

} // namespace velmora
