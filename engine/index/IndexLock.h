// Who may write an index, and who reads it without the database's own locks.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

namespace engine {

// The right to write the index, held through a lock file beside it until destroyed. Ends with the
// process, however that ends.
//
// The lock is one on bytes, of the open file: of all kinds that alone is seen by programs on the
// server itself and, over NFS or SMB, on other computers.
class WriterLock {
  public:
    // Waits about a second for searches that hold a ReaderHold. Throws IndexError Busy when another
    // one writes, NoRights when the file cannot be made, DiskFull.
    explicit WriterLock(const std::string& indexPath);
    ~WriterLock();
    WriterLock(const WriterLock&) = delete;
    WriterLock& operator=(const WriterLock&) = delete;

  private:
    int m_file = -1;
};

// Keeps writers away until destroyed. For a search that can use none of the database's own locks.
class ReaderHold {
  public:
    explicit ReaderHold(const std::string& indexPath);
    ~ReaderHold();
    ReaderHold(const ReaderHold&) = delete;
    ReaderHold& operator=(const ReaderHold&) = delete;
    // False: somebody writes just now.
    [[nodiscard]] bool Holds() const { return m_holds; }

  private:
    int m_file = -1;
    bool m_holds = true; // without a lock file nobody has ever written here
};

// Throws IndexError Other when the folder (machine path) lies on a share where locks cannot be
// relied on: two who write at once would damage the index.
void RequireLocks(const std::string& folder);

} // namespace engine
