// Several at one index: searches while it is written, and two who want to write.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "ChildRun.h"
#include "CrashCorpus.h"
#include "IndexAudit.h"
#include "PhaseFixture.h"
#include "tests/platform/PretendedShare.h"

#include <QDateTime>

#include <future>

namespace engine_test {
namespace {

using engine::IndexFault;
using namespace std::chrono_literals;

using platform_test::PretendedShare;

struct Scene {
    Phase phase;
    bool writerOnAShare = false;
    bool searchOnAShare = false;
};

class Together : public PhaseFixture, public testing::WithParamInterface<Scene> {
  protected:
    Together() : PhaseFixture(GetParam().phase, GetParam().writerOnAShare) {
        m_job.onAShare = GetParam().writerOnAShare;
    }
};

// From another process, as everywhere in life: the old content, the new, or what is committed.
TEST_P(Together, ASearchAlwaysAnswersWhateverIsBeingWritten) {
    std::optional<PretendedShare> share;
    if (GetParam().searchOnAShare)
        share.emplace();
    // Twice: the second run finds an index that has been in use.
    for (int run = 0; run < 2; ++run) {
        Restore();
        auto writer = std::async(std::launch::async, [&] { return RunChild(m_job); });
        int searches = 0;
        do {
            const engine::SearchResults results = Search("document");
            ++searches;
            if (results.fault) {
                const bool known =
                    (m_phase == Phase::Create && *results.fault == IndexFault::Missing) ||
                    (m_phase == Phase::Mend && *results.fault == IndexFault::Damaged);
                ASSERT_TRUE(known)
                    << static_cast<int>(*results.fault) << " " << results.faultText.toStdString();
            } else if (m_phase != Phase::Create) {
                ASSERT_GT(results.found, 10U);
            }
        } while (writer.wait_for(0s) != std::future_status::ready);
        EXPECT_EQ(writer.get().fault, "");
        EXPECT_GE(searches, 3);
        EXPECT_EQ(FaultsIn(IndexFolder()), "");
        EXPECT_EQ(Difference(ContentOf(IndexFolder()), m_fresh), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Run, Together,
                         testing::Values(Scene{Phase::Create}, Scene{Phase::Update},
                                         Scene{Phase::Remove}, Scene{Phase::Compress},
                                         Scene{Phase::Rebuild}, Scene{Phase::Mend},
                                         // Both on other computers; one on the server itself.
                                         Scene{Phase::Create, true, true},
                                         Scene{Phase::Update, true, true},
                                         Scene{Phase::Rebuild, true, false}),
                         [](const auto& param) {
                             return NameOf(param.param.phase) +
                                    (param.param.writerOnAShare ? "WriterFar" : "") +
                                    (param.param.searchOnAShare ? "SearchFar" : "");
                         });

class TwoWriters : public PhaseFixture {
  protected:
    TwoWriters() : PhaseFixture(Phase::Update) {}
    static void Age(const QString& path) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.setFileTime(QDateTime::currentDateTime(), QFileDevice::FileModificationTime);
    }
};

TEST_F(TwoWriters, OneWritesAndTheOtherIsToldSo) {
    const std::string index = (IndexFolder() + QStringLiteral("/index_a.ix")).toStdString();
    {
        const engine::WriterLock first(index);
        EXPECT_NE(RunChild(m_job).fault, "");
        EXPECT_EQ(m_job.Job().Execute().fault, IndexFault::Busy);
        EXPECT_EQ(Difference(ContentOf(IndexFolder()), m_start), "");
    }
    // Both at once: at least one does it all, and no other fault comes of it.
    auto other = std::async(std::launch::async, [&] { return RunChild(m_job); });
    const engine::IndexReport report = m_job.Job().Execute();
    EXPECT_TRUE(!report.fault || *report.fault == IndexFault::Busy);
    const Told told = other.get();
    EXPECT_TRUE(told.fault.empty() || !report.fault) << told.fault;
    ExpectTheNextUpdateToFinish();
    // Somebody who does not know of the lock beside the index, and holds the database's own.
    {
        const sqlite_test::FaultVfs impatient;
        sqlite::Database stranger(index);
        const sqlite::Transaction transaction(stranger);
        for (const bool create : {true, false}) {
            engine::IndexJob job = m_job.Job();
            job.ActionCreate = create;
            Age(Docs() + QStringLiteral("/texts/f1/t1.txt"));
            EXPECT_EQ(job.Execute().fault, IndexFault::Busy);
        }
        EXPECT_FALSE(Search("document").fault);
    }
    WriteCorpus(Docs(), engine_test::Age::Newer);
    ExpectTheNextUpdateToFinish();
    // A search that writers have to wait for is over in time.
    auto hold = std::make_unique<engine::ReaderHold>(index);
    ASSERT_TRUE(hold->Holds());
    auto writer = std::async(std::launch::async, [&] { const engine::WriterLock lock(index); });
    hold.reset();
    EXPECT_NO_THROW(writer.get());
}

// What each kind of job leaves behind it: only without a log can it be opened over a network while
// somebody else has it open.
std::string JournalMode(const QString& folder) {
    sqlite::Database database((folder + QStringLiteral("/index_a.ix")).toStdString());
    return database.ReadPragma("journal_mode");
}

TEST_F(TwoWriters, ASharedIndexHasNoLogWhereverItLies) {
    EXPECT_EQ(JournalMode(IndexFolder()), "wal");
    // Written on the server with its log, then searched and written over the network.
    {
        const PretendedShare share;
        EXPECT_FALSE(Search("document").fault);
        EXPECT_GT(Search("document").found, 10U);
    }
    {
        const sqlite::Database open((IndexFolder() + QStringLiteral("/index_a.ix")).toStdString());
        const auto reads = [&] {
            sqlite::Statement count(const_cast<sqlite::Database&>(open),
                                    "SELECT count(*) FROM document");
            return count.Step();
        };
        EXPECT_TRUE(reads()); // and keeps the log's shared memory, which is this machine's only
        const sqlite_test::FaultVfs impatient;
        const PretendedShare share;
        EXPECT_EQ(Search("document").fault, IndexFault::Busy);
        EXPECT_EQ(m_job.Job().Execute().fault, IndexFault::Busy);
    }
    m_job.onAShare = true;
    EXPECT_EQ(RunChild(m_job).fault, "");
    EXPECT_EQ(JournalMode(IndexFolder()), "delete"); // all that the file tells of a journal
    ExpectTheNextUpdateToFinish();

    // On the server's own disk the caller's word counts, and a private index gets its log back.
    m_job.onAShare = false;
    m_job.shared = true;
    for (const bool create : {true, false}) {
        m_job.create = create;
        EXPECT_EQ(RunChild(m_job).fault, "");
        EXPECT_NE(JournalMode(IndexFolder()), "wal");
    }
}

TEST_F(TwoWriters, AShareWithoutLocksIsNotWritten) {
    for (const auto locks : {PretendedShare::Locks::Granted, PretendedShare::Locks::Refused}) {
        const PretendedShare share(locks);
        const engine::IndexReport report = m_job.Job().Execute();
        EXPECT_EQ(report.fault, IndexFault::Other);
        EXPECT_TRUE(
            report.faultText.startsWith(QStringLiteral("file locks do not work on this share")));
    }
    EXPECT_EQ(Difference(ContentOf(IndexFolder()), m_start), "");
}

} // namespace
} // namespace engine_test
