// Owner of one prepared statement: bind, step, read columns.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "sqlite/Database.h"

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3_stmt;

namespace sqlite {

enum class ColumnType { Null, Integer, Real, Text, Blob };
enum class Use { Once, Often }; // Often: kept and run again and again

// Parameters count from 1 and columns from 0, as in SQLite. Every function that can fail throws
// Error. Must not outlive its Database by a use (dying later is harmless).
//   Statement find(database, "SELECT id FROM t WHERE name = ?1", Use::Often);
//   find.Bind(1, name);
//   while (find.Step()) { find.Int64(0); }
//   find.Reset();
class Statement {
  public:
    Statement() = default; // empty; only assignment and IsPrepared
    // sql: exactly one statement.
    Statement(Database& database, std::string_view sql, Use use = Use::Once);

    [[nodiscard]] bool IsPrepared() const { return m_statement != nullptr; }

    // Bindings stay through Reset. After Step they may change only when Reset came first. Text and
    // blobs are copied; the ...Static forms keep the view, which must live until the next binding
    // of that parameter, ClearBindings or the statement's end.
    Statement& Bind(int index, std::integral auto value) {
        return BindInt64(index, static_cast<std::int64_t>(value));
    }
    Statement& Bind(int index, double value);
    Statement& Bind(int index, std::string_view text);
    Statement& Bind(int index, std::nullptr_t);
    template <typename T> Statement& Bind(int index, const std::optional<T>& value) {
        return value ? Bind(index, *value) : Bind(index, nullptr);
    }
    Statement& BindStatic(int index, std::string_view text);
    Statement& BindBlob(int index, std::string_view bytes);
    Statement& BindBlobStatic(int index, std::string_view bytes);
    [[nodiscard]] int ParameterCount() const;

    // True: there is a row. False: done. A failure resets the statement before it throws.
    bool Step();
    // Steps to the end and resets; for statements without rows.
    void Run();
    void
    Reset() noexcept; // ready to run again; releases the locks of a statement that had rows left
    void ClearBindings() noexcept;

    // Of the current row; views are valid until the next Step, Reset or other reading of the
    // same column as another type.
    [[nodiscard]] ColumnType Type(int column) const;
    [[nodiscard]] bool IsNull(int column) const { return Type(column) == ColumnType::Null; }
    [[nodiscard]] int Int(int column) const;
    [[nodiscard]] std::int64_t Int64(int column) const;
    [[nodiscard]] double Double(int column) const;
    [[nodiscard]] std::string_view Text(int column) const; // empty for NULL
    [[nodiscard]] std::string_view Blob(int column) const; // empty for NULL
    // Of the statement, with or without a row.
    [[nodiscard]] int ColumnCount() const;
    [[nodiscard]] std::string ColumnName(int column) const;

    [[nodiscard]] sqlite3_stmt* Handle() const { return m_statement.get(); } // stays owned here

  private:
    Statement& BindInt64(int index, std::int64_t value);
    void Check(int code) const;

    struct Finalizer {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
};

// First column of the first row; nothing when there is no row or it holds NULL.
[[nodiscard]] std::optional<std::int64_t> QueryInt64(Database& database, std::string_view sql);
[[nodiscard]] std::optional<std::string> QueryText(Database& database, std::string_view sql);

} // namespace sqlite
