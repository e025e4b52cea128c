// The fuzz targets: each one takes any bytes and ends the process where a promise is broken.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

struct Target {
    std::string name; // of its corpus folder too
    void (*run)(const Target& self, std::string_view input);
    int detail = 0; // the target's own, such as a kind of document
};

// All of them, readers included.
[[nodiscard]] const std::vector<Target>& Targets();
[[nodiscard]] const Target* FindTarget(std::string_view name);

void FuzzRequest(const Target&, std::string_view input);
void FuzzWords(const Target&, std::string_view input);
void FuzzAlphabet(const Target&, std::string_view input);
void FuzzPage(const Target&, std::string_view input);
void FuzzPostings(const Target&, std::string_view input);
void FuzzFrames(const Target&, std::string_view input);
void FuzzFlow(const Target&, std::string_view input);
void FuzzWalk(const Target&, std::string_view input);
void FuzzReader(const Target& self, std::string_view input);  // detail: engine::Kind
void FuzzMembers(const Target& self, std::string_view input); // the same, of a container

// Ends the process with a word on what went wrong, unless holds.
void Require(bool holds, std::string_view what);
void Require(bool holds, std::string_view what, std::string_view about);

} // namespace fuzz
