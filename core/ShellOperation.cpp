// Copying, moving, deleting and renaming as a desktop's shell does them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/ShellOperation.h"

#include "core/Dialogue.h"
#include "core/Failure.h"
#include "core/MessageIds.h"
#include "core/Messages.h"
#include "core/ShellThread.h"
#include "platform/LogicalPath.h"
#include "platform/Rename.h"

#include <cerrno>
#include <exception>
#include <utility>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using platform::CarryObserver;
using platform::CarryResult;

// Shows the operation for as long as it lives.
class Shown {
  public:
    Shown(ShellView* view, ShellWork work) : m_view(view) {
        if (m_view) {
            m_view->Begin(work);
        }
    }
    ~Shown() {
        if (m_view) {
            m_view->End();
        }
    }
    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;

  private:
    ShellView* m_view;
};

QStringList MachinePaths(const QStringList& paths) {
    QStringList machine;
    for (const QString& path : paths) {
        const QString place = platform::ToMachineAsSpelled(path);
        if (place.isEmpty()) {
            throw Error(0, GetMessage(kNoSuchPlace, {path}));
        }
        machine << place;
    }
    return machine;
}

// In the caller's own paths where they reach, so that a share keeps its network path.
ShellResult ToLogical(const CarryResult& carried, const QStringList& machine,
                      const QStringList& paths, const QString& folder) {
    ShellResult result;
    for (const platform::Carried& item : carried.done) {
        const qsizetype named = machine.indexOf(item.from);
        const qsizetype within = machine.indexOf(item.from.section(u'/', 0, -2));
        const auto leaf = [](const QString& path) {
            return platform::FileName(platform::ToLogical(path));
        };
        QString from = platform::ToLogical(item.from);
        QString to = platform::ToLogical(item.to);
        if (named >= 0) {
            from = paths[named];
            to = platform::JoinPath(folder, leaf(item.to));
        } else if (within >= 0) {
            from = platform::JoinPath(paths[within], leaf(item.from));
            to = platform::JoinPath(platform::JoinPath(folder, leaf(item.to.section(u'/', 0, -2))),
                                    leaf(item.to));
        }
        result.done.push_back({from, item.to.isEmpty() ? QString() : to, item.isFolder});
    }
    result.passedOver = carried.passedOver;
    result.skipped = carried.skipped;
    result.cancelled = carried.cancelled;
    return result;
}

// What stopped the thread unexpectedly is reported; what was done until then stays in `result`.
void RunReported(const char* procedure, const ShellWorkFunction& work, ShellView* view,
                 CarryResult& result) {
    std::exception_ptr failure;
    try {
        RunShellWork(work, view, result);
    } catch (...) {
        failure = std::current_exception();
        result.cancelled = true;
    }
    // Not run again by a Retry: half of it is done.
    Guard("FileFunctions", procedure, [&] {
        if (const std::exception_ptr first = std::exchange(failure, nullptr)) {
            std::rethrow_exception(first);
        }
    });
}

ShellResult CarryTo(ShellWork work, const QStringList& paths, const QString& folder,
                    ShellView* view) {
    const bool copies = work == ShellWork::Copy;
    const char* procedure = copies ? "Copyfile" : "MoveFile";
    QStringList machine;
    QString target;
    CarryResult carried;
    if (!Attempt("FileFunctions", procedure, [&] {
            machine = MachinePaths(paths);
            target = MachinePath(folder);
        })) {
        carried.cancelled = true;
        return ToLogical(carried, machine, paths, folder);
    }
    const Shown shown(view, work);
    const auto mode = copies ? platform::CarryMode::Copy : platform::CarryMode::Move;
    RunReported(
        procedure,
        [&](CarryObserver& observer, CarryResult& result) {
            platform::Carry(machine, target, mode, observer, result);
        },
        view, carried);
    return ToLogical(carried, machine, paths, folder);
}

QString Question(const QStringList& machine, int one, int several) {
    return machine.size() == 1 ? GetMessage(one, {machine.front().section(u'/', -1)})
                               : GetMessage(several, {QString::number(machine.size())});
}

bool MayTrash(const QStringList& machine, ShellView* view) {
    return !view || Ask(Question(machine, kTrashOne, kTrashSeveral), GetMessage(kDeleteTitle)) ==
                        Answer::Yes;
}

bool MayRemove(const QStringList& machine, ShellView* view) {
    return view && Ask(Question(machine, kNoTrashOne, kNoTrashSeveral), GetMessage(kDeleteTitle),
                       Icon::Exclamation) == Answer::Yes;
}

} // namespace

ShellResult Copyfile(const QStringList& paths, const QString& folder, ShellView* view) {
    return CarryTo(ShellWork::Copy, paths, folder, view);
}

ShellResult MoveFile(const QStringList& paths, const QString& folder, ShellView* view) {
    return CarryTo(ShellWork::Move, paths, folder, view);
}

ShellResult DeleteFile(const QStringList& paths, ShellView* view) {
    QStringList machine;
    CarryResult carried;
    carried.cancelled =
        !Attempt("FileFunctions", "DeleteFile", [&] { machine = MachinePaths(paths); }) ||
        !MayTrash(machine, view);
    if (carried.cancelled) {
        return ToLogical(carried, machine, paths, {});
    }
    QStringList noTrash;
    const auto run = [&](const ShellWorkFunction& work) {
        const Shown shown(view, ShellWork::Delete);
        RunReported("DeleteFile", work, view, carried);
    };
    run([&](CarryObserver& observer, CarryResult& result) {
        platform::RemoveToTrash(machine, observer, result, noTrash);
    });
    if (noTrash.isEmpty() || carried.cancelled) {
        return ToLogical(carried, machine, paths, {});
    }
    if (MayRemove(noTrash, view)) {
        run([&](CarryObserver& observer, CarryResult& result) {
            platform::RemoveForGood(noTrash, observer, result);
        });
    } else {
        carried.cancelled = true;
    }
    return ToLogical(carried, machine, paths, {});
}

bool RenameFile(const QString& path, const QString& newPath, bool silent) {
    return Guard("FileFunctions", "RenameFile", [&] {
        const QString from = platform::ToMachineAsSpelled(path);
        const QString to = platform::ToMachineAsSpelled(newPath);
        const platform::SystemError error = platform::RenameEntry(from, to);
        if (!error.Ok() && !silent) {
            const QString text = error.code == EEXIST
                                     ? GetMessage(kNameTaken, {to.section(u'/', -1)})
                                     : GetMessage(kCannotRename, {from}) + u'\n' + error.text;
            Tell(text, GetMessage(99), Icon::Critical);
        }
        return error.Ok();
    });
}

} // namespace velmora
