// A file name in a folder of its own, gone at the end of the test.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& name = "test.db") {
        std::string folder = (std::filesystem::temp_directory_path() / "sqlite-XXXXXX").string();
        if (mkdtemp(folder.data()) == nullptr) {
            throw std::filesystem::filesystem_error("mkdtemp", folder, {});
        }
        m_folder = folder;
        m_path = m_folder / name;
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::string Path() const { return m_path.string(); }

  private:
    std::filesystem::path m_folder;
    std::filesystem::path m_path;
};
