// What the folder tree and the file list have selected, as plain data.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/CommandState.h"

#include <QList>
#include <QString>

namespace velmora {

struct BrowserItem {
    QString path; // logical, in the spelling of the disk
    QString name; // as shown
    bool isFolder = false;
};

struct BrowserState {
    bool treeActive = false; // the tree is the pane used last, else the list
    bool searchMode = false; // the list holds what a search found
    NodeKind node = NodeKind::Root;
    QString folder;           // logical path of the tree's node, as spelled; empty for the root
    int historyPosition = -1; // from 0; -1 while the history is empty
    int historySize = 0;
    QList<BrowserItem> selected; // the list's selected rows, from top to bottom
};

} // namespace velmora
