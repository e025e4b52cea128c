// Asking for tables and columns, making and changing them in an SQLite file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/SqliteConnection.h"

#include "store/SqliteFailure.h"
#include "store/SqliteValues.h"

#include <QStringList>

namespace velmora {

namespace {

QString QuotedList(const QStringList& names) {
    QStringList quoted;
    for (const QString& name : names) {
        quoted << Quoted(name);
    }
    return quoted.join(u',');
}

QString TableText(const Table& table) {
    QStringList parts;
    bool hasCounter = false;
    for (const Column& column : table.columns) {
        const bool isKey = table.primaryKey.contains(column.name, Qt::CaseInsensitive);
        hasCounter = hasCounter || column.type == FieldType::AutoNumber;
        parts << Quoted(column.name) + u' ' + DeclaredType(column) +
                     (isKey ? QStringLiteral(" NOT NULL") : QString());
    }
    if (!hasCounter && !table.primaryKey.isEmpty()) {
        parts << QStringLiteral("PRIMARY KEY (%1)").arg(QuotedList(table.primaryKey));
    }
    return QStringLiteral("CREATE TABLE %1 (%2)").arg(Quoted(table.name), parts.join(u','));
}

} // namespace

bool SqliteConnection::TableExists(const QString& table) {
    return !Query(QStringLiteral("SELECT 1 FROM sqlite_schema WHERE type='table' AND "
                                 "name=? COLLATE UNICODE_NOCASE"),
                  {table})
                .rows.empty();
}

bool SqliteConnection::ColumnExists(const QString& column) {
    return !Query(QStringLiteral("SELECT 1 FROM sqlite_schema t, pragma_table_info(t.name) c "
                                 "WHERE t.type='table' AND c.name=? COLLATE UNICODE_NOCASE"),
                  {column})
                .rows.empty();
}

void SqliteConnection::CreateTable(const Table& table) {
    InTransaction([&] {
        Execute(TableText(table), {});
        for (const Index& index : table.indexes) {
            Execute(QStringLiteral("CREATE %1INDEX %2 ON %3 (%4)")
                        .arg(index.unique ? QStringLiteral("UNIQUE ") : QString(),
                             Quoted(table.name + u'_' + index.name), Quoted(table.name),
                             QuotedList(index.columns)),
                    {});
        }
    });
}

void SqliteConnection::AddColumn(const QString& table, const Column& column) {
    Execute(QStringLiteral("ALTER TABLE %1 ADD COLUMN %2 %3")
                .arg(Quoted(table), Quoted(column.name), DeclaredType(column)),
            {});
}

void SqliteConnection::DropColumn(const QString& table, const QString& column) {
    Execute(QStringLiteral("ALTER TABLE %1 DROP COLUMN %2").arg(Quoted(table), Quoted(column)), {});
}

void SqliteConnection::WidenColumn(const QString& table, const QString& column, int size) {
    // The transaction asks for the right to write before it is known whether that is needed, so
    // that two programs that start together never both widen.
    InTransaction([&] {
        const Rows empty = Query(
            QStringLiteral("SELECT %1 FROM %2 LIMIT 0").arg(Quoted(column), Quoted(table)), {});
        const ResultColumn& found = empty.columns.front();
        if (found.type == FieldType::Text && found.size < size) {
            ReplaceColumn(table, column, size);
        }
    });
}

// SQLite cannot alter a column: a wider one takes the values over, then the name. Indexes go
// meanwhile, as an indexed column cannot be dropped.
void SqliteConnection::ReplaceColumn(const QString& table, const QString& column, int size) {
    const Rows indexes =
        Query(QStringLiteral("SELECT name, sql FROM sqlite_schema WHERE type='index' AND sql IS "
                             "NOT NULL AND tbl_name=? COLLATE UNICODE_NOCASE"),
              {table});
    for (const Row& index : indexes.rows) {
        Execute(QStringLiteral("DROP INDEX ") + Quoted(index[0].toString()), {});
    }
    const QString wider = column + QStringLiteral("_wider");
    AddColumn(table, {wider, FieldType::Text, size});
    Execute(QStringLiteral("UPDATE %1 SET %2=%3").arg(Quoted(table), Quoted(wider), Quoted(column)),
            {});
    DropColumn(table, column);
    Execute(QStringLiteral("ALTER TABLE %1 RENAME COLUMN %2 TO %3")
                .arg(Quoted(table), Quoted(wider), Quoted(column)),
            {});
    for (const Row& index : indexes.rows) {
        Execute(index[1].toString(), {});
    }
}

} // namespace velmora
