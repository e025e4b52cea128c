// Opening, running plain SQL, pragmas and transactions.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "sqlite/Database.h"

#include "sqlite/Statement.h"

#include <climits>
#include <sqlite3.h>

namespace sqlite {

namespace {

int OpenFlags(OpenMode mode) {
    switch (mode) {
    case OpenMode::Immutable:
        return SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
    case OpenMode::ReadOnly:
        return SQLITE_OPEN_READONLY;
    case OpenMode::ReadWrite:
        return SQLITE_OPEN_READWRITE;
    case OpenMode::Create:
        return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    }
    return SQLITE_OPEN_READONLY;
}

const char* BeginText(Transaction::Begin begin) {
    switch (begin) {
    case Transaction::Begin::Deferred:
        return "BEGIN DEFERRED";
    case Transaction::Begin::Immediate:
        return "BEGIN IMMEDIATE";
    case Transaction::Begin::Exclusive:
        return "BEGIN EXCLUSIVE";
    }
    return "BEGIN IMMEDIATE";
}

// Percent signs for all that could mean something in a URI.
std::string ImmutableUri(const std::string& path) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    // An empty host: without it two slashes at the path's beginning would name one.
    std::string uri = path.front() == '/' ? "file://" : "file:";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || c == '/' || c == '.' || c == '-' || c == '_';
        if (plain) {
            uri += c;
        } else {
            uri += '%';
            uri += kDigits[byte >> 4];
            uri += kDigits[byte & 15];
        }
    }
    return uri + "?immutable=1";
}

// Where SQLite is built to take names as URIs, "file:..." would be one.
std::string NameFor(const std::string& path, OpenMode mode) {
    if (mode == OpenMode::Immutable) {
        return ImmutableUri(path);
    }
    return path.rfind("file:", 0) == 0 ? "./" + path : path;
}

} // namespace

void Database::Closer::operator()(sqlite3* handle) const noexcept {
    sqlite3_close_v2(handle);
}

Database::Database(const std::string& path, const OpenOptions& options) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        // An empty name would quietly make a temporary database.
        throw Error(SQLITE_CANTOPEN, "no usable file name");
    }
    const std::string name = NameFor(path, options.mode);
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(name.c_str(), &handle, OpenFlags(options.mode), nullptr);
    m_handle.reset(handle); // even a failed opening has to be closed
    if (code != SQLITE_OK) {
        throw Error::Last(handle, code);
    }
    sqlite3_extended_result_codes(handle, 1);
    // Files come from other people: nothing in a schema may reach beyond the database.
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    // "x" in quotes is a name; a misspelt one shall fail instead of turning into a text.
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    SetBusyTimeout(options.busyTimeout);
}

bool Database::IsReadOnly() const {
    return sqlite3_db_readonly(m_handle.get(), "main") == 1;
}

void Database::SetBusyTimeout(std::chrono::milliseconds timeout) {
    const auto wait = std::min<std::chrono::milliseconds::rep>(timeout.count(), INT_MAX);
    sqlite3_busy_timeout(m_handle.get(), static_cast<int>(wait));
}

void Database::Exec(std::string_view sql) {
    const std::string text(sql);
    const int code = sqlite3_exec(m_handle.get(), text.c_str(), nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) {
        throw Error::Last(m_handle.get(), code, sql);
    }
}

std::string Database::ReadPragma(std::string_view name) {
    return QueryText(*this, "PRAGMA " + std::string(name)).value_or(std::string());
}

std::int64_t Database::ReadPragmaInt(std::string_view name) {
    return QueryInt64(*this, "PRAGMA " + std::string(name)).value_or(0);
}

std::string Database::SetPragma(std::string_view name, std::string_view value) {
    return ReadPragma(std::string(name) + " = " + std::string(value));
}

std::int64_t Database::Changes() const {
    return sqlite3_changes64(m_handle.get());
}

std::int64_t Database::TotalChanges() const {
    return sqlite3_total_changes64(m_handle.get());
}

std::int64_t Database::LastRowId() const {
    return sqlite3_last_insert_rowid(m_handle.get());
}

bool Database::InTransaction() const {
    return sqlite3_get_autocommit(m_handle.get()) == 0;
}

void Database::Interrupt() const noexcept {
    sqlite3_interrupt(m_handle.get());
}

Transaction::Transaction(Database& database, Begin begin) : m_database(database) {
    m_database.Exec(BeginText(begin));
    m_active = true;
}

Transaction::~Transaction() {
    Rollback();
}

void Transaction::Commit() {
    m_database.Exec("COMMIT");
    m_active = false;
}

void Transaction::Rollback() noexcept {
    if (!m_active) {
        return;
    }
    m_active = false;
    // A full disk or a failed write has rolled back already; a second ROLLBACK would be an error.
    if (m_database.InTransaction()) {
        sqlite3_exec(m_database.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

} // namespace sqlite
