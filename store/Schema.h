// Tables, columns and indexes in words that no database engine owns.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace velmora {

enum class FieldType {
    Text,    // up to `size` characters (UTF-16 units)
    Memo,    // text of any length
    Integer, // 32 bits
    Double,
    AutoNumber, // 32-bit counter, given by the database and never given twice
};

struct Column {
    QString name;
    FieldType type = FieldType::Text;
    int size = 0; // Text only
};

struct Index {
    QString name; // unique within its table
    QStringList columns;
    bool unique = false;
};

// All names are case-blind. Columns may be empty (null) unless they belong to the primary key.
struct Table {
    QString name;
    QList<Column> columns;
    QStringList primaryKey; // an AutoNumber column is a key of its own, named here or not
    QList<Index> indexes;
};

} // namespace velmora
