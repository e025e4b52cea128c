// Removes files and folders: to the trash, or for good.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/CarryJob.h"
#include "platform/Trash.h"

namespace platform {

namespace {

class Remover : private CarryJob {
  public:
    using CarryJob::CarryJob;

    void Run(const QStringList& paths) {
        m_progress.counting = true;
        for (const QString& path : paths) {
            Count(path);
        }
        m_progress.counting = false;
        m_progress.totalBytes = 0; // removing knows no bytes
        for (const QString& path : paths) {
            const bool isFolder = IsOwnFolder(path);
            if (Remove(path, isFolder)) {
                m_result.done.push_back({path, {}, isFolder});
            }
        }
    }

    void Trash(const QStringList& paths, QStringList& noTrash) {
        m_progress.totalFiles = paths.size();
        for (const QString& path : paths) {
            Show(path, {});
            const bool isFolder = IsOwnFolder(path);
            TrashOutcome outcome;
            const bool tried = Try(CarryStep::Remove, path, [&] {
                outcome = MoveToTrash(path);
                return outcome.error;
            });
            if (tried && outcome.noTrash) {
                noTrash << path;
            } else if (tried) {
                m_result.done.push_back({path, {}, isFolder});
            }
            ++m_progress.files;
        }
    }

  private:
    static bool IsOwnFolder(const QString& path) {
        const std::optional<OwnStatus> status = OwnStatusOf(path);
        return status && status->kind == OwnKind::Folder;
    }

    bool Remove(const QString& path, bool isFolder) {
        Show(path, {});
        if (!isFolder) {
            ++m_progress.files;
            return Try(CarryStep::Remove, path, [&] { return RemoveEntry(path, false); });
        }
        const std::optional<QStringList> names = Names(path);
        bool whole = names.has_value();
        for (const QString& name : names.value_or(QStringList())) {
            const QString child = path + u'/' + name;
            whole = Remove(child, IsOwnFolder(child)) && whole;
        }
        return whole && Try(CarryStep::Remove, path, [&] { return RemoveEntry(path, true); });
    }
};

} // namespace

void RemoveForGood(const QStringList& paths, CarryObserver& observer, CarryResult& result) {
    try {
        Remover(observer, result).Run(paths);
    } catch (const CarryCancelled&) {
        result.cancelled = true;
    }
}

void RemoveToTrash(const QStringList& paths, CarryObserver& observer, CarryResult& result,
                   QStringList& noTrash) {
    try {
        Remover(observer, result).Trash(paths, noTrash);
    } catch (const CarryCancelled&) {
        result.cancelled = true;
    }
}

} // namespace platform
