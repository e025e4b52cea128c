// Opening an SQLite file, running statements, writing single rows.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/SqliteConnection.h"

#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "platform/Names.h"
#include "sqlite/Unicode.h"
#include "store/ShareLocks.h"
#include "store/SqliteFailure.h"
#include "store/SqliteValues.h"
#include "store/StoreError.h"
#include "store/Template.h"

#include <QStringList>
#include <cerrno>

namespace velmora {

namespace {

sqlite::Statement Prepare(sqlite::Database& database, const QString& sql) {
    const QByteArray text = sql.toUtf8();
    return {database, std::string_view(text.constData(), static_cast<std::size_t>(text.size()))};
}

sqlite::Statement Prepare(sqlite::Database& database, const QString& sql,
                          const QVariantList& values) {
    sqlite::Statement statement = Prepare(database, sql);
    int index = 0;
    for (const QVariant& value : values) {
        BindValue(statement, ++index, value);
    }
    return statement;
}

void BindAll(sqlite::Statement& statement, int& index, const std::vector<NamedValue>& values) {
    for (const NamedValue& value : values) {
        BindValue(statement, ++index, value.value);
    }
}

// One row that holds the known values. The comparison is exact, not that of the columns, since a
// change of case by another is a change. _rowid_ can be no user's field: their names are letters
// and digits.
QString OneRow(const QString& table, const std::vector<NamedValue>& known) {
    QStringList conditions;
    for (const NamedValue& value : known) {
        conditions << Quoted(value.column) + QStringLiteral(" COLLATE BINARY IS ?");
    }
    return QStringLiteral(" WHERE _rowid_ = (SELECT _rowid_ FROM %1 WHERE %2 LIMIT 1)")
        .arg(Quoted(table), conditions.join(QStringLiteral(" AND ")));
}

// Why there is nothing to open under a path; throws.
void RequireFile(const QString& path, const QString& shownPath) {
    platform::SystemError error;
    const auto status = path.isEmpty() ? std::nullopt : platform::StatusOf(path, &error);
    if (!status && !error.Ok() && error.code != ENOENT && error.code != ENOTDIR) {
        throw StoreError(kDatabaseNotOpened, {shownPath, error.text});
    }
    if (!status || status->IsFolder()) {
        throw StoreError(kDatabaseMissing, {shownPath});
    }
    if (status->size == 0) {
        // To SQLite an empty file is a database without tables.
        throw StoreError(kNotADatabase, {shownPath});
    }
}

} // namespace

SqliteConnection::SqliteConnection(std::chrono::milliseconds busyWait) : m_busyWait(busyWait) {}

SqliteConnection::~SqliteConnection() = default;

void SqliteConnection::Open(const QString& place) {
    const QString path = platform::ToMachine(place);
    m_path = path.isEmpty() ? place : path;
    RequireFile(path, m_path);
    RequireShareLocks(m_path.section(u'/', 0, -2));
    try {
        OpenFile(sqlite::OpenMode::ReadWrite);
        if (!TableExists(TemplateTables().first().name)) {
            throw StoreError(kNotADatabase, {m_path}); // SQLite's, but another program's
        }
    } catch (const sqlite::Error& error) {
        Close(); // before the file is looked into: see IsJetFile
        throw FailureOf(error, m_path);
    } catch (...) {
        Close();
        throw;
    }
}

void SqliteConnection::Create(const QString& machinePath) {
    m_path = machinePath;
    Told(m_path, [&] {
        OpenFile(sqlite::OpenMode::Create);
        m_database.SetPragma("application_id", "0x56454C4D"); // tells the file's kind to others
    });
}

void SqliteConnection::OpenFile(sqlite::OpenMode mode) {
    m_database = sqlite::Database(platform::EncodeName(m_path).toStdString(), {mode, m_busyWait});
    sqlite::RegisterUnicode(m_database);
    // A write-ahead log needs shared memory, which a network share does not have.
    m_database.SetPragma("journal_mode", "DELETE");
    m_database.SetPragma("synchronous", "FULL");
}

void SqliteConnection::Close() {
    m_database.Close();
}

void SqliteConnection::RequireOpen() const {
    if (!IsOpen()) {
        throw StoreError(kDatabaseClosed);
    }
}

qint64 SqliteConnection::Execute(const QString& sql, const QVariantList& values) {
    RequireOpen();
    return Told(m_path, [&] {
        const std::int64_t before = m_database.TotalChanges();
        Prepare(m_database, sql, values).Run();
        return static_cast<qint64>(m_database.TotalChanges() - before);
    });
}

Rows SqliteConnection::Query(const QString& sql, const QVariantList& values) {
    RequireOpen();
    return Told(m_path, [&] {
        sqlite::Statement statement = Prepare(m_database, sql, values);
        Rows result;
        // The first step prepares anew when another program changed the columns meanwhile.
        bool hasRow = statement.Step();
        const int count = statement.ColumnCount();
        for (int column = 0; column < count; ++column) {
            result.columns.push_back(DescribeColumn(m_database, statement, column));
        }
        for (; hasRow; hasRow = statement.Step()) {
            Row row;
            for (int column = 0; column < count; ++column) {
                row.push_back(ValueOf(statement, column));
            }
            result.rows.push_back(std::move(row));
        }
        return result;
    });
}

qint64 SqliteConnection::InsertRow(const QString& table, const std::vector<NamedValue>& values) {
    RequireOpen();
    return Told(m_path, [&] {
        QStringList columns;
        QStringList marks;
        for (const NamedValue& value : values) {
            columns << Quoted(value.column);
            marks << QStringLiteral("?");
        }
        const QString list =
            values.empty()
                ? QStringLiteral(" DEFAULT VALUES")
                : QStringLiteral(" (%1) VALUES (%2)").arg(columns.join(u','), marks.join(u','));
        sqlite::Statement statement =
            Prepare(m_database, QStringLiteral("INSERT INTO ") + Quoted(table) + list);
        int index = 0;
        BindAll(statement, index, values);
        statement.Run();
        return static_cast<qint64>(m_database.LastRowId());
    });
}

bool SqliteConnection::UpdateRow(const QString& table, const std::vector<NamedValue>& known,
                                 const std::vector<NamedValue>& values) {
    RequireOpen();
    return Told(m_path, [&] {
        QStringList columns;
        for (const NamedValue& value : values) {
            columns << Quoted(value.column) + QStringLiteral("=?");
        }
        sqlite::Statement statement = Prepare(
            m_database, QStringLiteral("UPDATE ") + Quoted(table) + QStringLiteral(" SET ") +
                            columns.join(u',') + OneRow(table, known));
        int index = 0;
        BindAll(statement, index, values);
        BindAll(statement, index, known);
        statement.Run();
        return m_database.Changes() == 1;
    });
}

bool SqliteConnection::DeleteRow(const QString& table, const std::vector<NamedValue>& known) {
    RequireOpen();
    return Told(m_path, [&] {
        sqlite::Statement statement = Prepare(m_database, QStringLiteral("DELETE FROM ") +
                                                              Quoted(table) + OneRow(table, known));
        int index = 0;
        BindAll(statement, index, known);
        statement.Run();
        return m_database.Changes() == 1;
    });
}

void SqliteConnection::InTransaction(const std::function<void()>& work) {
    RequireOpen();
    if (m_database.InTransaction()) {
        work();
        return;
    }
    Told(m_path, [&] {
        sqlite::Transaction transaction(m_database);
        work();
        transaction.Commit();
    });
}

} // namespace velmora
