// Decides what a drop of files on a folder does.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/DropRules.h"

#include "platform/LogicalPath.h"

#include <algorithm>

namespace velmora {

namespace {

bool WantsMove(const DropQuestion& question) {
    const bool copyKey = question.keys.testFlag(Qt::ControlModifier);
    const bool moveKey = question.keys.testFlag(Qt::ShiftModifier);
    return copyKey != moveKey ? moveKey : question.sameDisk;
}

} // namespace

DropEffect EffectOf(const DropQuestion& question) {
    if (question.target.isEmpty()) {
        return DropEffect::Impossible;
    }
    if (question.paths.isEmpty()) {
        return DropEffect::None;
    }
    // Spellings count: beside "Docs" there may be a folder "docs".
    const QString target = platform::WithBackslash(question.target);
    bool allThere = true;
    for (const QString& path : question.paths) {
        const QString folder = platform::WithBackslash(path);
        if (folder == target) {
            return DropEffect::None;
        }
        if (target.startsWith(folder)) {
            return DropEffect::Impossible;
        }
        allThere = allThere && platform::WithBackslash(platform::ParentFolder(path)) == target;
    }
    const bool move = question.offered.testFlag(Qt::MoveAction) &&
                      (WantsMove(question) || !question.offered.testFlag(Qt::CopyAction));
    if (!move) {
        return question.offered.testFlag(Qt::CopyAction) ? DropEffect::Copy : DropEffect::None;
    }
    return allThere ? DropEffect::None : DropEffect::Move;
}

} // namespace velmora
