// The steps by which one index takes the place of another.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/Replacement.h"

#include "engine/index/Paths.h"
#include "platform/Files.h"

#include <QDateTime>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace engine {
namespace {

constexpr const char* kLogs[] = {"-wal", "-journal"};
constexpr const char* kShared = "-shm"; // of no use to anybody later
constexpr const char* kFresh = ".new";
constexpr const char* kDamaged = ".damaged-";

std::string FolderOf(const std::string& path) {
    return path.substr(0, path.find_last_of('/') + 1);
}

bool IsThere(const std::string& path) {
    return platform::Exists(PathText(path));
}

bool HoldsAnything(const std::string& path) {
    const auto status = platform::StatusOf(PathText(path));
    return status && status->size > 0;
}

void Remove(const std::string& path) {
    (void)platform::RemoveFile(PathText(path));
}

IndexError SystemFailure(const std::string& path) {
    const int reason = errno;
    const IndexFault fault = reason == ENOSPC || reason == EDQUOT ? IndexFault::DiskFull
                             : reason == EACCES || reason == EPERM || reason == EROFS
                                 ? IndexFault::NoRights
                                 : IndexFault::Other;
    return {fault, path + ": " + std::strerror(reason)};
}

void Rename(const std::string& from, const std::string& to) {
    if (std::rename(from.c_str(), to.c_str()) != 0)
        throw SystemFailure(from);
}

// A new name is safe only with its folder. A file system that cannot do that has its own ways.
void SyncFolder(const std::string& path) {
    const int folder = open(FolderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    (void)fsync(folder);
    close(folder);
}

// Machine paths of the damaged indexes that are kept, with their logs.
std::vector<std::string> KeptFiles(const std::string& indexFile) {
    const std::string folder = FolderOf(indexFile);
    const std::string prefix = indexFile.substr(folder.size()) + kDamaged;
    std::vector<std::string> files;
    for (const platform::FolderEntry& entry : platform::ListFolder(PathText(folder)).entries)
        if (std::string name = platform::EncodeName(entry.name).toStdString();
            name.starts_with(prefix))
            files.push_back(folder + name);
    return files;
}

// The index, when the path is that of something beside it.
std::string IndexOf(const std::string& path) {
    for (const std::string_view beside : {kLogs[0], kLogs[1], kShared})
        if (path.ends_with(beside))
            return path.substr(0, path.size() - beside.size());
    return path;
}

bool AreOneFile(const std::string& path, const std::string& other) {
    const auto one = platform::StatusOf(PathText(path));
    const auto two = platform::StatusOf(PathText(other));
    return one && two && one->device == two->device && one->number == two->number;
}

// A second name first: then the index's own name never leads nowhere. Where a file has one name
// only it does so for a moment, and CutShort knows.
void KeepUnder(const std::string& indexFile, const std::string& kept) {
    if (link(indexFile.c_str(), kept.c_str()) != 0)
        Rename(indexFile, kept);
}

// The logs go first: what is in them must not be taken for the new index's.
std::string SetAside(const std::string& indexFile) {
    const std::string date =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd-HHmmss-zzz")).toStdString();
    const std::string kept = indexFile + kDamaged + date;
    for (const std::string& same : {kept, kept + "-wal", kept + "-journal"})
        Remove(same);
    for (const char* log : kLogs) {
        if (HoldsAnything(indexFile + log))
            Rename(indexFile + log, kept + log);
        Remove(indexFile + log);
    }
    SyncFolder(indexFile);
    Remove(indexFile + kShared);
    if (!IsThere(indexFile))
        return {};
    KeepUnder(indexFile, kept);
    SyncFolder(indexFile);
    return kept;
}

} // namespace

Replacement::Replacement(std::string indexFile)
    : m_indexFile(std::move(indexFile)), m_path(m_indexFile + kFresh) {
    RemoveFresh();
}

Replacement::~Replacement() {
    RemoveFresh();
}

void Replacement::RemoveFresh() const noexcept {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"})
        Remove(m_path + suffix);
}

void Replacement::Settle(IndexFile& fresh) {
    sqlite::Statement settle(fresh.Db(), "PRAGMA wal_checkpoint(TRUNCATE)");
    if (settle.Step() && settle.Int(0) != 0)
        throw IndexError(IndexFault::Busy, "the new index is in use");
}

void Replacement::CopyOver(IndexFile& fresh, bool shared) const {
    sqlite::Database target(m_indexFile, {sqlite::OpenMode::ReadWrite, {}});
    const bool network = platform::IsNetworkFileSystem(PathText(m_indexFile));
    HoldAloneIfFar(target, m_indexFile);
    if (shared || network)
        DropTheLog(target, network);
    target.SetBusyTimeout(std::chrono::seconds(30));
    sqlite3_backup* backup =
        sqlite3_backup_init(target.Handle(), "main", fresh.Db().Handle(), "main");
    if (backup == nullptr)
        throw sqlite::Error::Last(target.Handle(), SQLITE_ERROR);
    // A lock that could not be had is told by the step alone.
    const int step = sqlite3_backup_step(backup, -1);
    const int end = sqlite3_backup_finish(backup);
    if (step != SQLITE_DONE)
        throw sqlite::Error::Last(target.Handle(), step);
    if (end != SQLITE_OK)
        throw sqlite::Error::Last(target.Handle(), end);
}

std::string Replacement::TakePlace() const {
    // A log that a closing connection could not bring in is part of the index.
    if (HoldsAnything(m_path + "-wal"))
        throw IndexError(IndexFault::Other, "the new index could not be closed");
    for (const char* suffix : {"-wal", "-shm", "-journal"})
        Remove(m_path + suffix);
    const std::string kept = SetAside(m_indexFile);
    Rename(m_path, m_indexFile);
    SyncFolder(m_indexFile);
    for (const std::string& file : KeptFiles(m_indexFile)) {
        const std::string index = IndexOf(file);
        const bool older = kept.empty() ? !IsThere(index) : index != kept;
        if (older || file == index + kShared || (file != index && !HoldsAnything(file)))
            Remove(file);
    }
    return kept;
}

bool OpensAsIndex(const std::string& indexFile) {
    try {
        sqlite::Database database(indexFile,
                                  {sqlite::OpenMode::ReadWrite, std::chrono::seconds(10)});
        HoldAloneIfFar(database, indexFile);
        return database.ReadPragmaInt("application_id") == kApplicationId &&
               sqlite::QueryInt64(database, "SELECT count(*) FROM sqlite_schema").value_or(0) > 0;
    } catch (const sqlite::Error& error) {
        if (error.Kind() != sqlite::ErrorKind::Corrupt)
            throw;
        return false;
    }
}

std::string CutShort(const std::string& indexFile) {
    const bool there = IsThere(indexFile);
    const bool freshThere = IsThere(indexFile + kFresh);
    std::string newest;
    for (const std::string& kept : KeptFiles(indexFile)) {
        const std::string index = IndexOf(kept);
        if (kept.ends_with(kShared))
            continue;
        if (there && (AreOneFile(index, indexFile) || !IsThere(index)))
            return indexFile;
        if (!there && freshThere && index == kept)
            newest = std::max(newest, kept);
    }
    return newest;
}

} // namespace engine
