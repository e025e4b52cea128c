// Copies, moves and removes files and whole folders, and asks where it cannot decide.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
// Works in the calling thread, which should not be the one of the windows, and calls the observer
// in it. All paths are machine paths.
//   Carry({"/home/anna/a.txt"}, "/media/stick", CarryMode::Move, observer);
#pragma once

#include "platform/Copy.h"

#include <QStringList>
#include <vector>

namespace platform {

enum class CarryMode { Copy, Move };

struct CarryProgress {
    bool counting = false; ///< the totals are still growing
    qint64 bytes = 0;
    qint64 totalBytes = 0;
    qint64 files = 0; ///< whatever is no folder; of a move within a disk, what was named
    qint64 totalFiles = 0;
    QString from; ///< what is in work
    QString to;   ///< empty for removing
};

struct CarrySide {
    QString path;
    OwnStatus status;
};

/// Something stands where an entry is to go.
struct Conflict {
    CarrySide from;
    CarrySide to;
    /// Replace may be answered; for two folders it means to merge them. Not for an entry onto
    /// itself, nor for a folder against something else.
    bool canReplace = false;

    [[nodiscard]] bool IsMerge() const { return canReplace && from.status.kind == OwnKind::Folder; }
    [[nodiscard]] bool IsSameEntry() const { return from.status.IsSameEntry(to.status); }
};

enum class ConflictChoice { Skip, Replace, KeepBoth, Cancel };
struct ConflictAnswer {
    ConflictChoice choice = ConflictChoice::Cancel;
    bool forAll = false; ///< for all that follow of the same sort (two folders, or not)
};

enum class CarryStep { Look, Read, Write, MakeFolder, Move, Remove, Space, IntoItself };

/// A step that failed.
struct Problem {
    CarryStep step = CarryStep::Look;
    QString path;      ///< where
    SystemError error; ///< why; ESTALE: somebody changed the file meanwhile
    qint64 needed = 0; ///< of Space, in bytes
    qint64 free = 0;
};

/// Skip leaves the entry out; of Space it means to try all the same, of
/// IntoItself it is the only answer beside Cancel.
enum class ProblemChoice { Skip, Retry, Cancel };
struct ProblemAnswer {
    ProblemChoice choice = ProblemChoice::Cancel;
    bool forAll = false; ///< with Skip: all that follow of the same step and reason
};

class CarryObserver {
  public:
    virtual ~CarryObserver() = default;
    /// Often; must be quick. False cancels.
    virtual bool ShowProgress(const CarryProgress& progress) = 0;
    virtual ConflictAnswer AskConflict(const Conflict& conflict) = 0;
    virtual ProblemAnswer AskProblem(const Problem& problem) = 0;
};

/// An entry that is in its new place, or is gone.
struct Carried {
    QString from;
    QString to; ///< empty for removing
    bool isFolder = false;
};

struct CarryResult {
    /// What was named and is done as a whole. Of a folder that moved in part: the files directly in
    /// it that moved, one by one.
    std::vector<Carried> done;
    QStringList passedOver; ///< pipes, sockets, devices
    qint64 skipped = 0;     ///< left out by an answer
    bool cancelled = false;
};

/// Brings the sources into the folder. Half-way, each file stands whole in at least one place; a
/// source is removed only when its copy is whole, on the disk and of the same size. `result` holds
/// what is done even when this throws (memory, the observer).
void Carry(const QStringList& sources, const QString& folder, CarryMode mode,
           CarryObserver& observer, CarryResult& result);

/// Moves to the trash (Trash.h). What lies where there is none stays, and is answered in `noTrash`.
void RemoveToTrash(const QStringList& paths, CarryObserver& observer, CarryResult& result,
                   QStringList& noTrash);

/// Removes for good, with all that is below; links are removed, not followed.
void RemoveForGood(const QStringList& paths, CarryObserver& observer, CarryResult& result);

/// A name that is free now, for a second "a.txt": "a (2).txt".
[[nodiscard]] QString FreeName(const QString& path);

} // namespace platform
