// The phases of an index's life, each from a prepared start, and what has to come out in the end.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "CrashJob.h"
#include "EngineFixture.h"

#include <chrono>
#include <set>
#include <string>
#include <vector>

namespace engine_test {

// A number from the environment.
[[nodiscard]] int FromEnvironment(const char* name, int otherwise);

enum class Phase {
    Create,   // the first index
    Update,   // a third of the files has changed, some are gone, some have come
    Remove,   // a folder leaves the index
    Compress, // many small segments become few
    Rebuild,  // a new index over other documents in the place of the old one
    Mend,     // an update that comes upon damage
};

[[nodiscard]] std::string NameOf(Phase phase);

class PhaseFixture : public EngineFixture {
  protected:
    // shared: the index is one that other computers may open.
    explicit PhaseFixture(Phase phase, bool shared = false);

    // Puts the index back to where the phase begins. The documents stay as they are.
    void Restore() const;
    // Documents with their hits for a set of requests, and the list of words.
    [[nodiscard]] std::vector<std::string> HitsNow() const;
    // After whatever went wrong: the index answers at once, with the old content or the new or what
    // was committed in between, and its tables agree.
    void ExpectWhole() const;
    // The next update makes of it what a first one would have made.
    void ExpectTheNextUpdateToFinish() const;

    const Phase m_phase;
    CrashJob m_job;                    // the run of this phase
    std::set<std::int64_t> m_startIds; // of documents; none where there is no sound index
    std::vector<std::string> m_start;  // content, likewise
    std::vector<std::string> m_fresh;  // content of a first index over the documents
    std::vector<std::string> m_hits;   // HitsNow of that

  private:
    void MakeStart();
    void SpoilTexts() const;
    [[nodiscard]] QString Kept() const { return m_folder.filePath(QStringLiteral("start")); }
};

inline const auto kPhases = testing::Values(Phase::Create, Phase::Update, Phase::Remove,
                                            Phase::Compress, Phase::Rebuild, Phase::Mend);

} // namespace engine_test
