// Makes a compound file: a message or an object within another one becomes a file of its own.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/CompoundFile.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

class CompoundWriter {
  public:
    CompoundWriter();
    // A stream; the storages of its path are made. The first of two equal paths counts.
    void Add(std::string_view path, std::string content);
    // All that a storage of another file holds, below the storage to ("" is the root).
    void Copy(const CompoundFile& file, std::string_view storage, std::string_view to = {});
    // Whether something had no room: more than a member may have, or nested too deeply.
    [[nodiscard]] bool Cut() const { return m_cut; }
    // The file. To be called once.
    [[nodiscard]] std::string Finish();

  private:
    struct Node {
        std::string name;
        std::string content;
        bool storage = false;
        std::map<std::string, std::size_t, std::less<>> children; // by name in upper case
        std::uint32_t left = ~0U, right = ~0U, child = ~0U, start = 0;
        std::uint64_t size = 0;
    };
    void CopyLevel(const CompoundFile& file, const std::string& storage, const std::string& to,
                   int depth);
    [[nodiscard]] std::size_t ChildOf(std::size_t parent, std::string_view name, bool storage);
    // Puts bytes into sectors of their own; answers the first one.
    std::uint32_t Place(std::string_view bytes);
    void PlaceStreams();
    void LinkChildren();
    [[nodiscard]] std::string Directory() const;
    [[nodiscard]] std::string Header(std::uint32_t directory, std::uint32_t directorySectors,
                                     std::uint32_t tableSectors) const;

    std::vector<Node> m_nodes; // 0 is the root
    std::uint64_t m_bytes = 0; // of all streams
    bool m_cut = false;
    std::string m_sectors;
    std::vector<std::uint32_t> m_next; // the table of sectors
    std::vector<std::uint32_t> m_miniNext;
    std::uint32_t m_miniTable = 0, m_miniTableSectors = 0;
};

} // namespace engine
