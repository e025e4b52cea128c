// Values, names and types on their way into SQLite and back.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/SqliteValues.h"

#include "sqlite/Unicode.h"

#include <sqlite3.h>

namespace velmora {

namespace {

bool IsCounter(sqlite::Database& database, const char* table, const char* column) {
    int isKey = 0;
    int isCounter = 0;
    sqlite3_table_column_metadata(database.Handle(), "main", table, column, nullptr, nullptr,
                                  nullptr, &isKey, &isCounter);
    return isKey != 0 && isCounter != 0;
}

FieldType TypeOf(const QString& declared) {
    const QString type = declared.toUpper();
    if (type.contains(QStringLiteral("INT"))) {
        return FieldType::Integer;
    }
    if (type.startsWith(QStringLiteral("DOUB")) || type.startsWith(QStringLiteral("REAL")) ||
        type.startsWith(QStringLiteral("FLOA"))) {
        return FieldType::Double;
    }
    return SizeOf(type) > 0 ? FieldType::Text : FieldType::Memo;
}

} // namespace

QString Quoted(const QString& name) {
    QString inner = name;
    return u'"' + inner.replace(u'"', QStringLiteral("\"\"")) + u'"';
}

QString DeclaredType(const Column& column) {
    const QString collation = QStringLiteral(" COLLATE ") + QLatin1String(sqlite::kUnicodeNoCase);
    switch (column.type) {
    case FieldType::Text:
        return QStringLiteral("TEXT(%1)").arg(column.size) + collation;
    case FieldType::Memo:
        return QStringLiteral("TEXT") + collation;
    case FieldType::Integer:
        return QStringLiteral("INT");
    case FieldType::Double:
        return QStringLiteral("DOUBLE");
    case FieldType::AutoNumber:
        // The keyword at the end is what keeps a number from ever being given twice.
        return QStringLiteral("INTEGER PRIMARY KEY AUTOINCREMENT");
    }
    return {};
}

void BindValue(sqlite::Statement& statement, int index, const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        statement.Bind(index, nullptr);
        return;
    case QMetaType::Bool:
        statement.Bind(index, value.toBool() ? -1 : 0);
        return;
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
        statement.Bind(index, value.toLongLong());
        return;
    case QMetaType::Float:
    case QMetaType::Double:
        statement.Bind(index, value.toDouble());
        return;
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        statement.BindBlob(index, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
        return;
    }
    default: {
        const QByteArray text = value.toString().toUtf8();
        statement.Bind(index,
                       std::string_view(text.constData(), static_cast<std::size_t>(text.size())));
    }
    }
}

QVariant ValueOf(const sqlite::Statement& statement, int column) {
    switch (statement.Type(column)) {
    case sqlite::ColumnType::Null:
        return {};
    case sqlite::ColumnType::Integer:
        return QVariant::fromValue<qlonglong>(statement.Int64(column));
    case sqlite::ColumnType::Real:
        return statement.Double(column);
    case sqlite::ColumnType::Text: {
        const std::string_view text = statement.Text(column);
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    }
    case sqlite::ColumnType::Blob: {
        const std::string_view bytes = statement.Blob(column);
        return QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size()));
    }
    }
    return {};
}

ResultColumn DescribeColumn(sqlite::Database& database, const sqlite::Statement& statement,
                            int column) {
    ResultColumn result;
    result.name = QString::fromStdString(statement.ColumnName(column));
    const char* table = sqlite3_column_table_name(statement.Handle(), column);
    const char* origin = sqlite3_column_origin_name(statement.Handle(), column);
    if (table == nullptr || origin == nullptr) {
        return result;
    }
    const QString declared = QString::fromUtf8(sqlite3_column_decltype(statement.Handle(), column));
    result.table = QString::fromUtf8(table);
    result.size = SizeOf(declared);
    result.type = IsCounter(database, table, origin) ? FieldType::AutoNumber : TypeOf(declared);
    return result;
}

int SizeOf(const QString& declaredType) {
    const qsizetype open = declaredType.indexOf(u'(');
    const qsizetype close = declaredType.indexOf(u')', open);
    return open < 0 || close < 0 ? 0 : declaredType.mid(open + 1, close - open - 1).toInt();
}

} // namespace velmora
