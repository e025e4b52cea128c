// When the commands of the main window can be used: one pure function for bars, menus and keys.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

namespace velmora {

enum class NodeKind {
    Root,    // or no node at all
    Indexed, // a folder of the list of indexed folders
    Below    // a sub-folder of one
};

// What the answer depends on.
struct CommandContext {
    bool searchMode = false; // the list holds what a search found, not a folder
    bool treeFocus = false;  // the tree is the active pane, else the list
    NodeKind node = NodeKind::Root;
    int historyPosition = -1;
    int historySize = 0;
    bool clipboardFull = false;
    // The selected rows of the list.
    int selected = 0;
    bool allTiff = false;
    bool allPdf = false;
    bool hasFolder = false;
    bool isDefaultArchive = true;
};

// Whether the command exists in this kind of archive; one that does not is hidden.
[[nodiscard]] bool IsOffered(const QString& key, const CommandContext& context);
// Whether it can be used now. Unknown keys and commands that are still to come cannot.
[[nodiscard]] bool IsEnabled(const QString& key, const CommandContext& context);
// Whether the command's window is still to come: its tool tip says so.
[[nodiscard]] bool IsToCome(const QString& key);

// What ApplyToolBarStatus and UpdateMenuState rely on: the button of the tool bar whose state a
// menu item shares ("MNUCOPY" gives "COPY"); other keys come back as they are.
[[nodiscard]] QString ToolbarKey(const QString& key);

} // namespace velmora
