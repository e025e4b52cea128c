// Copying, moving, deleting and renaming as a desktop's shell does them: with progress, questions
// and a way to cancel.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
// The work runs in a thread of its own; the calls below come back when it is over, and let events
// run meanwhile. Only from the interface thread. Paths are logical, and each names the one entry of
// exactly its spelling.
#pragma once

#include "platform/Carrier.h"

#include <QStringList>
#include <vector>

namespace velmora {

enum class ShellWork { Copy, Move, Delete };

// Who shows a shell operation to the person; all calls come in the interface thread. Paths in what
// is shown are the machine's.
class ShellView {
  public:
    virtual ~ShellView() = default;
    virtual void Begin(ShellWork work) = 0;
    // At most some thirty times a second.
    virtual void ShowProgress(const platform::CarryProgress& progress) = 0;
    [[nodiscard]] virtual bool IsCancelled() const = 0;
    virtual platform::ConflictAnswer AskConflict(const platform::Conflict& conflict) = 0;
    virtual platform::ProblemAnswer AskProblem(const platform::Problem& problem) = 0;
    // Also after a failure.
    virtual void End() = 0;
};

struct ShellResult {
    // What really is in its new place, or gone, even after a cancel in the middle. Logical paths.
    struct Item {
        QString from;
        QString to; // empty for deleting
        bool isFolder = false;
    };
    std::vector<Item> done;
    QStringList passedOver; // machine paths of pipes, sockets, devices
    qint64 skipped = 0;
    bool cancelled = false;
};

// The silent flag is a `view` of null: nothing is shown, a taken name is never replaced, and the
// first failure ends the operation as cancelled.
ShellResult Copyfile(const QStringList& paths, const QString& folder, ShellView* view);
ShellResult MoveFile(const QStringList& paths, const QString& folder, ShellView* view);

// Moves to the trash after asking. What has no trash is removed for good after asking once more;
// silently it stays, as cancelled.
ShellResult DeleteFile(const QStringList& paths, ShellView* view);

// False when the system refuses; it has been told to the person unless `silent`. Never takes the
// name of something else; a change of case alone is a change.
[[nodiscard]] bool RenameFile(const QString& path, const QString& newPath, bool silent = false);

} // namespace velmora
