// What a drop of files on a folder does.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/FileList.h"

#include <QString>
#include <Qt>

namespace velmora {

enum class DropEffect {
    None,       // nothing to do: the files are there already, or are the target itself
    Impossible, // to be refused with a message
    Move,
    Copy
};

struct DropQuestion {
    QStringList paths;          // logical, what is dropped
    QString target;             // logical path of the folder; empty for the root of the tree
    bool sameDisk = false;      // the target lies on the file system of the first path
    Qt::KeyboardModifiers keys; // Control copies, Shift moves, both or none: as the disk says
    Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction; // by where it comes from
};

// Moves on one disk, copies to another, as file managers do; a move that is not offered is a copy.
// Never onto or below one of the paths.
[[nodiscard]] DropEffect EffectOf(const DropQuestion& question);

} // namespace velmora
