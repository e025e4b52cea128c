// An archive in a folder of its own, and a person in front whose answers are scripted.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Failure.h"
#include "core/Globals.h"
#include "platform/LogicalPath.h"
#include "sqlite/Database.h"
#include "sqlite/Statement.h"
#include "sqlite/Unicode.h"
#include "store/MessageIds.h"
#include "store/ModDb.h"
#include "store/Template.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <deque>
#include <gmock/gmock.h>

// Shown by GoogleTest when a comparison fails.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << text.toStdString();
}

namespace velmora {

// Answers Cancel when the script has run out.
class ScriptedReporter : public Reporter {
  public:
    using Answer = std::function<bool()>; // true: Retry
    bool Retry(const QString& report) override {
        reports << report;
        if (answers.empty()) {
            return false;
        }
        const Answer answer = answers.front();
        answers.pop_front();
        return answer();
    }
    QStringList reports;
    std::deque<Answer> answers;
};

class StoreTest : public testing::Test {
  protected:
    StoreTest() : m_reporting(reporter) {
        globals->gArchivePath = platform::ToLogical(Folder());
        globals->gUserKey = QStringLiteral("DOMAIN.D'ÈVE");
        globals->reporter = &reporter;
        holder->busyWait = std::chrono::milliseconds(20);
    }

    QString Folder() const { return m_folder.path(); } // of the machine
    QString File(const QString& name) const { return m_folder.filePath(name); }
    std::string DatabaseFile() const { return File(QStringLiteral("db.mdb")).toStdString(); }

    // A second connection that knows nothing of the program's.
    sqlite::Database Beside(std::chrono::milliseconds wait = std::chrono::seconds(10)) const {
        sqlite::Database database(DatabaseFile(), {sqlite::OpenMode::ReadWrite, wait});
        sqlite::RegisterUnicode(database);
        return database;
    }
    std::int64_t Count(const std::string& from) const {
        sqlite::Database database = Beside();
        return sqlite::QueryInt64(database, "SELECT count(*) FROM " + from).value();
    }
    std::string Text(const std::string& sql) const {
        sqlite::Database database = Beside();
        return sqlite::QueryText(database, sql).value_or("NULL");
    }

    QTemporaryDir m_folder;
    ScriptedReporter reporter;
    ScopedGlobals globals;
    ScopedReporter m_reporting;
    ScopedConnection holder;
};

// The same with an empty database in it.
class ArchiveTest : public StoreTest {
  protected:
    ArchiveTest() { CreateDatabase(Program().gArchivePath); }

    // One row through the record set; values in pairs of name and value. Answers its counter.
    static qlonglong Add(const QString& table,
                         const std::vector<std::pair<QString, QVariant>>& values) {
        RecordSetPtr rs = GetRs(QStringLiteral("SELECT * FROM %1 WHERE 1=0").arg(table));
        rs->AddNew();
        for (const auto& [name, value] : values) {
            rs->Fields(name).SetValue(value);
        }
        rs->UpdateBatch();
        return rs->HasField(u"i_id") ? rs->Fields(u"i_id").Number() : 0;
    }
    static qlonglong AddDocument(const QString& table, const QString& path, const QString& name,
                                 const QString& user = Program().gUserKey) {
        return Add(table, {{QStringLiteral("spath"), path},
                           {QStringLiteral("sfilename"), name},
                           {QStringLiteral("suser"), user}});
    }
};

// The number of the failure that the work throws; 0 when it throws none.
template <class Work> int NumberOf(Work&& work) {
    try {
        work();
    } catch (const Error& error) {
        return error.Number();
    }
    return 0;
}

} // namespace velmora
