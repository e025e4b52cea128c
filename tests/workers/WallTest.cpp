// The wall: what a worker that was taken over by its document cannot reach, and what it still can.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "TestPool.h"
#include "TestWorkerActs.h"

#include "workers/Sandbox.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

using namespace workers;

namespace {

class WallTest : public PoolTest {};

bool Refused(const std::string& error) {
    return error == std::to_string(EPERM) || error == std::to_string(EACCES);
}

} // namespace

TEST_F(WallTest, EveryActIsRefusedBehindTheWallAndNoneBeforeIt) {
    ASSERT_TRUE(AvailableWalls().systemCalls) << "these tests need a kernel with seccomp";
    options.settings.emplace_back("rehearse", "");
    Pool pool(options);
    EXPECT_EQ(Run(pool, "tell", "rehearsal").Text(), "");
    for (const auto& [name, act] : Acts()) {
        SCOPED_TRACE(name);
        const Result result = Run(pool, "try", name);
        EXPECT_EQ(result.ending, Ending::Done) << result.message;
        EXPECT_TRUE(Refused(result.Text())) << result.Text();
    }
    EXPECT_TRUE(Refused(Run(pool, "misbehave", "start a program").Text()));
    ExpectGood(pool);
}

TEST_F(WallTest, WhatOnlyAnAttackerTriesEndsTheWorker) {
    Pool pool(options);
    for (const char* act : {"trace", "mount", "read the parent", "foreign call"}) {
        SCOPED_TRACE(act);
        const Result result = Run(pool, "misbehave", act);
        EXPECT_EQ(result.ending, Ending::Crashed);
        EXPECT_EQ(result.message, "the worker tried a forbidden system call");
        ExpectGood(pool);
    }
}

TEST_F(WallTest, ParsersFindWhatTheyNeed) {
    options.memoryLimit = std::size_t{64} << 20;
    Pool pool(options);
    const bool files = AvailableWalls().landlock > 0;
    EXPECT_EQ(Run(pool, "harmless", "convert").Text(), files ? "中" : "no converter");
    EXPECT_EQ(Run(pool, "harmless", "system data").Text(), files ? "read" : "refused");
    EXPECT_EQ(Run(pool, "harmless", "stat").Text(), "12");
    EXPECT_EQ(pool.Walls(), AvailableWalls().Describe());

    // A document much larger than the memory cap can be mapped.
    std::filesystem::resize_file(document, std::uintmax_t{3} << 30);
    std::fstream(document, std::ios::in | std::ios::out).seekp(-4, std::ios::end) << "tail";
    EXPECT_EQ(Run(pool, "harmless", "map").Text(), "tail");
}

TEST_F(WallTest, AWorkerInheritsNothingButWhatItIsGiven) {
    ::setenv("SESSION_KEY", "secret", 1);
    // Inheritable, as a careless library leaves them.
    const int leaked = ::open(document.c_str(), O_RDONLY); // NOLINT: without O_CLOEXEC
    Pool pool(options);
    EXPECT_EQ(Run(pool, "tell", "descriptors").Text(), "0 1 2 3 ");
    const std::string environment = Run(pool, "tell", "environment").Text();
    EXPECT_EQ(environment.find("SESSION_KEY"), std::string::npos);
    EXPECT_NE(environment.find("OMP_THREAD_LIMIT=1"), std::string::npos);
    ::close(leaked);
    ::unsetenv("SESSION_KEY");
}

TEST_F(WallTest, WithoutLandlockNoFileIsOpenedByName) {
    const int file = ::open(document.c_str(), O_RDONLY | O_CLOEXEC);
    const pid_t child = ::fork();
    if (child == 0) {
        try {
            const WallsReport report = EnterWalls(false);
            const bool refused = ::open("/usr/share", O_RDONLY) < 0 && errno == EPERM;
            char byte = 0;
            const bool readable = ::read(file, &byte, 1) == 1 && byte == 't';
            ::_exit(report.systemCalls && report.landlock == 0 && refused && readable ? 0 : 1);
        } catch (...) {
            ::_exit(2);
        }
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    ::close(file);
}

TEST(WallsReportTest, NamesWhatStaysReachable) {
    EXPECT_EQ((WallsReport{true, 2, false}.Describe()),
              "system calls filtered; files guarded by Landlock 2");
    EXPECT_EQ((WallsReport{true, 0, false}.Describe()),
              "system calls filtered; no file can be opened by name");
    EXPECT_EQ((WallsReport{false, 0, false}.Describe()),
              "system calls not filtered (network and programs stay reachable); files not guarded");
}

TEST_F(WallTest, ThreadsLeftByThePreparationAreNotAccepted) {
    options.settings.emplace_back("leave a thread", "");
    Pool pool(options);
    const Result result = Run(pool, "echo", "1 1 0");
    EXPECT_EQ(result.ending, Ending::Crashed);
    EXPECT_EQ(result.message,
              "the worker cannot be started: a worker must not have threads of its own");
}
