// Hands every call on to the real file system, but for the planned one.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/sqlite/FaultVfs.h"

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <list>
#include <mutex>
#include <random>
#include <vector>

namespace sqlite_test {

namespace {

// A write or truncation that no sync has made safe yet.
struct Unsynced {
    sqlite3_int64 offset = 0;
    sqlite3_int64 oldSize = 0;
    std::vector<char> before; // what stood there, as far as the file went
    std::vector<char> after;  // empty for a truncation
};

struct Opened {
    std::string path;
    std::vector<char> memory;
    sqlite3_file* real = nullptr;
    std::vector<Unsynced> unsynced;
};

struct File {
    sqlite3_file base;
    Opened* opened;
};

Opened& Of(sqlite3_file* file) {
    return *reinterpret_cast<File*>(file)->opened;
}

const sqlite3_io_methods& Real(sqlite3_file* file) {
    return *Of(file).real->pMethods;
}

} // namespace

struct FaultVfs::State {
    std::mutex mutex;
    Fault fault;
    std::int64_t calls = 0;
    bool fired = false;
    sqlite3_vfs* real = nullptr;
    sqlite3_vfs vfs{};
    std::list<Opened> files;

    // SQLITE_OK, or what the call shall answer.
    int Ask(Io call, const std::string& path, int error);
    [[noreturn]] void CutPower();
};

namespace {

FaultVfs::State* g_state = nullptr; // SQLite's callbacks for files carry no context

int Answer(Fault::Way way, Io call, int error) {
    switch (way) {
    case Fault::Way::Error:
        return error;
    case Fault::Way::Full:
        return call == kWrite ? SQLITE_FULL : call == kShmMap ? SQLITE_IOERR_SHMSIZE : SQLITE_OK;
    case Fault::Way::Busy:
        return call == kLock || call == kShmLock ? SQLITE_BUSY : SQLITE_OK;
    case Fault::Way::Corrupt:
        return call == kRead ? SQLITE_CORRUPT : SQLITE_OK;
    default:
        return SQLITE_OK;
    }
}

std::vector<char> ReadAt(Opened& file, sqlite3_int64 offset, sqlite3_int64 end) {
    std::vector<char> bytes(static_cast<std::size_t>(std::max<sqlite3_int64>(end - offset, 0)));
    if (!bytes.empty())
        (void)file.real->pMethods->xRead(file.real, bytes.data(), static_cast<int>(bytes.size()),
                                         offset);
    return bytes;
}

void WriteAt(Opened& file, const std::vector<char>& bytes, sqlite3_int64 offset) {
    if (!bytes.empty())
        (void)file.real->pMethods->xWrite(file.real, bytes.data(), static_cast<int>(bytes.size()),
                                          offset);
}

void Note(Opened& file, sqlite3_int64 offset, const void* data, int length) {
    Unsynced change;
    change.offset = offset;
    (void)file.real->pMethods->xFileSize(file.real, &change.oldSize);
    const sqlite3_int64 end = data == nullptr ? change.oldSize : offset + length;
    change.before = ReadAt(file, offset, std::min(end, change.oldSize));
    if (data != nullptr)
        change.after.assign(static_cast<const char*>(data),
                            static_cast<const char*>(data) + length);
    file.unsynced.push_back(std::move(change));
}

} // namespace

// Everything that is not synced is taken back; then each write has come through or not.
void FaultVfs::State::CutPower() {
    std::mt19937 random(fault.seed);
    for (Opened& file : files) {
        for (auto change = file.unsynced.rbegin(); change != file.unsynced.rend(); ++change) {
            WriteAt(file, change->before, change->offset);
            (void)file.real->pMethods->xTruncate(file.real, change->oldSize);
        }
        for (const Unsynced& change : file.unsynced)
            if (random() % 2 == 0) {
                if (change.after.empty())
                    (void)file.real->pMethods->xTruncate(file.real, change.offset);
                else
                    WriteAt(file, change.after, change.offset);
            }
    }
    kill(getpid(), SIGKILL);
    for (;;)
        pause();
}

int FaultVfs::State::Ask(Io call, const std::string& path, int error) {
    const std::lock_guard lock(mutex);
    if ((fault.calls & call) == 0 || !path.ends_with(fault.file))
        return SQLITE_OK;
    ++calls;
    if (fault.at == 0 || calls < fault.at || (calls > fault.at && !fault.lasting))
        return SQLITE_OK;
    fired = true;
    if (fault.way == Fault::Way::PowerCut)
        CutPower();
    if (fault.way == Fault::Way::Kill)
        kill(getpid(), SIGKILL);
    return Answer(fault.way, call, error);
}

namespace {

int Ask(sqlite3_file* file, Io call, int error) {
    return g_state->Ask(call, Of(file).path, error);
}

bool LosesPower() {
    return g_state->fault.way == Fault::Way::PowerCut;
}

int Close(sqlite3_file* file) {
    const int rc = Real(file).xClose(Of(file).real);
    const std::lock_guard lock(g_state->mutex);
    g_state->files.remove_if([&](const Opened& each) { return &each == &Of(file); });
    return rc;
}

int Read(sqlite3_file* file, void* bytes, int length, sqlite3_int64 offset) {
    const int rc = Ask(file, kRead, SQLITE_IOERR_READ);
    return rc != SQLITE_OK ? rc : Real(file).xRead(Of(file).real, bytes, length, offset);
}

int Write(sqlite3_file* file, const void* bytes, int length, sqlite3_int64 offset) {
    const int rc = Ask(file, kWrite, SQLITE_IOERR_WRITE);
    if (LosesPower())
        Note(Of(file), offset, bytes, length);
    if (rc == SQLITE_IOERR_WRITE)
        (void)Real(file).xWrite(Of(file).real, bytes, length / 2, offset);
    return rc != SQLITE_OK ? rc : Real(file).xWrite(Of(file).real, bytes, length, offset);
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    const int rc = Ask(file, kTruncate, SQLITE_IOERR_TRUNCATE);
    if (LosesPower())
        Note(Of(file), size, nullptr, 0);
    return rc != SQLITE_OK ? rc : Real(file).xTruncate(Of(file).real, size);
}

int Sync(sqlite3_file* file, int flags) {
    int rc = Ask(file, kSync, SQLITE_IOERR_FSYNC);
    // The machine is not to lose its power in truth: a test need not wait for the disk.
    if (rc == SQLITE_OK && !LosesPower())
        rc = Real(file).xSync(Of(file).real, flags);
    if (rc == SQLITE_OK)
        Of(file).unsynced.clear();
    return rc;
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
    const int rc = Ask(file, kSize, SQLITE_IOERR_FSTAT);
    return rc != SQLITE_OK ? rc : Real(file).xFileSize(Of(file).real, size);
}

int Lock(sqlite3_file* file, int level) {
    const int rc = Ask(file, kLock, SQLITE_IOERR_LOCK);
    return rc != SQLITE_OK ? rc : Real(file).xLock(Of(file).real, level);
}

int Unlock(sqlite3_file* file, int level) {
    return Real(file).xUnlock(Of(file).real, level);
}

int CheckReservedLock(sqlite3_file* file, int* out) {
    const int rc = Ask(file, kLock, SQLITE_IOERR_CHECKRESERVEDLOCK);
    return rc != SQLITE_OK ? rc : Real(file).xCheckReservedLock(Of(file).real, out);
}

int FileControl(sqlite3_file* file, int what, void* argument) {
    return Real(file).xFileControl(Of(file).real, what, argument);
}

int SectorSize(sqlite3_file* file) {
    return Real(file).xSectorSize(Of(file).real);
}

int Characteristics(sqlite3_file* file) {
    return Real(file).xDeviceCharacteristics(Of(file).real);
}

int ShmMap(sqlite3_file* file, int page, int size, int extend, void volatile** memory) {
    const int rc = Ask(file, kShmMap, SQLITE_IOERR_SHMMAP);
    return rc != SQLITE_OK ? rc : Real(file).xShmMap(Of(file).real, page, size, extend, memory);
}

int ShmLock(sqlite3_file* file, int offset, int count, int flags) {
    // Giving a lock back does not fail.
    const int rc =
        (flags & SQLITE_SHM_UNLOCK) != 0 ? SQLITE_OK : Ask(file, kShmLock, SQLITE_IOERR_SHMLOCK);
    return rc != SQLITE_OK ? rc : Real(file).xShmLock(Of(file).real, offset, count, flags);
}

void ShmBarrier(sqlite3_file* file) {
    Real(file).xShmBarrier(Of(file).real);
}

int ShmUnmap(sqlite3_file* file, int remove) {
    return Real(file).xShmUnmap(Of(file).real, remove);
}

int Fetch(sqlite3_file*, sqlite3_int64, int, void** memory) {
    *memory = nullptr; // then it is read
    return SQLITE_OK;
}

int Unfetch(sqlite3_file*, sqlite3_int64, void*) {
    return SQLITE_OK;
}

constexpr sqlite3_io_methods kMethods{3,
                                      &Close,
                                      &Read,
                                      &Write,
                                      &Truncate,
                                      &Sync,
                                      &FileSize,
                                      &Lock,
                                      &Unlock,
                                      &CheckReservedLock,
                                      &FileControl,
                                      &SectorSize,
                                      &Characteristics,
                                      &ShmMap,
                                      &ShmLock,
                                      &ShmBarrier,
                                      &ShmUnmap,
                                      &Fetch,
                                      &Unfetch};

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    FaultVfs::State& state = *g_state;
    file->pMethods = nullptr;
    const std::string path = name == nullptr ? "" : name;
    if (const int rc = state.Ask(kOpen, path, SQLITE_CANTOPEN); rc != SQLITE_OK)
        return rc;
    Opened opened;
    opened.path = path;
    opened.memory.resize(static_cast<std::size_t>(state.real->szOsFile));
    opened.real = reinterpret_cast<sqlite3_file*>(opened.memory.data());
    const int rc = state.real->xOpen(state.real, name, opened.real, flags, outFlags);
    if (rc != SQLITE_OK) {
        if (opened.real->pMethods != nullptr)
            opened.real->pMethods->xClose(opened.real);
        return rc;
    }
    const std::lock_guard lock(state.mutex);
    state.files.push_back(std::move(opened)); // its memory stays where it is
    reinterpret_cast<File*>(file)->opened = &state.files.back();
    file->pMethods = &kMethods;
    return SQLITE_OK;
}

int Delete(sqlite3_vfs*, const char* name, int sync) {
    const int rc = g_state->Ask(kDelete, name, SQLITE_IOERR_DELETE);
    return rc != SQLITE_OK ? rc : g_state->real->xDelete(g_state->real, name, sync);
}

int Access(sqlite3_vfs*, const char* name, int flags, int* out) {
    const int rc = g_state->Ask(kAccess, name, SQLITE_IOERR_ACCESS);
    return rc != SQLITE_OK ? rc : g_state->real->xAccess(g_state->real, name, flags, out);
}

int FullPathname(sqlite3_vfs*, const char* name, int size, char* out) {
    return g_state->real->xFullPathname(g_state->real, name, size, out);
}

int Sleep(sqlite3_vfs*, int microseconds) {
    return microseconds;
}

} // namespace

FaultVfs::FaultVfs() : m_state(std::make_unique<State>()) {
    g_state = m_state.get();
    State& state = *m_state;
    state.real = sqlite3_vfs_find(nullptr);
    state.vfs = *state.real; // time, chance and extensions as they are
    state.vfs.szOsFile = sizeof(File);
    state.vfs.pNext = nullptr;
    state.vfs.zName = "fault";
    state.vfs.xOpen = &Open;
    state.vfs.xDelete = &Delete;
    state.vfs.xAccess = &Access;
    state.vfs.xFullPathname = &FullPathname;
    state.vfs.xSleep = &Sleep;
    sqlite3_vfs_register(&state.vfs, 1);
}

FaultVfs::~FaultVfs() {
    sqlite3_vfs_unregister(&m_state->vfs);
    sqlite3_vfs_register(m_state->real, 1);
    g_state = nullptr;
}

void FaultVfs::Plan(const Fault& fault) {
    const std::lock_guard lock(m_state->mutex);
    m_state->fault = fault;
    m_state->calls = 0;
    m_state->fired = false;
}

std::int64_t FaultVfs::Calls() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->calls;
}

bool FaultVfs::Fired() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->fired;
}

} // namespace sqlite_test
