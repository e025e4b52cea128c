// The commands of the main window by key, the bars that they stand in, and when they can be used.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QList>
#include <QSet>
#include <QString>

namespace velmora {

// One key means one action, wherever it comes from.
struct Command {
    QString key;
    int caption = 0;  // message
    int tip = 0;      // message; 0: the caption
    QString icon;     // name of a line icon; empty: none
    QString shortcut; // portable text; empty: none
};

// The command of a key; null for a separator and an unknown key.
const Command* FindCommand(const QString& key);

// A bar's keys in order; "" is a separator. Names: MENU, FILEMENU, TOOLSMENU, INFOMENU, POPUPMENU,
// STD. A command whose window is not there yet stands in no bar.
QStringList KeysOfBar(const QString& bar);
// The bar that opens under a key of MENU.
QString MenuOf(const QString& key);

// The caption with an access key that is not in `used`, which then holds it. A caption that has one
// keeps it; one without a free letter stays without.
QString WithAccessKey(const QString& caption, QSet<QChar>& used);

// What the panes have selected.
struct Selection {
    bool filesActive = false;     // else the folder tree
    QString folder;               // logical path of the tree's node; empty for the root or none
    bool isIndexedFolder = false; // the node stands in the list of indexed folders
    QString item; // logical path of the selected row of the file list; empty for none
    bool itemIsFolder = false;

    // The path that a command works on: the item when the list is active and has one, else the
    // node.
    [[nodiscard]] QString Path() const { return filesActive && !item.isEmpty() ? item : folder; }
};

// A pure function of the selection: bars, pop-up menu and keys ask here.
bool IsEnabled(const QString& key, const Selection& selection);

} // namespace velmora
