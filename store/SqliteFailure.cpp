// Which text a failure of SQLite gets.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/SqliteFailure.h"

#include "platform/Files.h"
#include "store/StoreError.h"

#include <QFile>
#include <sqlite3.h>

namespace velmora {

namespace {

// Whether the file is a database of the Jet engine, by its signature. Only for files that no
// connection of this process has open: closing a file drops the process's locks on it.
bool IsJetFile(const QString& path) {
    const platform::FileDescriptor file = platform::OpenForReading(path);
    QFile reader;
    if (!file.IsOpen() || !reader.open(file.Number(), QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray head = reader.read(20);
    return head.mid(4, 12) == "Standard Jet" || head.mid(4, 12) == "Standard ACE";
}

// The columns in "UNIQUE constraint failed: t.a, t.b".
QString ConstraintColumns(const QString& message) {
    return message.section(QStringLiteral(": "), 1);
}

QString TextOf(const sqlite::Error& error, const QString& path) {
    QString words = QString::fromStdString(error.Message());
    switch (error.Kind()) {
    case sqlite::ErrorKind::Busy:
        return GetMessage(kDatabaseLocked, {path});
    case sqlite::ErrorKind::Full:
        return GetMessage(kDiskFull, {path});
    case sqlite::ErrorKind::Corrupt:
        if (error.Code() == SQLITE_NOTADB) {
            return GetMessage(IsJetFile(path) ? kJetDatabase : kNotADatabase, {path});
        }
        return GetMessage(kDatabaseDamaged, {path, words});
    case sqlite::ErrorKind::ReadOnly:
        return GetMessage(kDatabaseReadOnly, {path});
    case sqlite::ErrorKind::CantOpen:
        return GetMessage(kDatabaseNotOpened, {path, words});
    case sqlite::ErrorKind::IoError:
        return GetMessage(kDatabaseIo, {path, words});
    case sqlite::ErrorKind::Constraint:
        if (error.ExtendedCode() == SQLITE_CONSTRAINT_UNIQUE ||
            error.ExtendedCode() == SQLITE_CONSTRAINT_PRIMARYKEY) {
            return GetMessage(kDuplicateRecord, {ConstraintColumns(words)});
        }
        return words;
    default:
        return QString::fromUtf8(error.what()); // with the statement: it is what is wrong
    }
}

} // namespace

Error FailureOf(const sqlite::Error& error, const QString& path) {
    return {error.ExtendedCode(), TextOf(error, path)};
}

} // namespace velmora
