// Tables and settings of the index file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/IndexFile.h"

#include "engine/index/Paths.h"
#include "engine/text/Tokenizer.h"
#include "platform/Files.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace engine {
namespace {

constexpr int kHashMegabytes = 48;         // words gathered in memory before they go to the tree

// A document is a file (parent 0) or a member of one. Its text lies in chunks whose id is the
// document's id times 2^20 plus the chunk's number from 0.
constexpr const char* kTables = R"(
CREATE TABLE meta(name TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID;
CREATE TABLE folder(id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE);
CREATE TABLE place(path BLOB PRIMARY KEY, device INTEGER NOT NULL) WITHOUT ROWID;
CREATE TABLE document(
  id INTEGER PRIMARY KEY,
  parent INTEGER NOT NULL,
  folder INTEGER NOT NULL,
  file BLOB NOT NULL,
  path TEXT NOT NULL,
  name TEXT NOT NULL,
  display TEXT NOT NULL,
  kind INTEGER NOT NULL,
  size INTEGER NOT NULL,
  modified INTEGER NOT NULL,
  words INTEGER NOT NULL,
  state INTEGER NOT NULL,
  reason TEXT NOT NULL,
  readers INTEGER NOT NULL);
CREATE INDEX document_folder ON document(folder) WHERE parent = 0;
CREATE INDEX document_parent ON document(parent) WHERE parent <> 0;
CREATE INDEX document_name ON document(name);
CREATE INDEX document_state ON document(state) WHERE state <> 0;
CREATE TABLE field(document INTEGER NOT NULL, name TEXT NOT NULL, first INTEGER NOT NULL,
  last INTEGER NOT NULL, value TEXT NOT NULL, PRIMARY KEY(document, name, first)) WITHOUT ROWID;
CREATE TABLE chunk(id INTEGER PRIMARY KEY, words INTEGER NOT NULL, plain INTEGER NOT NULL,
  text BLOB NOT NULL);
CREATE TABLE term(word TEXT PRIMARY KEY, documents INTEGER NOT NULL) WITHOUT ROWID;
CREATE VIRTUAL TABLE words USING fts5(text, content='', columnsize=0, tokenize='velmora_feed');
)";

constexpr std::chrono::milliseconds kBusyWait = std::chrono::seconds(10);
constexpr int kSharedSpillPages = 24'576;    // 192 MB
constexpr qint64 kRoomForLocks = 1 << 16; // bytes, of the shared memory beside the file

bool IsForLackOfLocks(const sqlite::Error& error) {
    switch (error.Kind()) {
    case sqlite::ErrorKind::CantOpen:
    case sqlite::ErrorKind::ReadOnly:
    case sqlite::ErrorKind::Full:
        return true;
    default:
        return error.ExtendedCode() == SQLITE_IOERR_SHMOPEN ||
               error.ExtendedCode() == SQLITE_IOERR_SHMMAP;
    }
}

bool IsThere(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? info.st_size > 0 : errno != ENOENT;
}

// The folder of an index that has no log, without the right or the room to put anything there.
bool HasNoRoom(const std::string& path) {
    if (IsThere(path + "-wal") || IsThere(path + "-journal"))
        return false;
    const std::string folder = path.substr(0, path.find_last_of('/') + 1);
    return access(folder.c_str(), W_OK) != 0 ||
           platform::FreeSpace(PathText(folder)) < kRoomForLocks;
}

} // namespace

IndexError Translate(const sqlite::Error& error) {
    const auto fault = [&] {
        switch (error.Kind()) {
        case sqlite::ErrorKind::Busy:
            return IndexFault::Busy;
        case sqlite::ErrorKind::Full:
            return IndexFault::DiskFull;
        case sqlite::ErrorKind::Corrupt:
            return IndexFault::Damaged;
        case sqlite::ErrorKind::ReadOnly:
        case sqlite::ErrorKind::CantOpen:
            return IndexFault::NoRights;
        default:
            return IndexFault::Other;
        }
    };
    return {fault(), error.Message()};
}

void HoldAloneIfFar(sqlite::Database& database, const std::string& path) {
    if (platform::IsNetworkFileSystem(PathText(path)))
        database.SetPragma("locking_mode", "EXCLUSIVE");
}

void DropTheLog(sqlite::Database& database, bool network) {
    // Where somebody here has it open with its log, that does no harm as long as all are here, and
    // those on other computers are told that it is in use: the next run will do it.
    database.SetBusyTimeout(network ? kBusyWait : std::chrono::milliseconds(0));
    try {
        database.SetPragma("journal_mode", "TRUNCATE");
    } catch (const sqlite::Error& error) {
        if (network || error.Kind() != sqlite::ErrorKind::Busy)
            throw;
    }
    database.SetBusyTimeout(kBusyWait);
}

IndexFile::IndexFile(const std::string& path, IndexMode mode, const std::string& alphabet) {
    const int reason = access(path.c_str(), F_OK) == 0 ? 0 : errno;
    if (mode == IndexMode::Search && reason != 0)
        throw IndexError(reason == ENOENT ? IndexFault::Missing : IndexFault::NoRights,
                         std::strerror(reason));
    const bool writes = mode != IndexMode::Search;
    const bool network = platform::IsNetworkFileSystem(PathText(path));
    try {
        try {
            Open(path, mode, network);
        } catch (const sqlite::Error& error) {
            if (writes || !IsForLackOfLocks(error) || !HasNoRoom(path))
                throw;
            OpenUnguarded(path);
        }
        Configure(mode, network);
        if (writes && reason == ENOENT)
            CreateTables(alphabet);
        Check(alphabet);
        if (writes)
            PrepareWriting(network || mode == IndexMode::UpdateShared, network);
    } catch (const sqlite::Error& error) {
        throw Translate(error);
    }
}

// Reads enough to know that it can be read.
void IndexFile::Open(const std::string& path, IndexMode mode, bool network) {
    const bool writes = mode != IndexMode::Search;
    sqlite::OpenOptions options;
    options.mode = writes ? sqlite::OpenMode::Create : sqlite::OpenMode::ReadWrite;
    options.busyTimeout = kBusyWait;
    m_database = sqlite::Database(path, options);
    // The larger page pays: long lists of places stand in few of them.
    if (writes)
        m_database.SetPragma("page_size", "8192");
    HoldAloneIfFar(m_database, path);
    (void)m_database.ReadPragmaInt("schema_version");
    if (network)
        LeaveTheLog(path, mode);
}

// An index that was written on the server's own disk may have a log. Nobody else has it open, or
// it could not have been read.
void IndexFile::LeaveTheLog(const std::string& path, IndexMode mode) {
    if (m_database.ReadPragma("journal_mode") == "wal") {
        if (mode == IndexMode::Search) {
            m_database.Close(); // brings the log into the file
            OpenUnguarded(path);
            return;
        }
        m_database.SetPragma("journal_mode", "TRUNCATE");
    }
    m_database.SetPragma("locking_mode", "NORMAL"); // in force from the next statement on
}

// Without room for the database's locks a search can still be had: nothing can be written there by
// this user, and who else may write has to wait.
void IndexFile::OpenUnguarded(const std::string& path) {
    m_hold = std::make_unique<ReaderHold>(path);
    if (!m_hold->Holds())
        throw IndexError(IndexFault::Busy, "the index is being written");
    m_database = sqlite::Database(path, {sqlite::OpenMode::Immutable, {}});
}

void IndexFile::Configure(IndexMode mode, bool network) {
    m_feed = std::make_unique<Feed>(m_database);
    // Mapped pages would count as this program's memory while it writes; where the file can go away
    // with its server, touching them would end the program.
    m_database.SetPragma("mmap_size",
                         mode == IndexMode::Search && !network ? "1073741824" : "0");
    m_database.SetPragma("cache_size", mode == IndexMode::Search ? "-32768" : "-65536");
    m_database.SetPragma("temp_store", "MEMORY");
}

// A log beside the file lets people search while it is written, but needs shared memory, which a
// network file system does not give.
void IndexFile::PrepareWriting(bool shared, bool network) {
    if (shared)
        DropTheLog(m_database, network);
    else
        m_database.SetPragma("journal_mode", "WAL");
    m_database.SetPragma("synchronous", shared ? "FULL" : "NORMAL");
    m_database.SetPragma("journal_size_limit", "67108864");
    if (shared)
        // Without a log, pages that go to the file before the commit shut all searches out.
        m_database.SetPragma("cache_spill", std::to_string(kSharedSpillPages));
}

void IndexFile::CreateTables(const std::string& alphabet) {
    sqlite::Transaction transaction(m_database);
    m_database.Exec(kTables);
    m_database.Exec("INSERT INTO words(words, rank) VALUES('hashsize', " +
                    std::to_string(kHashMegabytes << 20) + ")");
    m_database.SetPragma("application_id", std::to_string(kApplicationId));
    m_database.SetPragma("user_version", std::to_string(kIndexVersion));
    SetMeta("tokenizer", std::to_string(kTokenizerVersion));
    SetMeta("alphabet", alphabet);
    transaction.Commit();
}

void IndexFile::Check(const std::string& alphabet) {
    if (m_database.ReadPragmaInt("application_id") != kApplicationId)
        throw IndexError(IndexFault::Damaged, "the file is not an index");
    if (m_database.ReadPragmaInt("user_version") != kIndexVersion ||
        Meta("tokenizer") != std::to_string(kTokenizerVersion))
        throw IndexError(IndexFault::Unsuitable, "the index was made by another version");
    if (Meta("alphabet") != alphabet)
        throw IndexError(IndexFault::Unsuitable, "the index was made with another alphabet");
}

std::optional<std::string> IndexFile::Meta(const std::string& name) {
    sqlite::Statement find(m_database, "SELECT value FROM meta WHERE name = ?1");
    find.Bind(1, name);
    if (!find.Step())
        return std::nullopt;
    return std::string(find.Text(0));
}

void IndexFile::SetMeta(const std::string& name, const std::string& value) {
    sqlite::Statement set(m_database, "INSERT OR REPLACE INTO meta VALUES(?1, ?2)");
    set.Bind(1, name).Bind(2, value).Run();
}

} // namespace engine
