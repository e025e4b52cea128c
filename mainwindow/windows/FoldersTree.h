// The tree of the indexed folders with their real sub-folders.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "indexing/IndexedFolders.h"
#include "mainwindow/CommandState.h"
#include "mainwindow/SubFolderReader.h"
#include "mainwindow/windows/FileDrops.h"

#include <QSet>
#include <QTreeWidget>
#include <memory>
#include <optional>

namespace velmora {

class FolderNode;
class NameDelegate;

// Sub-folders are read on another thread when a node is opened; plus signs are found out there too.
// Paths are logical; those below an indexed folder as spelled on the disk.
class FoldersTree : public QTreeWidget {
    Q_OBJECT

  public:
    explicit FoldersTree(QWidget* parent = nullptr);
    ~FoldersTree() override;

    // Fills the tree anew; the node that was selected stays so when it is still there, else the
    // first indexed folder is.
    void InitializeTreeView();
    [[nodiscard]] bool IsEmpty() const { return m_folders.isEmpty(); }

    // Logical path of the selected node; empty for the root.
    [[nodiscard]] QString CurrentPath() const;
    // The same as it is spelled on the disk, as soon as that is known.
    [[nodiscard]] QString CurrentSpelledPath() const;
    [[nodiscard]] NodeKind CurrentKind() const;
    // The row of the list of indexed folders that is selected; nothing for any other node.
    [[nodiscard]] std::optional<IndexedFolder> CurrentIndexedFolder() const;

    // Selects the node of a folder, opening and adding those above it. False when it is not below
    // an indexed folder or not there.
    bool SelectPath(const QString& path);
    // Whether an indexed folder holds the path, be it there or not.
    [[nodiscard]] bool IsBelowIndexed(const QString& path) const;
    void SelectRoot();
    // Not for an indexed folder: nothing that could be shown stands above it.
    void SelectParent();

    // The sub-folders of the selected node, read elsewhere; does nothing when it has another path.
    void SetSubFolders(const QString& path, const QString& machinePath, const QStringList& names);
    // Takes all nodes below the node of a path out, so that they are read again when it is opened.
    void RemoveChildNodes(const QString& path);
    // Takes the selected node out and selects the nearest one above it whose folder exists. Not
    // for an indexed folder or the root.
    void DropCurrent();

    void SetCut(const QSet<QString>& paths);
    [[nodiscard]] bool IsEditing() const { return state() == EditingState; }
    void StartLabelEdit();
    void AcceptDrops(FileDrops::Dropped dropped);

    // Asked when a name was typed; true: the folder has that name now.
    std::function<bool(const QString& path, const QString& name)> rename;
    // The selected folder at the start of a drag.
    std::function<FileList()> dragged;

  protected:
    void startDrag(Qt::DropActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool viewportEvent(QEvent* event) override;

  private:
    friend class FolderNode;
    [[nodiscard]] FolderNode* NodeAt(const QModelIndex& index) const;
    [[nodiscard]] FolderNode* CurrentNode() const;
    [[nodiscard]] FolderNode* FindNode(const QString& path) const;
    [[nodiscard]] FolderNode* ChildFor(FolderNode& node, const QString& name);
    void Load(FolderNode& node);
    void TakeSubFolders(const SubFolders& folders);
    void TakePlus(const QList<PlusAnswer>& answers);
    void Merge(FolderNode& node, const QStringList& names);
    void AskForPlus(const QList<FolderNode*>& nodes);
    void Renamed(const QModelIndex& index, const QString& name);

    QList<IndexedFolder> m_folders; // in the order of the root's children
    QHash<quint64, FolderNode*> m_nodes;
    QSet<quint64> m_withoutAnswer; // nodes whose plus sign is not known yet
    QTimer m_patience;
    quint64 m_lastId = 0;
    QSet<QString> m_cut;
    NameDelegate* m_names;
    std::unique_ptr<FileDrops> m_drops;
    std::unique_ptr<SubFolderReader> m_reader;
};

} // namespace velmora
