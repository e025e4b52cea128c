// What a reader is given: the bytes of one document and what is known of it beforehand.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace engine {

struct Source {
    std::string_view bytes; // whole content, mapped or unpacked; valid during the read
    std::string name;       // file name or member path, UTF-8, for its ending only
};

} // namespace engine
