// The files inside a compiled help file, unpacked in memory.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

class ChmFile {
  public:
    struct Entry {
        std::string name; // UTF-8, without "/" at its beginning
        std::uint64_t length = 0;
    };

    // Reads the directory. bytes stay valid. Throws ReadError (Damaged).
    explicit ChmFile(std::string_view bytes);
    ~ChmFile();
    ChmFile(const ChmFile&) = delete;
    ChmFile& operator=(const ChmFile&) = delete;

    // In the order of the directory.
    [[nodiscard]] const std::vector<Entry>& Entries() const { return m_entries; }

    // What was not unpacked whole.
    struct Losses {
        std::size_t damaged = 0;
        std::size_t tooLarge = 0; // an entry, or all together
    };
    // Unpacks the entries with these numbers, all in one pass over the packed bytes: take gets
    // each in the order in which they are stored, its content as far as it is there.
    using Take = std::function<void(std::size_t number, std::string&& content)>;
    Losses Unpack(std::vector<std::size_t> numbers, const Take& take);

  private:
    struct Library;
    std::unique_ptr<Library> m_library;
    std::vector<Entry> m_entries;
};

} // namespace engine
