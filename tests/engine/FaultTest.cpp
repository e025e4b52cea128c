// A disk that fails at any call: the run says what is wrong and nothing else, and the next update
// ends like a first one.
//
// VELMORA_FAULT_POINTS: calls tried for each way to fail and each phase (3), 0: every call.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "IndexAudit.h"
#include "PhaseFixture.h"

#include <algorithm>

namespace engine_test {
namespace {

using engine::IndexFault;
using sqlite_test::Fault;
using sqlite_test::FaultVfs;

struct Way {
    const char* name;
    Fault::Way way;
    unsigned calls;
    bool lasting;
};

constexpr Way kWays[] = {
    {"once", Fault::Way::Error, sqlite_test::kEveryCall, false},
    {"from then on", Fault::Way::Error, sqlite_test::kEveryCall, true},
    {"full", Fault::Way::Full, sqlite_test::kWrite | sqlite_test::kShmMap, true},
    {"locked", Fault::Way::Busy, sqlite_test::kLock | sqlite_test::kShmLock, true},
};

// The numbers of the calls to be tried, of so many.
std::vector<std::int64_t> Points(std::int64_t calls) {
    const int wanted = FromEnvironment("VELMORA_FAULT_POINTS", 3);
    const std::int64_t step = wanted <= 0 ? 1 : std::max<std::int64_t>(1, calls / wanted);
    std::vector<std::int64_t> points;
    // Not always the same: neighbouring phases begin elsewhere.
    for (std::int64_t at = 1 + (wanted <= 0 ? 0 : (calls * 7) % step); at <= calls; at += step)
        points.push_back(at);
    return points;
}

class FailingDisk : public PhaseFixture, public testing::WithParamInterface<Phase> {
  protected:
    FailingDisk() : PhaseFixture(GetParam()) {}

    void ExpectClear(const engine::IndexReport& report, Fault::Way way) const {
        if (!report.fault) {
            // Some calls may fail without harm; then all is done.
            EXPECT_EQ(Difference(ContentOf(IndexFolder()), m_fresh), "") << "done, it said";
            return;
        }
        const std::string words = report.faultText.toStdString();
        EXPECT_NE(*report.fault, IndexFault::Damaged) << words;
        EXPECT_EQ(*report.fault == IndexFault::DiskFull, way == Fault::Way::Full) << words;
        EXPECT_EQ(*report.fault == IndexFault::Busy, way == Fault::Way::Busy) << words;
        EXPECT_FALSE(words.empty());
    }
    // One run in which that call fails. True: it told so.
    bool FailsAt(FaultVfs& vfs, const Fault& fault) const {
        Restore();
        vfs.Plan(fault);
        const engine::IndexReport report = m_job.Job().Execute();
        vfs.Plan({});
        ExpectClear(report, fault.way);
        EXPECT_TRUE(m_phase == Phase::Mend || report.damagedKept.isEmpty());
        ExpectWhole();
        ExpectTheNextUpdateToFinish();
        return report.fault.has_value();
    }
};

TEST_P(FailingDisk, IsToldAndCostsNothing) {
    FaultVfs vfs;
    for (const Way& way : kWays) {
        Fault fault{way.way, way.calls, 0, way.lasting, {}, 1};
        Restore();
        vfs.Plan(fault);
        ASSERT_FALSE(m_job.Job().Execute().fault);
        const std::int64_t calls = vfs.Calls();
        int faults = 0;
        for (const std::int64_t at : Points(calls)) {
            SCOPED_TRACE(std::string(way.name) + ", call " + std::to_string(at) + " of " +
                         std::to_string(calls));
            fault.at = at;
            faults += FailsAt(vfs, fault) ? 1 : 0;
            if (HasFailure())
                return;
        }
        EXPECT_GT(faults, 0) << way.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Run, FailingDisk, kPhases,
                         [](const auto& param) { return NameOf(param.param); });

class FailingSearch : public PhaseFixture {
  protected:
    FailingSearch() : PhaseFixture(Phase::Update) {}
    [[nodiscard]] static std::vector<std::string> Lines(const engine::SearchResults& results) {
        std::vector<std::string> lines;
        for (const engine::SearchItem& item : results.items)
            lines.push_back((item.Spelling + u' ' + item.HitsString()).toStdString());
        return lines;
    }
};

// A search that cannot read everything finds nothing and says so: never a part of the truth.
TEST_F(FailingSearch, AnswersWholeOrNotAtAll) {
    const engine::SearchJob job =
        Request(QStringLiteral("license w/5 software or docu* and not younger"));
    FaultVfs vfs;
    Fault fault;
    vfs.Plan(fault);
    const engine::SearchResults good = job.Execute();
    ASSERT_FALSE(good.fault);
    ASSERT_GT(good.items.size(), 10U);
    const std::int64_t calls = vfs.Calls();
    for (const Fault::Way way : {Fault::Way::Error, Fault::Way::Corrupt}) {
        int damaged = 0;
        for (fault.at = 1; fault.at <= calls; ++fault.at) {
            SCOPED_TRACE("call " + std::to_string(fault.at));
            fault.way = way;
            vfs.Plan(fault);
            const engine::SearchResults results = job.Execute();
            if (!results.fault) {
                EXPECT_EQ(Lines(results), Lines(good));
                continue;
            }
            EXPECT_TRUE(results.items.empty());
            EXPECT_EQ(*results.fault == IndexFault::Damaged, way == Fault::Way::Corrupt)
                << results.faultText.toStdString();
            damaged += *results.fault == IndexFault::Damaged ? 1 : 0;
        }
        EXPECT_EQ(damaged > 0, way == Fault::Way::Corrupt);
    }
}

// What the database calls damaged in the middle of an update is replaced, wherever it is met.
TEST_F(FailingSearch, DamageMetByAnUpdateIsMended) {
    FaultVfs vfs;
    Fault fault{Fault::Way::Corrupt, sqlite_test::kRead, 0, false, "/index_a.ix", 1};
    vfs.Plan(fault);
    ASSERT_FALSE(m_job.Job().Execute().fault);
    int mended = 0;
    for (const std::int64_t at : Points(vfs.Calls())) {
        SCOPED_TRACE("read " + std::to_string(at));
        Restore();
        fault.at = at;
        vfs.Plan(fault);
        const engine::IndexReport report = m_job.Job().Execute();
        vfs.Plan({});
        ASSERT_FALSE(report.fault) << report.faultText.toStdString();
        mended += report.damagedKept.isEmpty() ? 0 : 1;
        EXPECT_EQ(report.damagedKept.isEmpty(), !QFile::exists(report.damagedKept));
        EXPECT_EQ(FaultsIn(IndexFolder()), "");
        ASSERT_EQ(Difference(ContentOf(IndexFolder()), m_fresh), "");
    }
    EXPECT_GT(mended, 0);
}

} // namespace
} // namespace engine_test
