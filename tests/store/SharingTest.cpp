// Several programs on one archive: waiting, lost updates, kills.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "StoreFixture.h"
#include "core/Messages.h"
#include "tests/platform/PretendedShare.h"

#include <QProcess>
#include <thread>

using namespace velmora;

namespace {

class SharingTest : public ArchiveTest {
  protected:
    enum class Disk { Own, Share };
    std::unique_ptr<QProcess> Start(const QStringList& arguments, Disk disk = Disk::Own) const {
        auto process = std::make_unique<QProcess>();
        if (disk == Disk::Share) {
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert(QStringLiteral("STORE_ON_A_SHARE"), QStringLiteral("1"));
            process->setProcessEnvironment(environment);
        }
        process->start(QStringLiteral(STORE_TEST_HELPER), QStringList{Folder()} + arguments);
        EXPECT_TRUE(process->waitForStarted());
        return process;
    }
    // False when the process has ended instead.
    static bool AwaitLine(QProcess& process) {
        while (!process.canReadLine()) {
            if (!process.waitForReadyRead(60'000) && !process.canReadLine()) {
                return false;
            }
        }
        process.readLine();
        return true;
    }
    static void ExpectDone(QProcess& process) {
        EXPECT_TRUE(process.state() == QProcess::NotRunning || process.waitForFinished(120'000));
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    }
};

TEST_F(SharingTest, ALockedDatabaseIsWaitedForAndThenReported) {
    OpenConn();
    sqlite::Database other = Beside();
    auto lock = std::make_unique<sqlite::Transaction>(other);
    DbExecute(QStringLiteral("DELETE FROM tblMailFolders"));
    ASSERT_EQ(reporter.reports.size(), 1);
    EXPECT_TRUE(reporter.reports[0].contains(QStringLiteral("locked")));
    EXPECT_TRUE(reporter.reports[0].contains(QStringLiteral("ModDb/DbExecute")));

    reporter.answers = {[] { return true; },
                        [&] {
                            lock.reset();
                            return true;
                        }};
    DbExecute(QStringLiteral("INSERT INTO tblMailFolders(sentryid) VALUES(?)"),
              {QStringLiteral("E")});
    EXPECT_EQ(reporter.reports.size(), 3);
    EXPECT_EQ(Count("TblMailFolders"), 1) << "written once, on the try that got through";

    // A lock that goes away in time is not noticed at all.
    holder->gConnection.reset();
    holder->busyWait = std::chrono::minutes(2);
    OpenConn();
    lock = std::make_unique<sqlite::Transaction>(other);
    std::thread releaser([&] { lock.reset(); });
    DbExecute(QStringLiteral("DELETE FROM tblMailFolders"));
    releaser.join();
    EXPECT_EQ(Count("TblMailFolders"), 0);
    EXPECT_EQ(reporter.reports.size(), 3);
}

TEST_F(SharingTest, AReaderIsShutOutOnlyWhileAnotherCommits) {
    OpenConn();
    sqlite::Database other = Beside();
    auto lock = std::make_unique<sqlite::Transaction>(other, sqlite::Transaction::Begin::Exclusive);
    EXPECT_FALSE(GetRsIdxdFolders());
    EXPECT_EQ(reporter.reports.size(), 1);
    lock = nullptr;
    lock = std::make_unique<sqlite::Transaction>(other);
    EXPECT_TRUE(GetRsIdxdFolders());
    EXPECT_EQ(reporter.reports.size(), 1);
}

// One on the server itself, one over the network.
TEST_F(SharingTest, TwoProgramsLoseNoRowOfEachOther) {
    constexpr int kRows = 60;
    const auto first =
        Start({QStringLiteral("add"), QString::number(kRows), QStringLiteral("a")}, Disk::Share);
    const auto second = Start({QStringLiteral("add"), QString::number(kRows), QStringLiteral("b")});
    ExpectDone(*first);
    ExpectDone(*second);
    EXPECT_EQ(Text("SELECT count(DISTINCT i_id) || ' ' || count(DISTINCT sdescr) FROM "
                   "TblIdxdFolders"),
              "120 120");
    EXPECT_EQ(Count("tbltimbri"), 0) << "both opened, one made the table";
}

// Both read the same number, then both write theirs plus one: each round one of them is late.
TEST_F(SharingTest, TwoProgramsLoseNoChangeOfOneRow) {
    constexpr int kSteps = 15;
    sqlite::Database database = Beside();
    database.Exec("INSERT INTO TblIdxdFolders(sdescr, suser) VALUES('0', 'SHARED')");
    const QStringList task{QStringLiteral("count"), QString::number(kSteps)};
    const auto first = Start(task, Disk::Share);
    const auto second = Start(task, Disk::Share);
    for (bool running = true; running;) {
        const bool firstRead = AwaitLine(*first);
        const bool secondRead = AwaitLine(*second);
        for (QProcess* process : {first.get(), second.get()}) {
            process->write("go\n");
        }
        running = firstRead || secondRead;
    }
    ExpectDone(*first);
    ExpectDone(*second);
    EXPECT_EQ(Text("SELECT sdescr FROM TblIdxdFolders"), std::to_string(2 * kSteps));
}

TEST_F(SharingTest, AShareWithoutLocksIsRefusedAndLeftAsItIs) {
    using platform_test::PretendedShare;
    const auto before = QDir(Folder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const auto locks : {PretendedShare::Locks::Granted, PretendedShare::Locks::Refused}) {
        const PretendedShare share(locks);
        reporter.reports.clear();
        EXPECT_FALSE(GetRsIdxdFolders());
        ASSERT_FALSE(reporter.reports.isEmpty());
        EXPECT_TRUE(reporter.reports[0].contains(GetMessage(kLocksNowhere, {Folder()})));
    }
    EXPECT_EQ(QDir(Folder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
    const PretendedShare share;
    EXPECT_TRUE(GetRsIdxdFolders()) << "mounted anew, with locks: the same program goes on";
    EXPECT_EQ(Store().gConnection->Query(QStringLiteral("PRAGMA journal_mode"), {}).rows[0][0],
              QVariant(QStringLiteral("delete")));
}

TEST_F(SharingTest, AKillAtAnyMomentLeavesAWholeDatabase) {
    {
        sqlite::Database database = Beside();
        sqlite::Transaction transaction(database);
        for (const char* table : {"TblDocFields", "tblOcrFiles", "TblAnnotationFiles"}) {
            database.Exec(std::string("WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM "
                                      "c WHERE x < 300) INSERT INTO ") +
                          table +
                          "(spath, sfilename, suser) SELECT '\\A', x || '.TIF', 'SHARED' "
                          "FROM c");
        }
        transaction.Commit();
    }
    for (int round = 0; round < 15; ++round) {
        const auto process = Start({QStringLiteral("move")});
        for (int lines = 0; lines <= round; ++lines) {
            ASSERT_TRUE(AwaitLine(*process));
        }
        process->kill();
        process->waitForFinished();
        ASSERT_EQ(Text("SELECT count(*) || ' ' || count(DISTINCT spath) FROM (SELECT spath FROM "
                       "TblDocFields UNION ALL SELECT spath FROM tblOcrFiles UNION ALL SELECT "
                       "spath FROM TblAnnotationFiles)"),
                  "900 1")
            << "round " << round;
        ASSERT_EQ(Text("PRAGMA integrity_check"), "ok");
    }
    EXPECT_TRUE(GetRsIdxdFolders());
}

} // namespace
