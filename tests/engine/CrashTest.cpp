// Kills, and power cuts, at any moment of a run: what was committed is found, nothing is broken,
// and the next update ends like a first one.
//
// VELMORA_CRASH_ROUNDS: moments in all (60); VELMORA_CRASH_SEED: the same moments again.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "ChildRun.h"
#include "IndexAudit.h"
#include "PhaseFixture.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <optional>
#include <random>
#include <sstream>

namespace engine_test {
namespace {

using sqlite_test::Fault;
using Clock = std::chrono::steady_clock;

constexpr int kPhaseCount = 6;

unsigned Seed() {
    static const unsigned seed = static_cast<unsigned>(
        FromEnvironment("VELMORA_CRASH_SEED", static_cast<int>(std::random_device()() & 0xFFFF)));
    return seed;
}

class Crash : public PhaseFixture, public testing::WithParamInterface<Phase> {
  protected:
    Crash() : PhaseFixture(GetParam()), m_random(Seed() + static_cast<unsigned>(GetParam())) {}

    // Sets the fault of the next run; answers when to kill it from outside, if so.
    std::optional<std::chrono::microseconds> PickMoment(int round);
    void ExpectWhatWasCommitted(const Told& told) const;
    // One run from the start, cut short, and all that has to hold then.
    void RunAndJudge(std::optional<std::chrono::microseconds> killAfter = {});

    std::mt19937 m_random;
    std::chrono::microseconds m_whole{}; // what an undisturbed run takes
    std::int64_t m_calls = 0, m_changes = 0, m_steps = 0;
    int m_killed = 0;
};

std::optional<std::chrono::microseconds> Crash::PickMoment(int round) {
    const auto pick = [&](std::int64_t most) {
        return std::uniform_int_distribution<std::int64_t>(1, most)(m_random);
    };
    m_job.fault = {};
    // There a rollback journal takes the place of the log.
    m_job.onAShare = round % 4 == 3;
    if (round % 3 == 0)
        return std::chrono::microseconds(pick(m_whole.count()));
    m_job.fault.way = round % 3 == 1 ? Fault::Way::Kill : Fault::Way::PowerCut;
    // Where the disk changes there is more to go wrong.
    const bool anyCall = round % 2 == 0;
    m_job.fault.calls = anyCall ? sqlite_test::kEveryCall : sqlite_test::kChanges;
    m_job.fault.at = pick(anyCall ? m_calls : m_changes);
    m_job.fault.seed = static_cast<unsigned>(m_random());
    return {};
}

// The documents of the last commit that was told; or those of the one that was just being made.
void Crash::ExpectWhatWasCommitted(const Told& told) const {
    std::set<std::int64_t> committed = m_startIds;
    std::set<std::int64_t> maybe = m_startIds;
    for (const std::string& line : told.lines) {
        if (line == "c") {
            committed = maybe;
            continue;
        }
        maybe = committed; // what was pending before has been rolled back
        std::istringstream changes(line.substr(1));
        for (std::string change; changes >> change;) {
            const std::int64_t id = std::stoll(change.substr(1));
            if (change[0] == '+')
                maybe.insert(id);
            else
                maybe.erase(id);
        }
    }
    const std::set<std::int64_t> have = DocumentIds(IndexFolder());
    EXPECT_TRUE(have == committed || have == maybe)
        << have.size() << " documents, committed " << committed.size() << ", perhaps "
        << maybe.size();
}

void Crash::RunAndJudge(std::optional<std::chrono::microseconds> killAfter) {
    Restore();
    const Told told = RunChild(m_job, killAfter);
    m_killed += told.ended ? 0 : 1;
    ASSERT_EQ(told.fault, "");
    ASSERT_NO_FATAL_FAILURE(ExpectWhole());
    // A power cut may cost the last commits, and nothing else.
    const bool inPlace = m_phase != Phase::Rebuild && m_phase != Phase::Mend;
    if (inPlace && m_job.fault.way != Fault::Way::PowerCut &&
        QFile::exists(IndexFolder() + QStringLiteral("/index_a.ix")))
        ExpectWhatWasCommitted(told);
    ASSERT_NO_FATAL_FAILURE(ExpectTheNextUpdateToFinish());
}

TEST_P(Crash, AtAnyMomentCostsNothingThatWasCommitted) {
    const int rounds = std::max(1, FromEnvironment("VELMORA_CRASH_ROUNDS", 60) / kPhaseCount);
    std::cout << NameOf(m_phase) << ": " << rounds << " moments, VELMORA_CRASH_SEED=" << Seed()
              << std::endl;
    const auto begun = Clock::now();
    ASSERT_EQ(RunChild(m_job).fault, "");
    m_whole = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begun);
    ASSERT_EQ(Difference(ContentOf(IndexFolder()), m_fresh), "");
    m_job.fault.at = -1;
    Restore();
    m_calls = RunChild(m_job).calls;
    m_job.fault.calls = sqlite_test::kChanges;
    Restore();
    m_changes = RunChild(m_job).calls;
    ASSERT_GT(m_changes, 10);
    for (int round = 0; round < rounds; ++round) {
        const auto after = PickMoment(round);
        SCOPED_TRACE("round " + std::to_string(round) + ", way " +
                     std::to_string(static_cast<int>(m_job.fault.way)) + ", call " +
                     std::to_string(m_job.fault.at) + " of kinds " +
                     std::to_string(m_job.fault.calls) + ", after " +
                     std::to_string(after ? after->count() : 0) + " us" +
                     (m_job.onAShare ? ", on a share" : ""));
        ASSERT_NO_FATAL_FAILURE(RunAndJudge(after));
    }
    // A run that always ends before it is killed would test nothing.
    EXPECT_GE(m_killed * 2, rounds);
}

INSTANTIATE_TEST_SUITE_P(Run, Crash, kPhases,
                         [](const auto& param) { return NameOf(param.param); });

class Replacing : public Crash {};

// Names of files change in few steps, which a random moment hardly ever hits.
TEST_P(Replacing, IsCutShortAtAnyStepAndLeavesOneWholeIndex) {
    for (std::int64_t step = 1; step < 1000; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        m_job.killAtStep = step;
        const int killed = m_killed;
        ASSERT_NO_FATAL_FAILURE(RunAndJudge());
        if (m_killed == killed)
            break;
    }
    std::cout << m_killed << " steps" << std::endl;
    EXPECT_GE(m_killed, 3);
}

INSTANTIATE_TEST_SUITE_P(Run, Replacing,
                         testing::Values(Phase::Create, Phase::Rebuild, Phase::Mend),
                         [](const auto& param) { return NameOf(param.param); });

} // namespace
} // namespace engine_test
