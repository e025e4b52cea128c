// The list of targets.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/fuzz/Target.h"

#include "engine/readers/Reader.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace fuzz {

const std::vector<Target>& Targets() {
    static const std::vector<Target> kTargets = [] {
        std::vector<Target> targets{
            {"request", FuzzRequest}, {"words", FuzzWords}, {"alphabet", FuzzAlphabet},
            {"page", FuzzPage},       {"flow", FuzzFlow},   {"postings", FuzzPostings},
            {"frames", FuzzFrames},   {"walk", FuzzWalk},
        };
        // The last kind of all ends the list; a new one is fuzzed as soon as it has a name.
        for (int kind = 1; kind <= static_cast<int>(engine::Kind::Compressed); ++kind) {
            const auto value = static_cast<engine::Kind>(kind);
            targets.push_back({engine::KindName(value),
                               engine::IsContainer(value) ? FuzzMembers : FuzzReader, kind});
        }
        return targets;
    }();
    return kTargets;
}

const Target* FindTarget(std::string_view name) {
    const auto found = std::find_if(Targets().begin(), Targets().end(),
                                    [&](const Target& target) { return target.name == name; });
    return found == Targets().end() ? nullptr : &*found;
}

void Require(bool holds, std::string_view what) {
    Require(holds, what, {});
}

void Require(bool holds, std::string_view what, std::string_view about) {
    if (holds)
        return;
    std::cerr << "Broken promise: " << what;
    if (!about.empty())
        std::cerr << ": \"" << about.substr(0, 500) << '"';
    std::cerr << std::endl;
    std::abort();
}

} // namespace fuzz
