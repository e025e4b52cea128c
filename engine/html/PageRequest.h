// What the worker role "page" is asked.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/html/HtmlWriter.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

inline constexpr const char* kPageRole = "page";

struct PageRequest {
    std::string name;   // file name, for its ending
    std::string member; // ">n|MEMBER" as the index spells it; "" for the file itself
    std::string title;
    WordRule rule = WordRule::Letters;
    std::vector<std::uint32_t> hits;
    HtmlMarks marks;
};
[[nodiscard]] std::string Pack(const PageRequest& request);
[[nodiscard]] PageRequest UnpackPageRequest(std::string_view bytes);

} // namespace engine
