// What the worker role "read" is asked.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Wire.h"
#include "engine/text/Tokenizer.h"

#include <string>

namespace engine {

inline constexpr const char* kReadRole = "read";
inline constexpr const char* kAlphabetSetting = "alphabet"; // content of the alphabet file

struct ReadRequest {
    std::string name; // file name, UTF-8, for its ending
    WordRule rule = WordRule::Letters;
};

[[nodiscard]] inline std::string Pack(const ReadRequest& request) {
    return Packer().Text(request.name).Number(static_cast<std::uint64_t>(request.rule)).Bytes();
}

} // namespace engine
