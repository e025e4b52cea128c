// The connection on an SQLite file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "sqlite/Database.h"
#include "store/Connection.h"

#include <chrono>

namespace velmora {

// Rollback journal and full sync, for archives on network shares and for kills at any moment. A
// share whose locks cannot be relied on is refused.
// Declared types of columns: TEXT(n), TEXT (memo), INT, DOUBLE, INTEGER PRIMARY KEY AUTOINCREMENT;
// texts in the collation UNICODE_NOCASE. Index names bear the table's name in front, as they are
// unique per file here.
class SqliteConnection : public Connection {
  public:
    // busyWait: how long a statement waits for a lock of another program before it fails.
    explicit SqliteConnection(std::chrono::milliseconds busyWait);
    ~SqliteConnection() override;

    void Open(const QString& place) override;
    [[nodiscard]] bool IsOpen() const override { return m_database.IsOpen(); }
    // Makes a new empty file at a machine path, for the template. The name must be free.
    void Create(const QString& machinePath);
    void Close();

    qint64 Execute(const QString& sql, const QVariantList& values) override;
    Rows Query(const QString& sql, const QVariantList& values) override;

    qint64 InsertRow(const QString& table, const std::vector<NamedValue>& values) override;
    bool UpdateRow(const QString& table, const std::vector<NamedValue>& known,
                   const std::vector<NamedValue>& values) override;
    bool DeleteRow(const QString& table, const std::vector<NamedValue>& known) override;

    bool TableExists(const QString& table) override;
    bool ColumnExists(const QString& column) override;
    void CreateTable(const Table& table) override;
    void AddColumn(const QString& table, const Column& column) override;
    void DropColumn(const QString& table, const QString& column) override;
    void WidenColumn(const QString& table, const QString& column, int size) override;

    void InTransaction(const std::function<void()>& work) override;

  private:
    void OpenFile(sqlite::OpenMode mode);
    void RequireOpen() const;
    void ReplaceColumn(const QString& table, const QString& column, int size);

    std::chrono::milliseconds m_busyWait;
    QString m_path; // machine path
    sqlite::Database m_database;
};

} // namespace velmora
