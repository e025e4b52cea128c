// Runs one index job, tells on a pipe what it has committed, and dies where it is told to.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "CrashJob.h"

#include "tests/platform/PretendedShare.h"
#include "tests/sqlite/FaultVfs.h"

#include <QCoreApplication>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <list>
#include <optional>
#include <string>

namespace {

using engine_test::kReportFile;

void Tell(const std::string& line) {
    if (write(kReportFile, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        _exit(3);
}

// What the transaction under way does to the rows of documents.
struct Watch {
    sqlite3* database;
    std::string pending;
};

bool IsTheIndex(sqlite3* database) {
    const char* name = sqlite3_db_filename(database, "main");
    return name != nullptr && std::string_view(name).ends_with("/index_a.ix");
}

void OnChange(void* context, int what, const char*, const char* table, sqlite3_int64 row) {
    auto& watch = *static_cast<Watch*>(context);
    if (std::string_view(table) == "document" && what != SQLITE_UPDATE)
        watch.pending += (what == SQLITE_INSERT ? " +" : " -") + std::to_string(row);
}

int BeforeCommit(void* context) {
    auto& watch = *static_cast<Watch*>(context);
    if (!watch.pending.empty() && IsTheIndex(watch.database))
        Tell("p" + watch.pending + "\n");
    return 0;
}

void OnRollback(void* context) {
    static_cast<Watch*>(context)->pending.clear();
}

// A statement has ended.
int OnProfile(unsigned, void* context, void* statement, void*) {
    auto& watch = *static_cast<Watch*>(context);
    const char* sql = sqlite3_sql(static_cast<sqlite3_stmt*>(statement));
    if (sql == nullptr || std::string_view(sql) != "COMMIT" ||
        sqlite3_get_autocommit(watch.database) == 0)
        return 0;
    if (!watch.pending.empty() && IsTheIndex(watch.database))
        Tell("c\n");
    watch.pending.clear();
    return 0;
}

int OnOpen(sqlite3* database, char**, const sqlite3_api_routines*) {
    static std::list<Watch> watches;
    Watch& watch = watches.emplace_back(Watch{database, {}});
    sqlite3_update_hook(database, &OnChange, &watch);
    sqlite3_commit_hook(database, &BeforeCommit, &watch);
    sqlite3_rollback_hook(database, &OnRollback, &watch);
    sqlite3_trace_v2(database, SQLITE_TRACE_PROFILE, &OnProfile, &watch);
    return SQLITE_OK;
}

} // namespace

namespace {

std::int64_t g_steps = 0;
std::int64_t g_killAtStep = 0;

// A name that is there changes, or goes: a step at which the child may be killed.
void Step(const char* name) {
    if (access(name, F_OK) == 0 && ++g_steps == g_killAtStep)
        kill(getpid(), SIGKILL);
}

} // namespace

// In place of the C library's, for the engine and all libraries.
extern "C" int rename(const char* from, const char* to) {
    Step(from);
    return static_cast<int>(syscall(SYS_rename, from, to));
}
extern "C" int link(const char* from, const char* to) {
    Step(from);
    return static_cast<int>(syscall(SYS_link, from, to));
}
extern "C" int unlink(const char* path) {
    Step(path);
    return static_cast<int>(syscall(SYS_unlink, path));
}

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    fcntl(kReportFile, F_SETFD, FD_CLOEXEC);
    const engine_test::CrashJob job = engine_test::CrashJob::FromArguments(application.arguments());
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(&OnOpen));
    std::optional<sqlite_test::FaultVfs> vfs;
    if (job.fault.at != 0) {
        vfs.emplace();
        vfs->Plan(job.fault);
    }
    const engine::IndexJob run = job.Job();
    g_steps = 0;
    g_killAtStep = job.killAtStep;
    std::optional<platform_test::PretendedShare> share;
    if (job.onAShare)
        share.emplace();
    const engine::IndexReport report = run.Execute();
    if (report.fault)
        Tell("f " + report.faultText.toStdString() + "\n");
    Tell("e " + std::to_string(vfs ? vfs->Calls() : 0) + " " + std::to_string(g_steps) + "\n");
    return report.fault ? 1 : 0;
}
