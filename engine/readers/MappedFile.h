// The content of an open file, mapped into memory.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string_view>

namespace engine {

// Throws std::system_error. A file that shrinks while it is mapped costs the process (SIGBUS), so
// this is for workers only.
class MappedFile {
  public:
    explicit MappedFile(int file); // file stays the caller's
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    [[nodiscard]] std::string_view Bytes() const { return {m_data, m_size}; }

  private:
    const char* m_data = nullptr;
    std::size_t m_size = 0;
};

} // namespace engine
