// Owner of one database connection, and the guard of one transaction.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "sqlite/Error.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct sqlite3;

namespace sqlite {

enum class OpenMode {
    ReadOnly,  // the file must exist
    ReadWrite, // the file must exist; without the right to write it opens read-only (IsReadOnly)
    Create,    // made when missing
    Immutable, // the file must exist and nobody may change it: neither locks nor other files are used
};

struct OpenOptions {
    OpenMode mode = OpenMode::ReadWrite;
    std::chrono::milliseconds busyTimeout{5000}; // how long a statement waits for a lock
};

// A connection belongs to one thread at a time; only Interrupt may come from another.
// All texts are UTF-8. Every function throws Error.
class Database {
  public:
    Database() = default; // closed
    // path: of the machine, UTF-8; ":memory:" for none. A file that is no database shows at the
    // first statement, not here.
    explicit Database(const std::string& path, const OpenOptions& options = {});

    [[nodiscard]] bool IsOpen() const { return m_handle != nullptr; }
    [[nodiscard]] bool IsReadOnly() const;
    // Statements that are still alive keep the file open until they are gone.
    void Close() { m_handle.reset(); }
    [[nodiscard]] sqlite3* Handle() const { return m_handle.get(); } // stays owned here

    void SetBusyTimeout(std::chrono::milliseconds timeout);
    // Runs one statement or several, separated by ";"; rows are passed over.
    void Exec(std::string_view sql);
    // "PRAGMA name": the first column of the first row as text, empty when there is none.
    [[nodiscard]] std::string ReadPragma(std::string_view name);
    [[nodiscard]] std::int64_t ReadPragmaInt(std::string_view name); // 0 when there is none
    // "PRAGMA name = value"; answers what the database says back, as journal_mode does.
    std::string SetPragma(std::string_view name, std::string_view value);

    [[nodiscard]] std::int64_t Changes() const; // rows of the last insert, update or delete
    [[nodiscard]] std::int64_t TotalChanges() const;
    [[nodiscard]] std::int64_t LastRowId() const;
    [[nodiscard]] bool InTransaction() const;
    void Interrupt() const noexcept; // a running statement ends with ErrorKind::Interrupt

  private:
    struct Closer {
        void operator()(sqlite3* handle) const noexcept;
    };
    std::unique_ptr<sqlite3, Closer> m_handle;
};

// Begins a transaction, rolls it back at the end of its life unless Commit came first.
//   Transaction transaction(database);
//   ...
//   transaction.Commit();
class Transaction {
  public:
    enum class Begin { Deferred, Immediate, Exclusive };

    explicit Transaction(Database& database, Begin begin = Begin::Immediate);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // When it fails with ErrorKind::Busy the transaction stays open and Commit can be tried again.
    void Commit();
    void Rollback() noexcept; // a second call, or one after Commit, does nothing
    [[nodiscard]] bool IsActive() const { return m_active; }

  private:
    Database& m_database;
    bool m_active = false;
};

} // namespace sqlite
