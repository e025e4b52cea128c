// Files of the machine: status, listing, replacing, copying.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Files.h"

#include "platform/Temporary.h"
#include "tests/platform/TestSupport.h"

#include <cerrno>
#include <csignal>
#include <map>
#include <sys/resource.h>

using namespace platform;
using testing_support::AsPlainUser;
using testing_support::InOtherProcess;
using testing_support::Sandbox;
using testing_support::Variable;

namespace {

mode_t ModeOf(const QByteArray& path) {
    struct stat status {};
    stat(path.constData(), &status);
    return status.st_mode & 07777;
}

} // namespace

TEST(Files, ListingTellsFilesFoldersAndLinksApart) {
    const Sandbox box;
    box.Write("file", "12345");
    box.Write("latin \xFC", "1");
    box.MakeFolder("folder");
    ASSERT_EQ(symlink("file", box.Bytes("to file").constData()), 0);
    ASSERT_EQ(symlink("folder", box.Bytes("to folder").constData()), 0);
    ASSERT_EQ(symlink("nothing", box.Bytes("to nothing").constData()), 0);
    ASSERT_EQ(mkfifo(box.Bytes("pipe").constData(), 0600), 0);
    const timespec times[2] = {{1'000'000'000, 5}, {1'000'000'000, 123'456'789}};
    ASSERT_EQ(utimensat(AT_FDCWD, box.Bytes("file").constData(), times, 0), 0);

    const FolderListing listing = ListFolder(box.Path());
    ASSERT_TRUE(listing.error.Ok());
    std::map<QByteArray, FolderEntry> byName;
    for (const FolderEntry& entry : listing.entries) {
        byName[EncodeName(entry.name)] = entry;
    }
    ASSERT_EQ(byName.size(), 7u);
    EXPECT_EQ(byName["file"].kind, EntryKind::File);
    EXPECT_EQ(byName["file"].size, 5);
    EXPECT_EQ(byName["file"].modifiedNs, 1'000'000'000'123'456'789);
    EXPECT_EQ(byName["to file"].kind, EntryKind::File);
    EXPECT_EQ(byName["to file"].size, 5);
    EXPECT_EQ(byName["to file"].number, byName["file"].number);
    EXPECT_EQ(byName["folder"].kind, EntryKind::Folder);
    EXPECT_EQ(byName["to folder"].kind, EntryKind::FolderLink);
    EXPECT_EQ(byName["to nothing"].kind, EntryKind::Other);
    EXPECT_EQ(byName["pipe"].kind, EntryKind::Other);
    EXPECT_EQ(byName["latin \xFC"].size, 1);
    EXPECT_EQ(StatusOf(box.Path("latin \xFC"))->size, 1);

    EXPECT_EQ(ListFolder(box.Path("none")).error.code, ENOENT);
    EXPECT_EQ(ListFolder(box.Path("file")).error.code, ENOTDIR);
    EXPECT_FALSE(ListFolder(box.Path("file")).error.text.isEmpty());
}

TEST(Files, ExistenceIsAskedOfTheNameItself) {
    const Sandbox box;
    box.MakeFolder("folder");
    box.Write("file");
    ASSERT_EQ(symlink("nothing", box.Bytes("dangling").constData()), 0);
    ASSERT_EQ(symlink("folder", box.Bytes("link").constData()), 0);
    EXPECT_TRUE(Exists(box.Path("dangling")));
    EXPECT_FALSE(IsFile(box.Path("dangling")));
    EXPECT_TRUE(IsFolder(box.Path("link")));
    EXPECT_FALSE(IsFile(box.Path("link")));
    EXPECT_TRUE(IsFile(box.Path("file")));
    EXPECT_FALSE(Exists(box.Path("file/below")));
    EXPECT_FALSE(Exists(QString()));
}

TEST(Files, OnlyRegularFilesAreRead) {
    const Sandbox box;
    QByteArray content(200'000, 'x');
    content[70'000] = '\0';
    box.Write("file", content);
    EXPECT_EQ(ReadFile(box.Path("file")).bytes, content);
    ASSERT_EQ(mkfifo(box.Bytes("pipe").constData(), 0600), 0);
    EXPECT_EQ(ReadFile(box.Path("pipe")).error.code, EINVAL); // and does not wait for a writer
    EXPECT_EQ(ReadFile(box.Path()).error.code, EISDIR);
    EXPECT_EQ(ReadFile(box.Path("none")).error.code, ENOENT);
}

TEST(ReplaceFile, PutsTheNewContentInPlaceAndKeepsTheRights) {
    const Sandbox box;
    box.MakeFolder("sub");
    const QByteArray longest(255, 'n');
    for (const QByteArray& name :
         {QByteArray("sub/file"), QByteArray("sub/latin \xFC"), "sub/" + longest}) {
        ASSERT_TRUE(ReplaceFile(box.Path(name), "first").Ok());
        ASSERT_EQ(chmod(box.Bytes(name).constData(), 0640), 0);
        ASSERT_TRUE(ReplaceFile(box.Path(name), "second").Ok());
        EXPECT_EQ(box.Read(name), "second");
        EXPECT_EQ(ModeOf(box.Bytes(name)), 0640u);
    }
    EXPECT_EQ(box.Count("sub"), 3);
    const mode_t mask = umask(022);
    umask(mask);
    ASSERT_TRUE(ReplaceFile(box.Path("new"), "").Ok());
    EXPECT_EQ(ModeOf(box.Bytes("new")), 0666u & ~mask);
    EXPECT_EQ(box.Read("new"), "");
}

TEST(ReplaceFile, ReplacesTheFileBehindALink) {
    const Sandbox box;
    box.MakeFolder("real");
    box.Write("real/file", "old");
    ASSERT_EQ(symlink("real/file", box.Bytes("link").constData()), 0);
    ASSERT_TRUE(ReplaceFile(box.Path("link"), "new").Ok());
    EXPECT_EQ(box.Read("real/file"), "new");
    struct stat status {};
    ASSERT_EQ(lstat(box.Bytes("link").constData(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
}

TEST(ReplaceFile, ARefusalLeavesTheOldFileAndNothingElse) {
    const Sandbox box;
    box.MakeFolder("shut");
    box.Write("shut/file", "old");
    box.MakeFolder("open");
    box.Write("open/locked", "old");
    chmod(box.Bytes().constData(), 0755);
    chmod(box.Bytes("shut/file").constData(), 0666);
    chmod(box.Bytes("shut").constData(), 0555);
    chmod(box.Bytes("open/locked").constData(), 0444);
    chmod(box.Bytes("open").constData(), 0777);
    EXPECT_EQ(AsPlainUser([&] { return ReplaceFile(box.Path("shut/file"), "new").code; }), EACCES);
    EXPECT_EQ(AsPlainUser([&] { return ReplaceFile(box.Path("open/locked"), "new").code; }),
              EACCES);
    chmod(box.Bytes("shut").constData(), 0755);
    EXPECT_EQ(box.Read("shut/file"), "old");
    EXPECT_EQ(box.Read("open/locked"), "old");
    EXPECT_EQ(box.Count("shut"), 1);
    EXPECT_EQ(box.Count("open"), 1);

    EXPECT_EQ(ReplaceFile(box.Path("open"), "x").code, EISDIR);
    EXPECT_EQ(ReplaceFile(box.Path("none/file"), "x").code, ENOENT);
    EXPECT_EQ(ReplaceFile(QString(), "x").code, ENOENT);
    ASSERT_EQ(mkfifo(box.Bytes("pipe").constData(), 0600), 0);
    EXPECT_EQ(ReplaceFile(box.Path("pipe"), "x").code, EINVAL);
}

TEST(ReplaceFile, AWriteThatDiesHalfWayLeavesTheOldFileAndNothingElse) {
    const Sandbox box;
    box.Write("file", "old");
    const int code = InOtherProcess([&] {
        const rlimit limit{100'000, 100'000};
        setrlimit(RLIMIT_FSIZE, &limit);
        signal(SIGXFSZ, SIG_IGN);
        return ReplaceFile(box.Path("file"), QByteArray(300'000, 'n')).code;
    });
    EXPECT_EQ(code, EFBIG);
    EXPECT_EQ(box.Read("file"), "old");
    EXPECT_EQ(box.Count(), 1);
}

TEST(ReplaceFile, AnotherGroupDoesNotGetWhatWasGrantedToTheOldOne) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can lay a file of a group that the writer is not in";
    }
    const Sandbox box;
    chmod(box.Bytes().constData(), 0777);
    box.Write("file", "old");
    ASSERT_EQ(chown(box.Bytes("file").constData(), 65534, 4242), 0);
    ASSERT_EQ(chmod(box.Bytes("file").constData(), 0664), 0);
    EXPECT_EQ(AsPlainUser([&] { return ReplaceFile(box.Path("file"), "new").code; }), 0);
    EXPECT_EQ(box.Read("file"), "new");
    EXPECT_EQ(ModeOf(box.Bytes("file")), 0644u);
}

TEST(Files, CopyNeverTakesAnExistingName) {
    const Sandbox box;
    const QByteArray content(150'000, 'c');
    box.Write("from", content);
    box.MakeFolder("to");
    chmod(box.Bytes("from").constData(), 0400);
    EXPECT_TRUE(CopyToNewFile(box.Path("from"), box.Path("to/copy")).Ok());
    EXPECT_EQ(box.Read("to/copy"), content);
    EXPECT_NE(ModeOf(box.Bytes("to/copy")) & 0200, 0u); // the copy is the user's own
    box.Write("to/mine", "mine");
    EXPECT_EQ(CopyToNewFile(box.Path("from"), box.Path("to/mine")).code, EEXIST);
    EXPECT_EQ(box.Read("to/mine"), "mine");
    EXPECT_EQ(CopyToNewFile(box.Path("none"), box.Path("to/other")).code, ENOENT);
    EXPECT_EQ(box.Count("to"), 2);
}

TEST(Files, FoldersAreMadeWithAllAboveThem) {
    const Sandbox box;
    EXPECT_TRUE(CreateFolders(box.Path("a/b\xFC/c"), 0700).Ok());
    EXPECT_TRUE(CreateFolders(box.Path("a//b\xFC/c/")).Ok());
    EXPECT_EQ(ModeOf(box.Bytes("a/b\xFC/c")), 0700u);
    EXPECT_TRUE(CreateFolders(QStringLiteral("/")).Ok());
    box.Write("file");
    EXPECT_EQ(CreateFolders(box.Path("file/below")).code, ENOTDIR);
    EXPECT_EQ(CreateFolders(box.Path("file")).code, ENOTDIR);
    EXPECT_EQ(CreateFolders(QString()).code, ENOENT);
}

TEST(Files, RoomAndDeviceOfAPath) {
    const Sandbox box;
    EXPECT_GT(FreeSpace(box.Path()), 0);
    EXPECT_GT(FreeSpace(box.Path("not/yet/there")), 0);
    EXPECT_EQ(DeviceOf(box.Path()), StatusOf(box.Path())->device);
    EXPECT_FALSE(DeviceOf(box.Path("none")));
    EXPECT_NE(DeviceOf(box.Path()), DeviceOf(QStringLiteral("/proc")));
    EXPECT_FALSE(IsNetworkFileSystem(box.Path("not/yet/there")));
}

TEST(Temporary, FilesArePrivateAndNew) {
    const Sandbox box;
    const Variable temporary("TMPDIR", box.Bytes());
    const CreatedFile one = CreateTemporaryFile();
    const CreatedFile two = CreateTemporaryFile();
    ASSERT_TRUE(one.error.Ok());
    EXPECT_NE(one.path, two.path);
    EXPECT_TRUE(one.path.section(u'/', -1).startsWith(QStringLiteral("vms")));
    EXPECT_TRUE(one.path.startsWith(TemporaryFolder() + u'/'));
    EXPECT_TRUE(TemporaryFolder().startsWith(box.Path() + u'/'));
    EXPECT_EQ(ModeOf(EncodeName(one.path)), 0600u);
    EXPECT_EQ(ModeOf(EncodeName(TemporaryFolder())), 0700u);
    EXPECT_EQ(StatusOf(one.path)->size, 0);
    EXPECT_EQ(CreateTemporaryFile(box.Path("none")).error.code, ENOENT);
}

TEST(Temporary, AFolderThatSomebodyElseLaidIsNotTrusted) {
    const Sandbox box;
    const Variable temporary("TMPDIR", box.Bytes());
    const QByteArray name = "velmora-" + QByteArray::number(geteuid());
    box.MakeFolder("theirs");
    ASSERT_EQ(symlink("theirs", box.Bytes(name).constData()), 0);
    EXPECT_NE(TemporaryFolder(), box.Path(name));
    EXPECT_EQ(ModeOf(EncodeName(TemporaryFolder())), 0700u);
    ASSERT_EQ(unlink(box.Bytes(name).constData()), 0);
    ASSERT_EQ(mkdir(box.Bytes(name).constData(), 0700), 0);
    ASSERT_EQ(chmod(box.Bytes(name).constData(), 0777), 0);
    EXPECT_NE(TemporaryFolder(), box.Path(name));
    EXPECT_EQ(box.Count("theirs"), 0);
}
