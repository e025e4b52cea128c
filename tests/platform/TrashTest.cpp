// Moves to the trash of the home folder and of other disks.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Trash.h"
#include "TestSupport.h"
#include "platform/Copy.h"
#include "tests/engine/SmallDisk.h"

#include <QDateTime>
#include <cerrno>
#include <sys/stat.h>

namespace platform {
namespace {

using engine_test::SmallDisk;
using testing_support::AsPlainUser;
using testing_support::Sandbox;
using testing_support::Variable;

class TrashTest : public testing::Test {
  protected:
    TrashTest() {
        box.MakeFolder("docs");
        box.MakeFolder("disk");
    }
    bool Has(const QByteArray& name) const { return OwnStatusOf(box.Path(name)).has_value(); }
    // The lines of a note.
    QList<QByteArray> Note(const QByteArray& name) const { return box.Read(name).split('\n'); }

    Sandbox box;
    Variable data{"XDG_DATA_HOME", box.Bytes("data")};
};

TEST_F(TrashTest, TheHomeTrashTakesAnyNameAndKeepsItsPlace) {
    const std::vector<QByteArray> names = {"it's 100% \"mine\"", "two\nlines", "b\xE4r", "same.tif",
                                           QByteArray(255, 'n')};
    for (const QByteArray& name : names) {
        box.Write("docs/" + name, name);
        const TrashOutcome outcome = MoveToTrash(box.Path("docs/" + name));
        ASSERT_TRUE(outcome.Ok()) << name.constData() << outcome.error.text.toStdString();
        EXPECT_EQ(ReadFile(outcome.trashed).bytes, name);
        const QByteArray trashed = EncodeName(outcome.trashed.section(u'/', -1));
        const QList<QByteArray> note = Note("data/Trash/info/" + trashed + ".trashinfo");
        ASSERT_EQ(note.size(), 4);
        EXPECT_EQ(note[0], "[Trash Info]");
        EXPECT_EQ(QByteArray::fromPercentEncoding(note[1]), "Path=" + box.Bytes("docs/" + name));
        const QDateTime when =
            QDateTime::fromString(QString::fromLatin1(note[2].mid(13)), Qt::ISODate);
        EXPECT_LT(std::abs(when.secsTo(QDateTime::currentDateTime())), 60) << note[2].constData();
    }
    EXPECT_EQ(box.Count("docs"), 0);
    // The same name again, and a folder with all below it, and a link, not what it leads to.
    box.Write("docs/same.tif", "second");
    box.MakeFolder("docs/folder/sub");
    box.Write("docs/folder/sub/x");
    box.Write("docs/target", "target");
    ASSERT_EQ(symlink("target", box.Bytes("docs/link").constData()), 0);
    EXPECT_NE(MoveToTrash(box.Path("docs/same.tif")).trashed,
              box.Path("data/Trash/files/same.tif"));
    EXPECT_EQ(box.Read("data/Trash/files/same.tif"), "same.tif");
    EXPECT_TRUE(MoveToTrash(box.Path("docs/folder")).Ok());
    EXPECT_TRUE(MoveToTrash(box.Path("docs/link")).Ok());
    EXPECT_TRUE(Has("data/Trash/files/folder/sub/x"));
    EXPECT_EQ(box.Read("docs/target"), "target");
    EXPECT_EQ(box.Count("data/Trash/files"), box.Count("data/Trash/info"));
    EXPECT_EQ(MoveToTrash(box.Path("docs/gone")).error.code, ENOENT);
}

TEST_F(TrashTest, AnotherDiskHasItsOwn) {
    const SmallDisk disk(box.Path("disk"), 4);
    ASSERT_TRUE(disk.IsMounted());
    const QByteArray user = QByteArray::number(geteuid());
    box.MakeFolder("disk/docs");
    const auto trash = [&](const QByteArray& name) {
        box.Write("disk/docs/" + name);
        return EncodeName(MoveToTrash(box.Path("disk/docs/" + name)).trashed);
    };
    EXPECT_EQ(trash("a b"), box.Bytes("disk/.Trash-" + user + "/files/a b"));
    EXPECT_EQ(Note("disk/.Trash-" + user + "/info/a b.trashinfo")[1], "Path=docs/a%20b");
    EXPECT_EQ(StatusOf(box.Path("disk/.Trash-" + user))->mode, 0700u);
    // A shared one that anybody could have put there is not trusted, a proper one is.
    ASSERT_EQ(symlink("docs", box.Bytes("disk/.Trash").constData()), 0);
    EXPECT_TRUE(trash("b").startsWith(box.Bytes("disk/.Trash-")));
    ASSERT_TRUE(RemoveEntry(box.Path("disk/.Trash"), false).Ok());
    box.MakeFolder("disk/.Trash");
    EXPECT_TRUE(trash("c").startsWith(box.Bytes("disk/.Trash-")));
    ASSERT_EQ(chmod(box.Bytes("disk/.Trash").constData(), 01777), 0);
    EXPECT_EQ(trash("d"), box.Bytes("disk/.Trash/" + user + "/files/d"));
    EXPECT_FALSE(Has("data/Trash/files/d"));
}

TEST_F(TrashTest, WithoutATrashOrRightsAllStaysWhereItIs) {
    const SmallDisk disk(box.Path("disk"), 4);
    ASSERT_TRUE(disk.IsMounted());
    // The top of the disk is root's: a plain user can make no trash there.
    box.MakeFolder("disk/docs");
    box.Write("disk/docs/a");
    ASSERT_EQ(chmod(box.Bytes("disk/docs").constData(), 0777), 0);
    box.Write("docs/kept");
    ASSERT_EQ(chmod(box.Bytes().constData(), 0777), 0);
    EXPECT_EQ(AsPlainUser([&] {
                  const TrashOutcome none = MoveToTrash(box.Path("disk/docs/a"));
                  const TrashOutcome refused = MoveToTrash(box.Path("docs/kept"));
                  return none.noTrash && none.error.Ok() && refused.error.code == EACCES ? 0 : 1;
              }),
              0);
    EXPECT_TRUE(Has("disk/docs/a") && Has("docs/kept"));
    EXPECT_EQ(box.Count("data/Trash/info"), 0); // no note of what was refused
}

} // namespace
} // namespace platform
