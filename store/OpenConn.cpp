// The process-wide connection: opening it and bringing an older database up to date.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Failure.h"
#include "core/Globals.h"
#include "platform/LogicalPath.h"
#include "store/ModDb.h"
#include "store/SqliteConnection.h"
#include "store/Template.h"

#include <utility>

namespace velmora {

namespace {

ConnectionHolder*& InForce() {
    static ConnectionHolder holder;
    static ConnectionHolder* inForce = &holder;
    return inForce;
}

void Open(Connection& connection) {
    connection.Open(platform::JoinPath(Program().gArchivePath, QStringLiteral("db.mdb")));
}

// Any table's column of that name counts: the question was never asked of one table only, and
// databases rely on that.
void AddStoreId(Connection& connection) {
    const QString column = QStringLiteral("SSTOREID");
    if (connection.ColumnExists(column)) {
        return;
    }
    connection.InTransaction([&] {
        if (!connection.ColumnExists(column)) { // another program may have been faster
            connection.AddColumn(QStringLiteral("tblmailfolders"),
                                 {QStringLiteral("sstoreid"), FieldType::Memo});
        }
    });
}

void AddStamps(Connection& connection) {
    if (connection.TableExists(StampTable().name)) {
        return;
    }
    connection.InTransaction([&] {
        if (!connection.TableExists(StampTable().name)) {
            connection.CreateTable(StampTable());
        }
    });
}

} // namespace

ConnectionHolder& Store() {
    return *InForce();
}

ScopedConnection::ScopedConnection() : m_covered(std::exchange(InForce(), &m_own)) {}

ScopedConnection::~ScopedConnection() {
    InForce() = m_covered;
}

void OpenConn() {
    if (!Store().gConnection) { // record sets hold on to the one that is there
        Store().gConnection = std::make_unique<SqliteConnection>(Store().busyWait);
    }
    Connection& connection = *Store().gConnection;
    if (Attempt("ModDb", "OpenConn", [&] { Open(connection); })) {
        UpdateDBFormat();
    }
}

void UpdateDBFormat() {
    Connection& connection = *Store().gConnection;
    const QString name = QStringLiteral("sfilename");
    const std::function<void()> steps[] = {
        [&] { AddStoreId(connection); },
        [&] { AddStamps(connection); },
        // Narrower in old files. Repeated at every opening; does no harm, but needs the table free.
        [&] { connection.WidenColumn(QStringLiteral("tblocrfiles"), name, 255); },
        [&] { connection.WidenColumn(QStringLiteral("tblAnnotationFiles"), name, 255); },
    };
    for (const auto& step : steps) {
        if (!Attempt("ModDb", "UpdateDBFormat", step)) {
            return;
        }
    }
}

Connection& OpenedConnection() {
    if (!Store().gConnection) {
        OpenConn();
    }
    Connection& connection = *Store().gConnection;
    if (!connection.IsOpen()) {
        Open(connection); // fails again with its reason, or goes on as if nothing had been
        UpdateDBFormat();
    }
    return connection;
}

} // namespace velmora
