// Finds the machine's spelling of a logical path, with a cache of folder listings.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
// The program uses the functions of LogicalPath.h, which share one resolver.
#pragma once

#include "platform/FolderCache.h"
#include "platform/MountTable.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

namespace platform {

/// May be called from any thread.
class PathResolver {
  public:
    using MountSource = std::function<std::vector<Mount>()>;
    explicit PathResolver(MountSource mounts = CurrentMounts);

    /// See LogicalPath.h.
    [[nodiscard]] QString ToMachine(const QString& logicalPath);
    [[nodiscard]] QString DisplayPath(const QString& logicalPath);

    /// How many folders were read so far: a measure of work.
    [[nodiscard]] qint64 FolderReads() const { return m_folders.Reads(); }

  private:
    /// Where a search begins and the names to find below it, all as bytes.
    struct Route {
        QByteArray base; ///< without a closing slash: the root is empty
        QList<QByteArray> names;
    };
    struct Found {
        QByteArray path;
        qsizetype depth = 0; ///< how many of the names exist
    };
    /// Nothing when the path has no place on this machine.
    [[nodiscard]] std::optional<Route> RouteOf(const QString& logicalPath) const;
    [[nodiscard]] QByteArray Resolve(const Route& route);
    [[nodiscard]] Found Descend(const QByteArray& folder, const QList<QByteArray>& names,
                                qsizetype at, int& triesLeft);
    [[nodiscard]] QList<QByteArray> Candidates(const QByteArray& folder, const QByteArray& name);
    [[nodiscard]] QByteArray SpellingOnDisk(const QByteArray& folder, const QByteArray& name);

    MountSource m_mounts;
    FolderCache m_folders;
};

} // namespace platform
