// The tree of the indexed folders with their real sub-folders.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "indexing/IndexedFolders.h"

#include <QTreeWidget>

namespace velmora {

// Sub-folders are read when a node is opened or chosen.
class FoldersTree : public QTreeWidget {
    Q_OBJECT

  public:
    explicit FoldersTree(QWidget* parent = nullptr);

    // Fills the tree anew; the node that was selected stays so when it is still there.
    void InitializeTreeView();

    // Logical path of the selected node; empty for the root.
    [[nodiscard]] QString CurrentPath() const;
    // The row of the list of indexed folders that is selected; nothing for any other node.
    [[nodiscard]] std::optional<IndexedFolder> CurrentIndexedFolder() const;
    [[nodiscard]] bool IsEmpty() const { return m_folders.isEmpty(); }

    // Selects the node of a folder, opening those above it. False when it is not in the tree.
    bool SelectPath(const QString& path);
    // Selects the root, whose list is empty.
    void SelectRoot();
    // Takes a node below an indexed folder out and selects the one above it, later: its own
    // selection may be what is going on.
    void DropPath(const QString& path);

  private:
    void LoadChildren(QTreeWidgetItem* node);
    [[nodiscard]] QTreeWidgetItem* AddNode(QTreeWidgetItem* parent, const QString& text,
                                           const QString& path, const QString& icon);

    QList<IndexedFolder> m_folders; // in the order of the root's children
};

} // namespace velmora
