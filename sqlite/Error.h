// What went wrong in a database, in one vocabulary.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;

namespace sqlite {

// What a caller can act upon; Code() tells the rest.
enum class ErrorKind {
    Busy,       // another connection holds a lock that the wait did not outlast
    Full,       // no room on the disk
    Corrupt,    // damaged, or no database file at all
    ReadOnly,   // file, folder or file system may not be written
    CantOpen,   // no such file, or no right to it
    IoError,    // the disk or the share failed
    Constraint, // a unique index, a NOT NULL or a key refused the row
    Interrupt,  // stopped by Database::Interrupt
    Other,      // wrong SQL, misuse, out of memory, too big
};

// Thrown by everything in this folder. what() is UTF-8: SQLite's words, then the statement that
// failed, cut to some 200 bytes, where there was one.
class Error : public std::runtime_error {
  public:
    Error(int extendedCode, const std::string& message, std::string_view sql = {});

    // The error of the connection's last call.
    static Error Last(sqlite3* handle, int code, std::string_view sql = {});

    [[nodiscard]] int Code() const { return m_extendedCode & 0xFF; } // SQLITE_BUSY and so on
    [[nodiscard]] int ExtendedCode() const { return m_extendedCode; }
    [[nodiscard]] ErrorKind Kind() const;
    [[nodiscard]] const std::string& Message() const { return m_message; } // without the statement

  private:
    int m_extendedCode;
    std::string m_message;
};

} // namespace sqlite
