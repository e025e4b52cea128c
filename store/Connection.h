// What the data layer needs of a database; names no engine, so that a server can stand behind it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "store/Schema.h"

#include <QVariant>
#include <functional>
#include <vector>

namespace velmora {

struct ResultColumn {
    QString name;
    QString table; // the table it comes from; empty for an expression
    FieldType type = FieldType::Memo;
    int size = 0; // most characters of a Text column; 0 for the others
};

// A value is null (invalid QVariant), qlonglong, double, QString or QByteArray.
using Row = std::vector<QVariant>;

struct Rows {
    std::vector<ResultColumn> columns;
    std::vector<Row> rows;
};

struct NamedValue {
    QString column;
    QVariant value;
};

// Every function may throw velmora::Error, with a text for the person in front. SQL has "?" for
// values, in the order of the list. Texts compare without case, whatever the table.
class Connection {
  public:
    virtual ~Connection() = default;

    // place: logical path of the database. It must exist: nothing is ever created here.
    virtual void Open(const QString& place) = 0;
    [[nodiscard]] virtual bool IsOpen() const = 0;

    // One statement; answers the number of rows it changed.
    virtual qint64 Execute(const QString& sql, const QVariantList& values = {}) = 0;
    [[nodiscard]] virtual Rows Query(const QString& sql, const QVariantList& values = {}) = 0;

    // Single rows. `known` names one row by values as they were read, compared exactly; of several
    // rows that are alike in them one is taken.
    // Answers the new AutoNumber; means nothing for a table without one.
    virtual qint64 InsertRow(const QString& table, const std::vector<NamedValue>& values) = 0;
    // False: there is no such row (any more).
    [[nodiscard]] virtual bool UpdateRow(const QString& table, const std::vector<NamedValue>& known,
                                         const std::vector<NamedValue>& values) = 0;
    [[nodiscard]] virtual bool DeleteRow(const QString& table,
                                         const std::vector<NamedValue>& known) = 0;

    [[nodiscard]] virtual bool TableExists(const QString& table) = 0;
    // Whether a column of that name exists in any table.
    [[nodiscard]] virtual bool ColumnExists(const QString& column) = 0;
    virtual void CreateTable(const Table& table) = 0;
    virtual void AddColumn(const QString& table, const Column& column) = 0;
    virtual void DropColumn(const QString& table, const QString& column) = 0;
    // Makes a text column take at least `size` characters; its values stay. Needs the table free
    // for writing even when there is nothing to do.
    virtual void WidenColumn(const QString& table, const QString& column, int size) = 0;

    // All of the work or nothing of it: an exception undoes what it did. May be nested; the
    // outermost decides.
    virtual void InTransaction(const std::function<void()>& work) = 0;
};

} // namespace velmora
