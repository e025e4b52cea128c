// Copies and moves of real files: what they keep, what they ask, and that nothing is ever lost.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Carrier.h"
#include "ScriptedObserver.h"
#include "TestSupport.h"
#include "platform/Rename.h"
#include "tests/engine/SmallDisk.h"

#include <cerrno>
#include <csignal>
#include <sys/xattr.h>

namespace platform {
namespace {

using engine_test::SmallDisk;
using testing_support::AsPlainUser;
using testing_support::Sandbox;
using testing_support::ScriptedObserver;

constexpr ConflictChoice kAllChoices[] = {ConflictChoice::Skip, ConflictChoice::Replace,
                                          ConflictChoice::KeepBoth};

class CarrierTest : public testing::Test {
  protected:
    CarrierTest() {
        box.MakeFolder("from");
        box.MakeFolder("to");
    }
    CarryResult Copy(const QByteArray& name) {
        return observer.Carry({box.Path(name)}, box.Path("to"), CarryMode::Copy);
    }
    CarryResult Move(const QByteArray& name) {
        return observer.Carry({box.Path(name)}, box.Path("to"), CarryMode::Move);
    }
    bool Has(const QByteArray& name) const { return OwnStatusOf(box.Path(name)).has_value(); }

    Sandbox box;
    ScriptedObserver observer;
};

struct stat StatOf(const QByteArray& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.constData(), &status), 0) << path.constData();
    return status;
}

QByteArray Attribute(const QByteArray& path) {
    char value[64];
    const ssize_t size = getxattr(path.constData(), "user.origin", value, sizeof value);
    return size < 0 ? QByteArray("none") : QByteArray(value, size);
}

TEST_F(CarrierTest, ACopyKeepsAllThatBelongsToAFile) {
    box.MakeFolder("from/tree/deep");
    box.Write("from/tree/deep/plain", "content");
    ASSERT_EQ(chmod(box.Bytes("from/tree/deep/plain").constData(), 0640), 0);
    setxattr(box.Bytes("from/tree/deep/plain").constData(), "user.origin", "scan", 4, 0);
    const timespec times[2] = {{1000, 0}, {1'600'000'000, 123'456'789}};
    ASSERT_EQ(utimensat(AT_FDCWD, box.Bytes("from/tree/deep/plain").constData(), times, 0), 0);
    // A hole of 64 MB between two blocks.
    box.Write("from/tree/sparse", "begin");
    ASSERT_EQ(truncate(box.Bytes("from/tree/sparse").constData(), 64 << 20), 0);
    const int end = open(box.Bytes("from/tree/sparse").constData(), O_WRONLY | O_APPEND);
    ASSERT_EQ(write(end, "end", 3), 3);
    close(end);
    ASSERT_EQ(symlink("b", box.Bytes("from/tree/a").constData()), 0);
    ASSERT_EQ(symlink("a", box.Bytes("from/tree/b").constData()), 0);
    ASSERT_EQ(mkfifo(box.Bytes("from/tree/pipe").constData(), 0600), 0);
    ASSERT_EQ(chmod(box.Bytes("from/tree/deep").constData(), 0510), 0);
    ASSERT_EQ(utimensat(AT_FDCWD, box.Bytes("from/tree/deep").constData(), times, 0), 0);

    const CarryResult result = Copy("from/tree");
    EXPECT_EQ(result.passedOver, QStringList{box.Path("from/tree/pipe")});
    EXPECT_TRUE(observer.problems.empty() && observer.conflicts.empty());
    EXPECT_EQ(box.Read("to/tree/deep/plain"), "content");
    const struct stat plain = StatOf(box.Bytes("to/tree/deep/plain"));
    EXPECT_EQ(plain.st_mode & 07777, 0640u);
    EXPECT_EQ(plain.st_mtim.tv_sec, times[1].tv_sec);
    EXPECT_EQ(plain.st_mtim.tv_nsec, times[1].tv_nsec);
    EXPECT_EQ(Attribute(box.Bytes("to/tree/deep/plain")),
              Attribute(box.Bytes("from/tree/deep/plain")));
    EXPECT_EQ(StatOf(box.Bytes("to/tree/deep")).st_mode & 07777, 0510u);
    EXPECT_EQ(StatOf(box.Bytes("to/tree/deep")).st_mtim.tv_sec, times[1].tv_sec);
    const struct stat sparse = StatOf(box.Bytes("to/tree/sparse"));
    EXPECT_EQ(sparse.st_size, (64 << 20) + 3);
    EXPECT_LT(sparse.st_blocks * 512, 1 << 20);
    EXPECT_TRUE(box.Read("to/tree/sparse") == box.Read("from/tree/sparse"));
    char text[8] = {};
    EXPECT_EQ(readlink(box.Bytes("to/tree/b").constData(), text, sizeof text), 1);
    EXPECT_STREQ(text, "a");
    EXPECT_FALSE(Has("to/tree/pipe"));
    EXPECT_EQ(observer.progress.files, observer.progress.totalFiles - 1); // the pipe
    EXPECT_EQ(observer.progress.bytes, observer.progress.totalBytes);
    ASSERT_EQ(chmod(box.Bytes("from/tree/deep").constData(), 0700), 0);
}

TEST_F(CarrierTest, NamesOfAnyBytesAndCaseTwinsMoveEachForItself) {
    const std::vector<QByteArray> names = {
        "it's \"quoted\"", "two\nlines",  "b\xE4r", "A.TXT",
        "a.txt",           "back\\slash", "-rf",    "\xEF\x81\x9C"};
    for (const QByteArray& name : names) {
        box.Write("from/" + name, name);
        const CarryResult result = Move("from/" + name);
        ASSERT_EQ(result.done.size(), 1u) << name.constData();
        EXPECT_EQ(EncodeName(result.done[0].to), box.Bytes("to/" + name));
    }
    for (const QByteArray& name : names) {
        EXPECT_EQ(box.Read("to/" + name), name);
    }
    EXPECT_EQ(box.Count("from"), 0);
}

TEST_F(CarrierTest, ATakenNameIsNeverTakenAwaySilently) {
    for (const ConflictChoice choice : kAllChoices) {
        for (const CarryMode mode : {CarryMode::Copy, CarryMode::Move}) {
            box.Write("from/a.tif", "new");
            box.Write("to/a.tif", "old old");
            observer.conflicts.clear();
            observer.conflictAnswers = {{choice, false}};
            const CarryResult result =
                observer.Carry({box.Path("from/a.tif")}, box.Path("to"), mode);
            ASSERT_EQ(observer.conflicts.size(), 1u);
            EXPECT_EQ(observer.conflicts[0].from.status.size, 3);
            EXPECT_EQ(observer.conflicts[0].to.status.size, 7);
            const bool replaced = choice == ConflictChoice::Replace;
            const bool both = choice == ConflictChoice::KeepBoth;
            EXPECT_EQ(box.Read("to/a.tif"), replaced ? "new" : "old old");
            EXPECT_EQ(box.Read("to/a (2).tif"), both ? "new" : "");
            EXPECT_EQ(Has("from/a.tif"), mode == CarryMode::Copy || choice == ConflictChoice::Skip);
            EXPECT_EQ(result.done.size(), choice == ConflictChoice::Skip ? 0u : 1u);
            EXPECT_TRUE(RemoveEntry(box.Path("to/a (2).tif"), false).Ok());
        }
    }
    // Cancel leaves both.
    box.Write("from/a.tif", "new");
    box.Write("to/a.tif", "old");
    EXPECT_TRUE(Move("from/a.tif").cancelled);
    EXPECT_EQ(box.Read("from/a.tif") + box.Read("to/a.tif"), "newold");
}

TEST_F(CarrierTest, WhatCannotBeReplacedIsNotOfferedForIt) {
    box.Write("from/a", "file");
    box.MakeFolder("to/a");
    observer.conflictAnswers = {{ConflictChoice::Replace, false}};
    EXPECT_TRUE(Copy("from/a").done.empty());
    EXPECT_FALSE(observer.conflicts[0].canReplace);
    // Onto itself, directly and through a second name of the same file.
    box.Write("to/self", "content");
    ASSERT_EQ(link(box.Bytes("to/self").constData(), box.Bytes("from/self").constData()), 0);
    for (const QByteArray& from : {QByteArray("to/self"), QByteArray("from/self")}) {
        observer.conflictAnswers = {{ConflictChoice::Replace, false}};
        Copy(from);
        EXPECT_FALSE(observer.conflicts.back().canReplace);
        EXPECT_EQ(box.Read("to/self"), "content");
    }
    observer.conflictAnswers = {{ConflictChoice::KeepBoth, false}};
    Copy("to/self");
    EXPECT_EQ(box.Read("to/self (2)"), "content");
    // What changed since it was shown is asked about again, not overwritten.
    box.Write("from/b", "new");
    box.Write("to/b", "old");
    observer.conflicts.clear();
    observer.conflictAnswers = {{ConflictChoice::Replace, false}, {ConflictChoice::Skip, false}};
    observer.onProgress = [&](const CarryProgress& now) {
        if (now.bytes > 0) {
            box.Write("to/b", "somebody else's work");
        }
        return true;
    };
    Copy("from/b");
    EXPECT_EQ(observer.conflicts.size(), 2u);
    EXPECT_EQ(box.Read("to/b"), "somebody else's work");
    // So is a name that was free when the copy began.
    box.Write("from/c", "new");
    observer.conflictAnswers = {{ConflictChoice::Skip, false}};
    observer.onProgress = [&](const CarryProgress& now) {
        if (now.bytes > 0) {
            box.Write("to/c", "somebody else's work");
        }
        return true;
    };
    Copy("from/c");
    EXPECT_EQ(observer.conflicts.size(), 3u);
    EXPECT_EQ(box.Read("to/c"), "somebody else's work");
}

TEST_F(CarrierTest, FoldersMergeAndOneAnswerServesAll) {
    for (const char* side : {"from", "to"}) {
        for (const char* name : {"/f/x", "/f/y", "/f/sub/z"}) {
            box.MakeFolder(QByteArray(side) + "/f/sub");
            box.Write(QByteArray(side) + name, QByteArray(side));
        }
    }
    box.Write("from/f/new", "new");
    box.Write("to/f/stays", "stays");
    observer.conflictAnswers = {{ConflictChoice::Replace, false}, {ConflictChoice::Skip, true}};
    CarryResult result = Move("from/f");
    EXPECT_EQ(observer.conflicts.size(), 2u);
    EXPECT_TRUE(observer.conflicts[0].IsMerge());
    EXPECT_EQ(box.Read("to/f/sub/z"), "to");
    EXPECT_EQ(box.Read("from/f/sub/z"), "from");
    // In part: only what lies directly in it and really moved.
    ASSERT_EQ(result.done.size(), 1u);
    EXPECT_EQ(result.done[0].from, box.Path("from/f/new"));
    EXPECT_FALSE(result.done[0].isFolder);
    observer.conflictAnswers = {{ConflictChoice::Replace, true}, {ConflictChoice::Replace, true}};
    result = Move("from/f");
    ASSERT_EQ(result.done.size(), 1u);
    EXPECT_TRUE(result.done[0].isFolder);
    EXPECT_FALSE(Has("from/f"));
    EXPECT_EQ(box.Read("to/f/sub/z") + box.Read("to/f/stays"), "fromstays");
}

TEST_F(CarrierTest, NothingGoesIntoItself) {
    box.MakeFolder("from/a/b");
    ASSERT_EQ(symlink("a/b", box.Bytes("from/way").constData()), 0);
    for (const CarryMode mode : {CarryMode::Copy, CarryMode::Move}) {
        for (const char* target : {"from/a", "from/a/b", "from/way"}) {
            observer.problems.clear();
            observer.Carry({box.Path("from/a")}, box.Path(target), mode);
            ASSERT_EQ(observer.problems.size(), 1u);
            EXPECT_EQ(observer.problems[0].step, CarryStep::IntoItself);
            EXPECT_EQ(box.Count("from/a/b"), 0);
        }
    }
}

TEST_F(CarrierTest, CancelInTheMiddleLeavesNothingHalf) {
    box.MakeFolder("from/f");
    for (const char* name : {"1", "2", "3"}) {
        box.Write(QByteArray("from/f/") + name, QByteArray(9 << 20, *name));
    }
    observer.onProgress = [&](const CarryProgress& now) { return now.bytes < (14 << 20); };
    const CarryResult result = Copy("from/f");
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(box.Read("to/f/1").size(), 9 << 20);
    EXPECT_EQ(box.Count("to/f"), 1); // no trace of the second
}

TEST_F(CarrierTest, RefusalsTellWhereAndNothingIsTouched) {
    box.MakeFolder("locked");
    box.Write("locked/kept", "kept");
    box.Write("from/secret", "secret");
    box.Write("from/open", "open");
    ASSERT_EQ(chmod(box.Bytes("from/secret").constData(), 0), 0);
    ASSERT_EQ(chmod(box.Bytes().constData(), 0755), 0);
    ASSERT_EQ(chmod(box.Bytes("to").constData(), 0777), 0);
    EXPECT_EQ(AsPlainUser([&] {
                  observer.problemAnswers = {{ProblemChoice::Skip, false},
                                             {ProblemChoice::Skip, false},
                                             {ProblemChoice::Skip, false}};
                  Copy("from/secret");
                  Move("locked/kept");
                  observer.Carry({box.Path("from/open")}, box.Path("locked"), CarryMode::Copy);
                  const auto& told = observer.problems;
                  const bool right =
                      told.size() == 3 && told[0].step == CarryStep::Read &&
                      told[0].path == box.Path("from/secret") && told[1].step == CarryStep::Move &&
                      told[2].step == CarryStep::Write && told[2].path == box.Path("locked/open") &&
                      told[2].error.code == EACCES;
                  return right ? 0 : 1;
              }),
              0);
    EXPECT_EQ(box.Read("locked/kept"), "kept");
    EXPECT_EQ(box.Count("to"), 0);
    // One answer for all of a kind.
    observer.problemAnswers = {{ProblemChoice::Skip, true}};
    const CarryResult result =
        observer.Carry({box.Path("gone1"), box.Path("gone2"), box.Path("from/open")},
                       box.Path("to"), CarryMode::Copy);
    EXPECT_EQ(observer.problems.size(), 1u);
    EXPECT_EQ(result.skipped, 2);
    EXPECT_EQ(box.Read("to/open"), "open");
}

TEST_F(CarrierTest, ARenameTakesNobodysName) {
    box.Write("from/a.txt", "a");
    box.Write("from/A.TXT", "A");
    EXPECT_EQ(RenameEntry(box.Path("from/a.txt"), box.Path("from/A.TXT")).code, EEXIST);
    EXPECT_EQ(box.Read("from/a.txt") + box.Read("from/A.TXT"), "aA");
    EXPECT_TRUE(RenameEntry(box.Path("from/a.txt"), box.Path("from/a.TXT")).Ok());
    EXPECT_EQ(box.Count("from"), 2);
    // Two names of one file that differ by case are no change of case.
    ASSERT_EQ(link(box.Bytes("from/A.TXT").constData(), box.Bytes("from/A.txt").constData()), 0);
    EXPECT_EQ(RenameEntry(box.Path("from/A.TXT"), box.Path("from/A.txt")).code, EEXIST);
    EXPECT_EQ(RenameEntry(box.Path("from/gone"), box.Path("from/x")).code, ENOENT);
    EXPECT_EQ(FreeName(box.Path("from/" + QByteArray(250, 'n') + ".tif")).section(u'/', -1).size(),
              255);
}

// A second disk, for the moves that copy.
class AcrossDisksTest : public CarrierTest {
  protected:
    void SetUp() override { ASSERT_TRUE(disk.IsMounted()) << "this system lets nobody mount"; }
    void Fill() {
        box.MakeFolder("from/f/sub");
        for (const QByteArray& name : kNames) {
            box.Write("from/f/" + name, Content(name));
        }
    }
    static QByteArray Content(const QByteArray& name) {
        return QByteArray(name == "big" ? 6 << 20 : 10'000, name[0]);
    }
    int MoveIt(ScriptedObserver& by) {
        return by.Carry({box.Path("from/f")}, box.Path("to"), CarryMode::Move).cancelled ? 1 : 0;
    }
    // Each file is whole in one place at least, and half in none.
    void ExpectNothingLost(const char* when) {
        for (const QByteArray& name : kNames) {
            const QByteArray from = box.Read("from/f/" + name);
            const QByteArray to = box.Read("to/f/" + name);
            EXPECT_TRUE(to == Content(name) || (to.isEmpty() && !Has("to/f/" + name)))
                << when << ": half a file " << name.constData();
            EXPECT_TRUE(from == Content(name) || to == Content(name))
                << when << ": lost " << name.constData();
        }
    }

    // Enough small ones that they wait for the disk together.
    const std::vector<QByteArray> kNames = {"1",     "2",   "3",        "4", "5",
                                            "a.tif", "big", "sub/deep", "z"};
    SmallDisk disk{box.Path("to"), 16};
};

TEST_F(AcrossDisksTest, AKillAtAnyStepLosesNothing) {
    Fill();
    ASSERT_EQ(MoveIt(observer), 0);
    const int steps = observer.calls;
    ASSERT_GT(steps, 8);
    EXPECT_FALSE(Has("from/f"));
    ExpectNothingLost("not killed");
    for (int step = 1; step <= steps; ++step) {
        std::error_code ignored;
        std::filesystem::remove_all(box.Bytes("to/f").constData(), ignored);
        Fill();
        testing_support::InOtherProcess([&] {
            ScriptedObserver killer;
            killer.onProgress = [&](const CarryProgress&) {
                return killer.calls < step || raise(SIGKILL) == 0;
            };
            return MoveIt(killer);
        });
        ExpectNothingLost(qPrintable(QString::number(step)));
        EXPECT_EQ(box.Count("to"), Has("to/f") ? 1 : 0);
        // The move is finished by doing it again.
        ScriptedObserver again;
        again.conflictAnswers = {{ConflictChoice::Replace, true}, {ConflictChoice::Replace, true}};
        if (Has("from/f")) {
            EXPECT_EQ(MoveIt(again), 0);
        }
        EXPECT_FALSE(Has("from/f")) << step;
        ExpectNothingLost("again");
    }
}

TEST_F(AcrossDisksTest, AFullDiskLosesNothingAndCanBeRetried) {
    Fill();
    disk.LeaveFree(2 << 20);
    EXPECT_EQ(MoveIt(observer), 1);
    ASSERT_EQ(observer.problems.size(), 1u);
    EXPECT_EQ(observer.problems[0].step, CarryStep::Space);
    EXPECT_GT(observer.problems[0].needed, observer.problems[0].free);
    EXPECT_FALSE(Has("to/f"));
    // Continued all the same: the disk says no at the big file.
    observer.problemAnswers = {{ProblemChoice::Skip, false}};
    EXPECT_EQ(MoveIt(observer), 1);
    EXPECT_EQ(observer.problems.back().step, CarryStep::Write);
    EXPECT_EQ(observer.problems.back().error.code, ENOSPC);
    ExpectNothingLost("full");
    EXPECT_EQ(box.Count("to/f"), 6); // the small ones, and no trace of the big one
    // Room is made while the question stands.
    observer.problems.clear();
    observer.conflictAnswers = {{ConflictChoice::Replace, false}};
    observer.problemAnswers = {{ProblemChoice::Skip, false}, {ProblemChoice::Retry, false}};
    observer.onProblem = [&] {
        if (observer.problems.back().step == CarryStep::Write) {
            disk.GiveBack();
        }
    };
    EXPECT_EQ(MoveIt(observer), 0);
    EXPECT_FALSE(Has("from/f"));
    ExpectNothingLost("retried");
    EXPECT_EQ(box.Count("to/f"), 9);
}

TEST_F(AcrossDisksTest, ASourceThatChangesMeanwhileStays) {
    box.Write("from/log", QByteArray(9 << 20, 'l'));
    observer.onProgress = [&](const CarryProgress& now) {
        if (now.bytes > 0 && observer.problems.empty()) {
            box.Write("from/log", "rewritten");
        }
        return true;
    };
    observer.problemAnswers = {{ProblemChoice::Skip, false}};
    EXPECT_TRUE(Move("from/log").done.empty());
    ASSERT_EQ(observer.problems.size(), 1u);
    EXPECT_EQ(observer.problems[0].error.code, ESTALE);
    EXPECT_EQ(box.Read("from/log"), "rewritten");
    EXPECT_EQ(box.Count("to"), 0);
}

} // namespace
} // namespace platform
