// The tree of the indexed folders.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FoldersTree.h"

#include "core/Messages.h"
#include "mainwindow/FolderFiles.h"
#include "platform/LogicalPath.h"
#include "resources/icons/Icons.h"

#include <QTimer>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kPath = Qt::UserRole;       // logical path, as spelled on the disk below the top
constexpr int kLoaded = Qt::UserRole + 1; // whether the sub-folders have been read

} // namespace

FoldersTree::FoldersTree(QWidget* parent) : QTreeWidget(parent) {
    setColumnCount(1);
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setTextElideMode(Qt::ElideMiddle);
    connect(this, &QTreeWidget::itemExpanded, this, &FoldersTree::LoadChildren);
}

QTreeWidgetItem* FoldersTree::AddNode(QTreeWidgetItem* parent, const QString& text,
                                      const QString& path, const QString& icon) {
    auto* node = new QTreeWidgetItem(parent, {text});
    node->setData(0, kPath, path);
    node->setIcon(0, LineIcon(icon));
    node->setToolTip(0, platform::DisplayPath(path).toHtmlEscaped());
    // Whether there are sub-folders is found out when it is opened: looking into every folder
    // takes long on a share.
    node->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    return node;
}

void FoldersTree::InitializeTreeView() {
    const QString selected = CurrentPath();
    clear();
    m_folders = ListIndexedFolders();
    auto* root = new QTreeWidgetItem(this, {GetMessage(43)});
    root->setIcon(0, LineIcon(u"folders"_s));
    root->setData(0, kLoaded, true);
    for (const IndexedFolder& folder : std::as_const(m_folders)) {
        (void)AddNode(root, folder.description, folder.path, u"folder"_s);
    }
    root->setExpanded(true);
    if (selected.isEmpty() || !SelectPath(selected)) {
        setCurrentItem(root->childCount() > 0 ? root->child(0) : root);
    }
}

void FoldersTree::LoadChildren(QTreeWidgetItem* node) {
    if (node->data(0, kLoaded).toBool()) {
        return;
    }
    node->setData(0, kLoaded, true);
    const QString path = node->data(0, kPath).toString();
    for (const FileRow& row : ReadFolder(path).rows) {
        if (row.isFolder) {
            (void)AddNode(node, row.name, PathOf(path, row.name), u"folder"_s);
        }
    }
    if (node->childCount() == 0) {
        node->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicator);
    }
}

QString FoldersTree::CurrentPath() const {
    return currentItem() ? currentItem()->data(0, kPath).toString() : QString();
}

std::optional<IndexedFolder> FoldersTree::CurrentIndexedFolder() const {
    QTreeWidgetItem* node = currentItem();
    if (!node || !node->parent() || node->parent()->parent()) {
        return std::nullopt;
    }
    return m_folders.at(node->parent()->indexOfChild(node));
}

bool FoldersTree::SelectPath(const QString& path) {
    const QString wanted = platform::Capitals(platform::WithBackslash(path));
    QTreeWidgetItem* node = topLevelItem(0);
    for (int at = 0; node && at < node->childCount(); ++at) {
        QTreeWidgetItem* child = node->child(at);
        const QString here =
            platform::Capitals(platform::WithBackslash(child->data(0, kPath).toString()));
        if (here == wanted) {
            setCurrentItem(child);
            scrollToItem(child);
            return true;
        }
        if (wanted.startsWith(here)) {
            LoadChildren(child);
            child->setExpanded(true);
            node = child;
            at = -1;
        }
    }
    return false;
}

void FoldersTree::SelectRoot() {
    setCurrentItem(topLevelItem(0));
}

void FoldersTree::DropPath(const QString& path) {
    QTimer::singleShot(0, this, [this, path] {
        if (CurrentPath() == path && !CurrentIndexedFolder()) {
            QTreeWidgetItem* gone = currentItem();
            setCurrentItem(gone->parent());
            delete gone;
        }
    });
}

} // namespace velmora
