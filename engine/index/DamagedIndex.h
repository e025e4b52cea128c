// What a damaged index still knows of the files that it held.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/FolderScan.h"
#include "sqlite/Database.h"

#include <functional>
#include <string>
#include <string_view>

namespace engine {

// Only names are taken over, and each is looked for on the disk: whatever the damage made of them,
// it cannot get into another index. Texts are not: nothing tells whether they are what was read.
class DamagedIndex {
  public:
    // Never throws; of a file that cannot be opened nothing is known.
    explicit DamagedIndex(const std::string& file);

    [[nodiscard]] Places KnownPlaces();
    // Machine path of the folder, the file's name, its logical name as the index has it.
    using Use = std::function<void(const std::string& folder, const std::string& file,
                                   std::string_view name)>;
    // False when there may have been more than what was given. Passes on what use throws.
    [[nodiscard]] bool ListFiles(const Use& use);

  private:
    bool IsSound(const char* table);

    sqlite::Database m_database;
};

} // namespace engine
