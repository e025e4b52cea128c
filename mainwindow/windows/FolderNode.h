// A node of the folder tree.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/windows/FoldersTree.h"
#include "platform/LogicalPath.h"

namespace velmora {

constexpr int kNodeCutRole = Qt::UserRole;

// Known to its tree by a number for as long as it lives, so that answers of other threads find it
// or find it gone.
class FolderNode : public QTreeWidgetItem {
  public:
    FolderNode(FoldersTree& tree, QString folder, const QString& text)
        : QTreeWidgetItem(QStringList(text)), path(std::move(folder)), id(++tree.m_lastId),
          m_tree(tree) {
        m_tree.m_nodes.insert(id, this);
        setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsDragEnabled |
                 Qt::ItemIsDropEnabled);
        if (m_tree.m_cut.contains(path)) {
            setData(0, kNodeCutRole, true);
        }
    }
    ~FolderNode() override {
        m_tree.m_nodes.remove(id);
        m_tree.m_withoutAnswer.remove(id);
    }

    // The folder as it is spelled on the disk, as soon as that is known.
    [[nodiscard]] QString SpelledPath() const {
        return machinePath.isEmpty() ? path : platform::ToLogical(machinePath);
    }

    QString path;        // logical; empty for the root; what it is known by
    QString machinePath; // as far as known
    quint64 id;
    bool loaded = false; // the sub-folders have been read

  private:
    FoldersTree& m_tree;
};

} // namespace velmora
