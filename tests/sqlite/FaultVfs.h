// A file system for SQLite that fails, kills or loses its power at a chosen call.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace sqlite_test {

// Kinds of calls, to be joined with "|".
enum Io : unsigned {
    kOpen = 1,
    kRead = 2,
    kWrite = 4,
    kSync = 8,
    kTruncate = 16,
    kLock = 32,
    kShmMap = 64,
    kShmLock = 128,
    kDelete = 256,
    kSize = 512,
    kAccess = 1024,
    kEveryCall = 2047,
    kChanges = kWrite | kSync | kTruncate | kDelete,
};

struct Fault {
    enum class Way {
        Error,    // SQLITE_IOERR_… or SQLITE_CANTOPEN; a write comes through by half
        Full,     // SQLITE_FULL for what needs room; the rest goes well
        Busy,     // SQLITE_BUSY for locks; the rest goes well
        Corrupt,  // SQLITE_CORRUPT for reads; the rest goes well
        Kill,     // SIGKILL before the call
        PowerCut, // of what was written and not synced any part is lost, then SIGKILL
    };
    Way way = Way::Error;
    unsigned calls = kEveryCall;
    std::int64_t at = 0;  // which call, from 1; 0: none
    bool lasting = false; // every later one too
    std::string file;     // only files whose path ends so; empty: all
    unsigned seed = 1;    // of what a power cut loses
};

// While it lives it is the default file system of all connections that are opened, on any thread;
// waiting for locks takes no time. One at a time. Files are never mapped.
class FaultVfs {
  public:
    FaultVfs();
    ~FaultVfs();
    FaultVfs(const FaultVfs&) = delete;
    FaultVfs& operator=(const FaultVfs&) = delete;

    // Counts calls of these kinds from now on.
    void Plan(const Fault& fault);
    [[nodiscard]] std::int64_t Calls() const;
    // Whether the planned call has come.
    [[nodiscard]] bool Fired() const;

    struct State;

  private:
    std::unique_ptr<State> m_state;
};

} // namespace sqlite_test
