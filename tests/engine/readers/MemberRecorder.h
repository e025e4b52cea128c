// Keeps the members that a reader hands out, and reads test files.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Reader.h"

#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace engine {

class MemberRecorder final : public MemberSink {
  public:
    struct Kept {
        Member member; // its bytes are void: see content
        std::string content;
    };
    std::vector<Kept> members;
    std::vector<std::string> asked; // paths, in order
    std::set<std::string> unwanted;

    bool Wants(std::string_view path) override {
        asked.emplace_back(path);
        return unwanted.count(asked.back()) == 0;
    }
    void Receive(const Member& member) override {
        members.push_back({member, std::string(member.bytes)});
        members.back().member.bytes = {};
    }

    [[nodiscard]] std::vector<std::string> Paths() const {
        std::vector<std::string> paths;
        for (const Kept& kept : members)
            paths.push_back(kept.member.path);
        return paths;
    }
    // The member of that path; fails loudly where there is none.
    [[nodiscard]] const Kept& At(const std::string& path) const {
        for (const Kept& kept : members) {
            if (kept.member.path == path)
                return kept;
        }
        throw std::runtime_error("no member " + path);
    }
};

// A file below tests/data.
inline std::string ReadTestFile(const std::string& name) {
    std::ifstream file(std::string(VELMORA_TEST_DATA "/") + name, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace engine
