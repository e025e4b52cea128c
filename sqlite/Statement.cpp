// Preparing, binding and stepping of one statement.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "sqlite/Statement.h"

#include <climits>
#include <sqlite3.h>

namespace sqlite {

namespace {

// A view of nothing may carry a null pointer, which SQLite would take for NULL.
const char* Bytes(std::string_view view) {
    return view.data() == nullptr ? "" : view.data();
}

} // namespace

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const noexcept {
    sqlite3_finalize(statement);
}

Statement::Statement(Database& database, std::string_view sql, Use use) {
    if (!database.IsOpen()) {
        throw Error(SQLITE_MISUSE, "the database is not open", sql);
    }
    if (sql.size() > INT_MAX) {
        throw Error(SQLITE_TOOBIG, "the statement is too long", sql);
    }
    sqlite3_stmt* statement = nullptr;
    const char* tail = nullptr;
    const unsigned flags = use == Use::Often ? SQLITE_PREPARE_PERSISTENT : 0;
    const int code = sqlite3_prepare_v3(database.Handle(), Bytes(sql), static_cast<int>(sql.size()),
                                        flags, &statement, &tail);
    m_statement.reset(statement);
    if (code != SQLITE_OK) {
        throw Error::Last(database.Handle(), code, sql);
    }
    if (statement == nullptr) {
        throw Error(SQLITE_MISUSE, "there is no statement", sql);
    }
    // What stands behind the first ";" would be passed over without a word.
    const std::string_view rest = sql.substr(static_cast<std::size_t>(tail - sql.data()));
    if (rest.find_first_not_of(" \t\r\n;") != std::string_view::npos) {
        throw Error(SQLITE_MISUSE, "more than one statement", sql);
    }
}

void Statement::Check(int code) const {
    if (code != SQLITE_OK) {
        const char* sql = sqlite3_sql(m_statement.get());
        throw Error::Last(sqlite3_db_handle(m_statement.get()), code, sql == nullptr ? "" : sql);
    }
}

Statement& Statement::BindInt64(int index, std::int64_t value) {
    Check(sqlite3_bind_int64(m_statement.get(), index, value));
    return *this;
}

Statement& Statement::Bind(int index, double value) {
    Check(sqlite3_bind_double(m_statement.get(), index, value));
    return *this;
}

Statement& Statement::Bind(int index, std::string_view text) {
    Check(sqlite3_bind_text64(m_statement.get(), index, Bytes(text), text.size(), SQLITE_TRANSIENT,
                              SQLITE_UTF8));
    return *this;
}

Statement& Statement::Bind(int index, std::nullptr_t) {
    Check(sqlite3_bind_null(m_statement.get(), index));
    return *this;
}

Statement& Statement::BindStatic(int index, std::string_view text) {
    Check(sqlite3_bind_text64(m_statement.get(), index, Bytes(text), text.size(), SQLITE_STATIC,
                              SQLITE_UTF8));
    return *this;
}

Statement& Statement::BindBlob(int index, std::string_view bytes) {
    Check(sqlite3_bind_blob64(m_statement.get(), index, Bytes(bytes), bytes.size(),
                              SQLITE_TRANSIENT));
    return *this;
}

Statement& Statement::BindBlobStatic(int index, std::string_view bytes) {
    Check(sqlite3_bind_blob64(m_statement.get(), index, Bytes(bytes), bytes.size(), SQLITE_STATIC));
    return *this;
}

int Statement::ParameterCount() const {
    return sqlite3_bind_parameter_count(m_statement.get());
}

bool Statement::Step() {
    const int code = sqlite3_step(m_statement.get());
    if (code == SQLITE_ROW) {
        return true;
    }
    if (code == SQLITE_DONE) {
        return false;
    }
    const char* sql = sqlite3_sql(m_statement.get());
    const Error error =
        Error::Last(sqlite3_db_handle(m_statement.get()), code, sql == nullptr ? "" : sql);
    Reset(); // a failed statement must not keep its locks
    throw error;
}

void Statement::Run() {
    while (Step()) {
    }
    Reset();
}

void Statement::Reset() noexcept {
    sqlite3_reset(m_statement.get());
}

void Statement::ClearBindings() noexcept {
    sqlite3_clear_bindings(m_statement.get());
}

ColumnType Statement::Type(int column) const {
    switch (sqlite3_column_type(m_statement.get(), column)) {
    case SQLITE_INTEGER:
        return ColumnType::Integer;
    case SQLITE_FLOAT:
        return ColumnType::Real;
    case SQLITE_TEXT:
        return ColumnType::Text;
    case SQLITE_BLOB:
        return ColumnType::Blob;
    default:
        return ColumnType::Null;
    }
}

int Statement::Int(int column) const {
    return sqlite3_column_int(m_statement.get(), column);
}

std::int64_t Statement::Int64(int column) const {
    return sqlite3_column_int64(m_statement.get(), column);
}

double Statement::Double(int column) const {
    return sqlite3_column_double(m_statement.get(), column);
}

std::string_view Statement::Text(int column) const {
    // The pointer first: asking for the length may convert in place.
    const auto* text = sqlite3_column_text(m_statement.get(), column);
    const int size = sqlite3_column_bytes(m_statement.get(), column);
    return text == nullptr ? std::string_view()
                           : std::string_view(reinterpret_cast<const char*>(text),
                                              static_cast<std::size_t>(size));
}

std::string_view Statement::Blob(int column) const {
    const void* bytes = sqlite3_column_blob(m_statement.get(), column);
    const int size = sqlite3_column_bytes(m_statement.get(), column);
    return bytes == nullptr
               ? std::string_view()
               : std::string_view(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

int Statement::ColumnCount() const {
    return sqlite3_column_count(m_statement.get());
}

std::string Statement::ColumnName(int column) const {
    const char* name = sqlite3_column_name(m_statement.get(), column);
    return name == nullptr ? std::string() : std::string(name);
}

std::optional<std::int64_t> QueryInt64(Database& database, std::string_view sql) {
    Statement statement(database, sql);
    return statement.Step() && !statement.IsNull(0) ? std::optional(statement.Int64(0))
                                                    : std::nullopt;
}

std::optional<std::string> QueryText(Database& database, std::string_view sql) {
    Statement statement(database, sql);
    return statement.Step() && !statement.IsNull(0) ? std::optional(std::string(statement.Text(0)))
                                                    : std::nullopt;
}

} // namespace sqlite
