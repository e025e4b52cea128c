// The index on disk: opening, creating, recognising, and who may write.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/Feed.h"
#include "engine/index/IndexLock.h"
#include "sqlite/Database.h"
#include "sqlite/Statement.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace engine {

// Why an index cannot be used, for the caller to word.
enum class IndexFault : std::uint8_t {
    Missing,   // there is no index
    Damaged,   // not an index, or broken
    Busy,      // another program holds it
    DiskFull,
    NoRights,  // file or folder may not be read or written
    Unsuitable,// written by another version or with another alphabet: rebuild
    Request,   // malformed request (SearchError tells the place)
    Other,
};

// what() holds the system's or database's own words.
class IndexError : public std::runtime_error {
  public:
    IndexError(IndexFault why, const std::string& words) : std::runtime_error(words), fault(why) {}
    IndexFault fault;
};

// The database's failure in the engine's vocabulary.
[[nodiscard]] IndexError Translate(const sqlite::Error& error);

inline constexpr const char* kIndexFileName = "index_a.ix";
inline constexpr int kIndexVersion = 1; // of the tables
inline constexpr int kApplicationId = 0x564D4958; // "VMIX": marks the file as an index

// On a network share, before the first read: whoever has a log beside the file to himself needs no
// shared memory for it, which would not be shared with other computers.
void HoldAloneIfFar(sqlite::Database& database, const std::string& path);
// A journal in place of the log. On a local disk the log stays when others have the file open.
void DropTheLog(sqlite::Database& database, bool network);

enum class IndexMode : std::uint8_t {
    Search,       // the index must exist; nothing is written
    Update,       // made when it is missing
    UpdateShared, // the same; other computers may open it meanwhile, over a network
};

// One connection to one index. Belongs to one thread.
class IndexFile {
  public:
    // path: machine path of the index file. alphabet: canonical form of the alphabet in use.
    // Search neither creates nor writes; a file that is no index stays as it is in either mode.
    // Throws IndexError.
    IndexFile(const std::string& path, IndexMode mode, const std::string& alphabet);
    IndexFile(const IndexFile&) = delete;
    IndexFile& operator=(const IndexFile&) = delete;

    [[nodiscard]] sqlite::Database& Db() { return m_database; }
    [[nodiscard]] Feed& Words() { return *m_feed; }
    [[nodiscard]] std::optional<std::string> Meta(const std::string& name);
    void SetMeta(const std::string& name, const std::string& value);

  private:
    void Open(const std::string& path, IndexMode mode, bool network);
    void LeaveTheLog(const std::string& path, IndexMode mode);
    void OpenUnguarded(const std::string& path);
    void Configure(IndexMode mode, bool network);
    void PrepareWriting(bool shared, bool network);
    void CreateTables(const std::string& alphabet);
    void Check(const std::string& alphabet);

    std::unique_ptr<ReaderHold> m_hold; // only without the database's own locks
    sqlite::Database m_database;
    std::unique_ptr<Feed> m_feed;
};

} // namespace engine
