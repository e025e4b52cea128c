// Sorting SQLite's result codes, and words for them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "sqlite/Error.h"

#include <sqlite3.h>

namespace sqlite {

namespace {

constexpr std::size_t kShownSql = 200;

std::string WithStatement(const std::string& message, std::string_view sql) {
    if (sql.empty()) {
        return message;
    }
    std::size_t length = std::min(sql.size(), kShownSql);
    while (length > 0 && length < sql.size() && (sql[length] & 0xC0) == 0x80) {
        --length; // not in the middle of a character
    }
    std::string text = message + " in: ";
    text += sql.substr(0, length);
    return length < sql.size() ? text + "…" : text;
}

} // namespace

Error::Error(int extendedCode, const std::string& message, std::string_view sql)
    : std::runtime_error(WithStatement(message, sql)), m_extendedCode(extendedCode),
      m_message(message) {}

Error Error::Last(sqlite3* handle, int code, std::string_view sql) {
    // Without a handle, or when the failure did not come through it, only the code has words.
    if (handle == nullptr || (sqlite3_errcode(handle) & 0xFF) != (code & 0xFF)) {
        return {code, sqlite3_errstr(code), sql};
    }
    return {sqlite3_extended_errcode(handle), sqlite3_errmsg(handle), sql};
}

ErrorKind Error::Kind() const {
    switch (Code()) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
        return ErrorKind::Busy;
    case SQLITE_FULL:
        return ErrorKind::Full;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return ErrorKind::Corrupt;
    case SQLITE_READONLY:
        return ErrorKind::ReadOnly;
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        return ErrorKind::CantOpen;
    case SQLITE_IOERR:
        // The shared memory of a log is a file of fixed size, made when it is needed.
        return m_extendedCode == SQLITE_IOERR_SHMSIZE ? ErrorKind::Full : ErrorKind::IoError;
    case SQLITE_CONSTRAINT:
        return ErrorKind::Constraint;
    case SQLITE_INTERRUPT:
        return ErrorKind::Interrupt;
    default:
        return ErrorKind::Other;
    }
}

} // namespace sqlite
