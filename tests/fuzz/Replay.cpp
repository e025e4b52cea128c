// Runs every kept input once: what fuzzing found stays found, with any compiler.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/fuzz/Target.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace fuzz {
namespace {

namespace fs = std::filesystem;

class Replay : public testing::TestWithParam<std::string> {};

std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const Target& target : Targets())
        names.push_back(target.name);
    return names;
}

TEST_P(Replay, KeepsEveryPromise) {
    const Target& target = *FindTarget(GetParam());
    std::vector<fs::path> inputs;
    for (const fs::directory_entry& entry :
         fs::directory_iterator(fs::path(VELMORA_CORPUS) / target.name))
        inputs.push_back(entry.path());
    ASSERT_FALSE(inputs.empty()) << "no inputs are kept";
    std::sort(inputs.begin(), inputs.end());
    for (const fs::path& path : inputs) {
        std::cout << path.filename().string() << std::endl; // the last one, should it end us
        std::ifstream file(path, std::ios::binary);
        const std::string input{std::istreambuf_iterator<char>(file), {}};
        target.run(target, input);
    }
}

INSTANTIATE_TEST_SUITE_P(Corpus, Replay, testing::ValuesIn(Names()),
                         [](const auto& each) { return each.param; });

// A folder that no target reads would be tested by nobody.
TEST(Corpora, BelongToTargets) {
    for (const fs::directory_entry& entry : fs::directory_iterator(VELMORA_CORPUS))
        EXPECT_NE(FindTarget(entry.path().filename().string()), nullptr) << entry.path();
}

} // namespace
} // namespace fuzz
