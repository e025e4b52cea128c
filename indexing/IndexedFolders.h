// The folders whose documents belong to the index: list, add, remove.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "indexing/PathDictionary.h"

#include <QList>
#include <QString>

namespace velmora {

// A row of the indexed folders.
struct IndexedFolder {
    qint32 id = 0;
    QString path; // logical, in capitals
    QString description;
    QString iconId;
};

// What a run of the index update has to do after the list was changed. Adding what is to be removed
// cancels the removal, and the other way round.
struct FolderChanges {
    PathDictionary add;
    PathDictionary remove;
    [[nodiscard]] bool Any() const { return add.Count() > 0 || remove.Count() > 0; }
};

// How a candidate stands to the folders in the list.
struct FolderCollision {
    enum Relation { None = 0, IsParent = 1, IsChild = 2, IsSame = 3 };
    Relation relation = None;
    QString folder; // the first that collides
};

// The rows of this user in the order of the table; empty, after a report, when they cannot be read.
QList<IndexedFolder> ListIndexedFolders();

// Throws velmora::Error when the list cannot be read.
FolderCollision CollisionOf(const QString& path);

// Adds a folder: the one way in. Tells why when it cannot be (it is not there, it is covered
// already), asks when it stands above folders of the list, which then leave it. `path` is logical
// in any case. False when nothing was added.
bool AddIdxdFolders(const QString& path, FolderChanges& changes);

// Writes the row without a question, for a folder that has just been made. False after a failure.
bool AddIdxdFolderRow(const QString& path, const QString& description, const QString& iconId);

// Removes a folder from the list: RemoveIdxdFolders asks before, the other does not. False when it
// stays.
bool RemoveIdxdFolders(const IndexedFolder& folder, FolderChanges& changes);
bool RemoveIdxdFolderUnasked(const IndexedFolder& folder, FolderChanges& changes);

} // namespace velmora
