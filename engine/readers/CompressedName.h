// The name of what is in a compressed file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/ArchiveFormat.h"
#include "engine/readers/Source.h"

#include <cstdint>
#include <string>

namespace engine {

struct CompressedName {
    std::string name;          // harmless, never empty; UTF-8
    std::int64_t modified = 0; // seconds since 1970; 0 unknown
};

// The name that a gzip header tells, else the file's own without its ending: "a.txt.xz" holds
// "a.txt", "a.tgz" holds "a.tar".
[[nodiscard]] CompressedName NameOfContent(const Source& source, Packing packing);

} // namespace engine
