// Disks that are full, or may only be read.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "IndexAudit.h"
#include "PhaseFixture.h"
#include "SmallDisk.h"

#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace engine_test {
namespace {

using engine::IndexFault;

class FullDisk : public PhaseFixture, public testing::WithParamInterface<Phase> {
  protected:
    FullDisk() : PhaseFixture(GetParam()) {}
};

TEST_P(FullDisk, IsToldAndTheOldIndexAnswers) {
    const SmallDisk disk(IndexFolder(), 48);
    if (!disk.IsMounted())
        GTEST_SKIP() << "this system lets nobody mount a disk";
    int full = 0;
    // In bytes; in the end there is room for all.
    for (const qint64 room : {0, 40'000, 150'000, 400'000, 900'000, 1'600'000, 40'000'000}) {
        SCOPED_TRACE("room " + std::to_string(room));
        Restore();
        if (room < 40'000'000)
            disk.LeaveFree(room);
        const engine::IndexReport report = m_job.Job().Execute();
        if (report.fault) {
            EXPECT_EQ(*report.fault, IndexFault::DiskFull) << report.faultText.toStdString();
            ++full;
        } else {
            EXPECT_EQ(Difference(ContentOf(IndexFolder()), m_fresh), "");
        }
        // Nothing frees room for the search.
        if (m_phase != Phase::Create && m_phase != Phase::Mend) {
            EXPECT_FALSE(Search("document").fault) << Search("document").faultText.toStdString();
            EXPECT_GT(Search("document").found, 10U);
        }
        disk.GiveBack();
        ASSERT_NO_FATAL_FAILURE(ExpectWhole());
        ASSERT_NO_FATAL_FAILURE(ExpectTheNextUpdateToFinish());
    }
    EXPECT_GE(full, 2);
    EXPECT_LE(full, 6);
}

INSTANTIATE_TEST_SUITE_P(Run, FullDisk, kPhases,
                         [](const auto& param) { return NameOf(param.param); });

class ReadOnly : public PhaseFixture {
  protected:
    ReadOnly() : PhaseFixture(Phase::Update) {}
    [[nodiscard]] QString File(const char* suffix = "") const {
        return IndexFolder() + QStringLiteral("/index_a.ix") + QLatin1String(suffix);
    }
    // As a run leaves it that was killed: with a log that holds its commits.
    void LeaveLog() const {
        Restore();
        const QByteArray path = File().toUtf8();
        const pid_t child = fork();
        if (child == 0) {
            // While somebody else has the index open, the log stays; and that one closes nothing.
            engine::IndexFile open(path.toStdString(), engine::IndexMode::Search, {});
            (void)open.Meta("alphabet");
            _exit(m_job.Job().Execute().fault ? 1 : 0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        ASSERT_EQ(status, 0);
        ASSERT_GT(QFileInfo(File("-wal")).size(), 100'000);
    }
    // Answers of a search by somebody who owns nothing here; 255: it could not be asked.
    [[nodiscard]] int FoundByAStranger() const {
        const pid_t child = fork();
        if (child == 0) {
            constexpr unsigned kNobody = 65534;
            if (geteuid() == 0 &&
                (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0))
                _exit(255);
            const engine::SearchResults results = Search("document");
            _exit(results.fault ? 200 + static_cast<int>(*results.fault)
                                : static_cast<int>(results.found));
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // Mode of the index's folder and of what is in it.
    void SetModes(mode_t folder, mode_t files) const {
        chmod(m_folder.path().toUtf8().constData(), 0755);
        for (const QString& name : QDir(IndexFolder()).entryList(QDir::Files))
            chmod((IndexFolder() + QLatin1Char('/') + name).toUtf8().constData(), files);
        chmod(IndexFolder().toUtf8().constData(), folder);
    }
};

TEST_F(ReadOnly, AFolderOfSomebodyElseCanBeSearched) {
    ASSERT_FALSE(m_job.Job().Execute().fault);
    const int fresh = static_cast<int>(Search("document").found);
    Restore();
    const int documents = static_cast<int>(Search("document").found);
    ASSERT_GT(documents, 10);
    ASSERT_NE(fresh, documents);
    QFile::remove(File("-shm"));
    QFile::remove(File("-wal"));
    SetModes(0555, 0444);
    EXPECT_EQ(FoundByAStranger(), documents);
    EXPECT_FALSE(QFile::exists(File("-wal")));
    // Whoever writes keeps such a search out, for a moment.
    {
        const engine::WriterLock writer(File().toStdString());
        EXPECT_EQ(FoundByAStranger(), 200 + static_cast<int>(IndexFault::Busy));
    }
    SetModes(0755, 0600);
    EXPECT_EQ(FoundByAStranger(), 200 + static_cast<int>(IndexFault::NoRights));
    // Commits that are still in the log count, too.
    SetModes(0755, 0644);
    LeaveLog();
    SetModes(0555, 0444);
    EXPECT_EQ(FoundByAStranger(), fresh);
    SetModes(0755, 0644);
    ExpectTheNextUpdateToFinish();
}

TEST_F(ReadOnly, ADiskThatMayOnlyBeReadCanBeSearched) {
    const SmallDisk disk(IndexFolder(), 48);
    if (!disk.IsMounted())
        GTEST_SKIP() << "this system lets nobody mount a disk";
    Restore();
    const auto documents = Search("document").found;
    QFile::remove(File("-shm"));
    QFile::remove(File("-wal"));
    disk.SetReadOnly(true);
    EXPECT_EQ(Search("document").found, documents);
    EXPECT_EQ(m_job.Job().Execute().fault, IndexFault::NoRights);
    // With a log that cannot be read the index is not taken for older than it is.
    disk.SetReadOnly(false);
    LeaveLog();
    QFile::remove(File("-shm"));
    disk.SetReadOnly(true);
    EXPECT_EQ(Search("document").fault, IndexFault::NoRights)
        << Search("document").faultText.toStdString();
    disk.SetReadOnly(false);
    ExpectTheNextUpdateToFinish();
}

} // namespace
} // namespace engine_test
