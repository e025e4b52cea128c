// Packs a fuzzer's bytes into the archives that documents travel in, so that it works on what
// stands inside and not on checksums and tables of sectors.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

struct Part {
    std::string name; // with "/" between storages or folders
    std::string_view bytes;
};

// Cuts input at lines "%%part NAME"; what stands before the first of them is the part mainName.
// Of parts with the same name the last one counts.
[[nodiscard]] std::vector<Part> CutParts(std::string_view input, std::string_view mainName);

// Adds the parts of defaults whose names are not taken yet.
void AddMissing(std::vector<Part>& parts, const std::vector<Part>& defaults);

// Members are stored, not packed.
[[nodiscard]] std::string PackZip(const std::vector<Part>& parts);
// A compound file of 512-byte sectors; small streams stand in its mini stream.
[[nodiscard]] std::string PackCompound(const std::vector<Part>& parts);

} // namespace fuzz
