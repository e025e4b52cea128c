// Special folders, the choice and laying of the program folder, the worker's place.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Folders.h"

#include "tests/platform/TestSupport.h"

#include <cerrno>

using namespace platform;
using testing_support::AsPlainUser;
using testing_support::InOtherProcess;
using testing_support::Sandbox;
using testing_support::Variable;

TEST(SpecialFolders, FollowTheDesktopsSettings) {
    const Sandbox box;
    box.MakeFolder("config");
    box.MakeFolder("Documenti");
    box.Write("config/user-dirs.dirs",
              "XDG_DESKTOP_DIR=\"$HOME/Scrivania\"\nXDG_DOCUMENTS_DIR=\"$HOME/Documenti\"\n");
    const Variable home("HOME", box.Bytes());
    const Variable config("XDG_CONFIG_HOME", box.Bytes("config"));
    EXPECT_EQ(SpecialFolder(kDesktopFolder), box.Path("Scrivania"));
    EXPECT_EQ(SpecialFolder(kDocumentsFolder), box.Path("Documenti"));
    EXPECT_EQ(SpecialFolder(7), QString());
}

TEST(ProgramFolder, IsChosenByOverrideThenPortableCopyThenUser) {
    const Sandbox box;
    chmod(box.Bytes().constData(), 0755);
    box.MakeFolder("bin");
    ProgramPlaces places;
    places.executableFolder = box.Path("bin");
    places.userDataFolder = box.Path("data/velmora");
    EXPECT_EQ(ChooseProgramFolder(places),
              places.userDataFolder); // writable, but not the program's
    box.Write("bin/db.mdb");
    chmod(box.Bytes("bin").constData(), 0777);
    EXPECT_EQ(ChooseProgramFolder(places), places.executableFolder);
    chmod(box.Bytes("bin").constData(), 0555);
    EXPECT_EQ(
        AsPlainUser([&] { return ChooseProgramFolder(places) == places.userDataFolder ? 0 : 1; }),
        0);
    places.homeOverride = box.Path("home");
    EXPECT_EQ(ChooseProgramFolder(places), box.Path("home"));
}

TEST(ProgramFolder, IsLaidOnceAndNothingInItIsOverwritten) {
    const Sandbox box;
    box.MakeFolder("share/lib/deep");
    box.MakeFolder("share/graphics");
    box.MakeFolder("other");
    box.Write("share/db.mdb", "template");
    box.Write("share/default.abc", "letters");
    box.Write("share/lib/thesaurus.xml", "words");
    box.Write("share/lib/deep/file", "deep");
    box.Write("share/graphics/wait.gif", "picture");
    box.Write("share/secret", "not laid");
    box.Write("other/db.mdb", "of another installation");
    chmod(box.Bytes("share/db.mdb").constData(), 0444);
    const QStringList shares{box.Path("none"), box.Path("share"), box.Path("other")};
    const QString folder = box.Path("data/velmora");

    ASSERT_TRUE(LayProgramFolder(folder, shares).Ok());
    EXPECT_EQ(box.Read("data/velmora/db.mdb"), "template");
    EXPECT_EQ(box.Read("data/velmora/default.abc"), "letters");
    EXPECT_EQ(box.Read("data/velmora/lib/deep/file"), "deep");
    EXPECT_EQ(box.Read("data/velmora/graphics/wait.gif"), "picture");
    EXPECT_TRUE(IsFolder(box.Path("data/velmora/indexes")));
    EXPECT_EQ(box.Count("data/velmora"), 5);
    EXPECT_EQ(StatusOf(folder)->mode, 0700u);
    EXPECT_NE(StatusOf(box.Path("data/velmora/db.mdb"))->mode & 0200, 0u);

    box.Write("data/velmora/db.mdb", "the user's rows");
    box.Write("data/velmora/lib/thesaurus.xml", "the user's words");
    ASSERT_TRUE(RemoveFile(box.Path("data/velmora/graphics/wait.gif")).Ok());
    ASSERT_TRUE(LayProgramFolder(folder, shares).Ok());
    EXPECT_EQ(box.Read("data/velmora/db.mdb"), "the user's rows");
    EXPECT_EQ(box.Read("data/velmora/lib/thesaurus.xml"), "the user's words");
    EXPECT_EQ(box.Read("data/velmora/graphics/wait.gif"), "picture");
}

TEST(ProgramFolder, ToldWhenItCannotBeLaid) {
    const Sandbox box;
    box.Write("file");
    EXPECT_EQ(LayProgramFolder(box.Path("file"), {}).code, ENOTDIR);
    EXPECT_TRUE(LayProgramFolder(box.Path("fresh"), {box.Path("none")}).Ok());
    EXPECT_TRUE(IsFolder(box.Path("fresh/indexes")));
}

TEST(ProgramFolder, OfThisProcessFollowsTheOverride) {
    const Sandbox box;
    const Variable home("VELMORA_HOME", box.Bytes("my home/"));
    const auto chosen = [&] {
        return ProgramFolder() == box.Path("my home") && ProgramFolderError().Ok();
    };
    EXPECT_EQ(InOtherProcess([&] { return chosen() ? 0 : 1; }), 0); // a process chooses but once
    EXPECT_TRUE(IsFolder(box.Path("my home/indexes")));
}

TEST(WorkerProgram, MustBeAFileThatRuns) {
    const Sandbox box;
    box.Write("worker");
    const Variable worker("VELMORA_WORKER", box.Bytes("worker"));
    EXPECT_EQ(WorkerProgram(), QString());
    chmod(box.Bytes("worker").constData(), 0755);
    EXPECT_EQ(WorkerProgram(), box.Path("worker"));
    const Variable folder("VELMORA_WORKER", box.Bytes());
    EXPECT_EQ(WorkerProgram(), QString());
}
