// Values, names and types on their way into SQLite and back.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "sqlite/Statement.h"
#include "store/Connection.h"

namespace velmora {

// A name in double quotes.
[[nodiscard]] QString Quoted(const QString& name);
// The declared type of a column, collation included.
[[nodiscard]] QString DeclaredType(const Column& column);

// index counts from 1.
void BindValue(sqlite::Statement& statement, int index, const QVariant& value);
// column counts from 0.
[[nodiscard]] QVariant ValueOf(const sqlite::Statement& statement, int column);
// Where a column of a result comes from and what it holds.
[[nodiscard]] ResultColumn DescribeColumn(sqlite::Database& database,
                                          const sqlite::Statement& statement, int column);
// Most characters of a declared type, as in TEXT(255); 0 when it names none.
[[nodiscard]] int SizeOf(const QString& declaredType);

} // namespace velmora
