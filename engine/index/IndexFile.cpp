// Tables and settings of the index file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/IndexFile.h"

#include "engine/text/Tokenizer.h"
#include "platform/Files.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace engine {
namespace {

constexpr int kApplicationId = 0x564D4958; // "VMIX"
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

IndexFile::IndexFile(const std::string& path, IndexMode mode, const std::string& alphabet) {
    if (mode == IndexMode::Search && access(path.c_str(), F_OK) != 0)
        throw IndexError(errno == ENOENT ? IndexFault::Missing : IndexFault::NoRights,
                         std::strerror(errno));
    try {
        Open(path, mode);
        if (mode == IndexMode::Update && m_database.ReadPragmaInt("application_id") == 0)
            CreateTables(alphabet);
        Check(alphabet);
    } catch (const sqlite::Error& error) {
        throw Translate(error);
    }
}

void IndexFile::Open(const std::string& path, IndexMode mode) {
    sqlite::OpenOptions options;
    options.mode = mode == IndexMode::Update ? sqlite::OpenMode::Create : sqlite::OpenMode::ReadWrite;
    options.busyTimeout = std::chrono::seconds(10);
    m_database = sqlite::Database(path, options);
    m_feed = std::make_unique<Feed>(m_database);
    // The larger page pays: long lists of places stand in few of them.
    if (mode == IndexMode::Update)
        m_database.SetPragma("page_size", "8192");
    // Mapped pages would count as this program's memory while it writes.
    m_database.SetPragma("mmap_size", mode == IndexMode::Search ? "1073741824" : "0");
    m_database.SetPragma("cache_size", mode == IndexMode::Search ? "-32768" : "-65536");
    m_database.SetPragma("temp_store", "MEMORY");
    if (mode == IndexMode::Search)
        return;
    // A log beside the file lets people search while it is written, but needs shared memory,
    // which a network file system does not give.
    const bool network = platform::IsNetworkFileSystem(QString::fromStdString(path));
    m_database.SetPragma("journal_mode", network ? "TRUNCATE" : "WAL");
    m_database.SetPragma("synchronous", network ? "FULL" : "NORMAL");
    m_database.SetPragma("journal_size_limit", "67108864");
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

WriterLock::WriterLock(const std::string& indexPath) {
    const std::string path = indexPath + ".lock";
    m_file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (m_file < 0)
        throw IndexError(errno == ENOSPC ? IndexFault::DiskFull : IndexFault::NoRights,
                         path + ": " + std::strerror(errno));
    if (flock(m_file, LOCK_EX | LOCK_NB) == 0)
        return;
    const int reason = errno;
    close(m_file);
    throw IndexError(reason == EWOULDBLOCK ? IndexFault::Busy : IndexFault::Other,
                     std::strerror(reason));
}

WriterLock::~WriterLock() { close(m_file); }

} // namespace engine
