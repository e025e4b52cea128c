// The tree of the indexed folders. Loading of sub-folders: FoldersTreeLoading.cpp.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FoldersTree.h"

#include "core/Messages.h"
#include "mainwindow/FolderFiles.h"
#include "mainwindow/windows/FileIcons.h"
#include "mainwindow/windows/FolderNode.h"
#include "mainwindow/windows/NameDelegate.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "resources/icons/Icons.h"

#include <QDragEnterEvent>
#include <QHelpEvent>
#include <QToolTip>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kPatienceMs = 2000; // after which an unknown node shows a plus sign

} // namespace

FoldersTree::FoldersTree(QWidget* parent)
    : QTreeWidget(parent), m_names(new NameDelegate(kNodeCutRole, this)),
      m_reader(std::make_unique<SubFolderReader>(
          [this](const SubFolders& folders) { TakeSubFolders(folders); },
          [this](const QList<PlusAnswer>& answers) { TakePlus(answers); })) {
    setColumnCount(1);
    setHeaderHidden(true);
    setHeaderLabel({}); // or it is read aloud as "1"
    setUniformRowHeights(true);
    setTextElideMode(Qt::ElideMiddle);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setEditTriggers(EditKeyPressed);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setItemDelegate(m_names);
    m_names->isFolder = [](const QModelIndex&) { return true; };
    m_names->renamed = [this](const QModelIndex& index, const QString& name) {
        Renamed(index, name);
    };
    m_patience.setSingleShot(true);
    m_patience.setInterval(kPatienceMs);
    connect(&m_patience, &QTimer::timeout, this, [this] {
        for (const quint64 id : std::as_const(m_withoutAnswer)) {
            if (FolderNode* node = m_nodes.value(id); node && node->childCount() == 0) {
                node->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
            }
        }
    });
    connect(this, &QTreeWidget::itemExpanded, this,
            [this](QTreeWidgetItem* item) { Load(*static_cast<FolderNode*>(item)); });
}

FoldersTree::~FoldersTree() {
    m_reader.reset();
    clear(); // nodes take themselves out of m_nodes
}

void FoldersTree::InitializeTreeView() {
    const QString selected = CurrentPath();
    m_reader->Cancel();
    m_withoutAnswer.clear();
    clear();
    m_folders = ListIndexedFolders();
    auto* root = new FolderNode(*this, {}, GetMessage(43));
    root->setIcon(0, LineIcon(u"folders"_s));
    root->loaded = true;
    QList<FolderNode*> nodes;
    QList<QTreeWidgetItem*> items;
    for (const IndexedFolder& folder : std::as_const(m_folders)) {
        auto* node =
            new FolderNode(*this, platform::WithoutBackslash(folder.path), folder.description);
        node->setIcon(0, FileIcons::StdIcon(folder.iconId));
        nodes << node;
        items << node;
    }
    root->addChildren(items);
    addTopLevelItem(root);
    root->setExpanded(true);
    AskForPlus(nodes);
    if (selected.isEmpty() || !SelectPath(selected)) {
        setCurrentItem(root->childCount() > 0 ? root->child(0) : root);
    }
}

FolderNode* FoldersTree::NodeAt(const QModelIndex& index) const {
    return static_cast<FolderNode*>(itemFromIndex(index));
}

FolderNode* FoldersTree::CurrentNode() const {
    return static_cast<FolderNode*>(currentItem());
}

QString FoldersTree::CurrentPath() const {
    const FolderNode* node = CurrentNode();
    return node ? node->path : QString();
}

QString FoldersTree::CurrentSpelledPath() const {
    const FolderNode* node = CurrentNode();
    return node ? node->SpelledPath() : QString();
}

NodeKind FoldersTree::CurrentKind() const {
    const FolderNode* node = CurrentNode();
    if (!node || !node->parent()) {
        return NodeKind::Root;
    }
    return node->parent()->parent() ? NodeKind::Below : NodeKind::Indexed;
}

std::optional<IndexedFolder> FoldersTree::CurrentIndexedFolder() const {
    if (CurrentKind() != NodeKind::Indexed) {
        return std::nullopt;
    }
    return m_folders.at(currentItem()->parent()->indexOfChild(currentItem()));
}

FolderNode* FoldersTree::FindNode(const QString& path) const {
    FolderNode* node = static_cast<FolderNode*>(topLevelItem(0));
    while (node && node->path != path) {
        FolderNode* next = nullptr;
        for (int at = 0; at < node->childCount() && !next; ++at) {
            auto* child = static_cast<FolderNode*>(node->child(at));
            const bool leads =
                child->path == path || path.startsWith(platform::WithBackslash(child->path));
            next = leads ? child : nullptr;
        }
        node = next;
    }
    return node;
}

bool FoldersTree::SelectPath(const QString& path) {
    const QString wanted = platform::WithoutBackslash(path);
    FolderNode* node = wanted.isEmpty() ? static_cast<FolderNode*>(topLevelItem(0)) : nullptr;
    QTreeWidgetItem* root = topLevelItem(0);
    for (int at = 0; root && at < root->childCount() && !node; ++at) {
        auto* top = static_cast<FolderNode*>(root->child(at));
        const QString above = platform::Capitals(platform::WithBackslash(top->path));
        // Capitals of a text can be longer than the text: the parts are counted, not the letters.
        if (platform::Capitals(platform::WithBackslash(wanted)).startsWith(above)) {
            const qsizetype depth = above.count(u'\\') - 1;
            QStringList names = wanted.split(u'\\').mid(depth + 1);
            names.removeAll(QString());
            node = top;
            for (qsizetype part = 0; part < names.size() && node; ++part) {
                node = ChildFor(*node, names[part]);
            }
        }
    }
    if (!node) {
        return false;
    }
    setCurrentItem(node);
    scrollToItem(node);
    return true;
}

bool FoldersTree::IsBelowIndexed(const QString& path) const {
    const QString wanted = platform::Capitals(platform::WithBackslash(path));
    return std::any_of(m_folders.begin(), m_folders.end(), [&](const IndexedFolder& folder) {
        return wanted.startsWith(platform::Capitals(platform::WithBackslash(folder.path)));
    });
}

void FoldersTree::SelectRoot() {
    setCurrentItem(topLevelItem(0));
}

void FoldersTree::SelectParent() {
    if (CurrentKind() == NodeKind::Below) {
        setCurrentItem(currentItem()->parent());
    }
}

void FoldersTree::DropCurrent() {
    if (CurrentKind() != NodeKind::Below) {
        return;
    }
    QTreeWidgetItem* gone = currentItem();
    QTreeWidgetItem* above = gone->parent();
    while (above->parent()->parent() &&
           !platform::IsFolder(platform::ToMachine(static_cast<FolderNode*>(above)->path))) {
        gone = above;
        above = above->parent();
    }
    const quint64 id = static_cast<FolderNode*>(gone)->id;
    setCurrentItem(above);
    delete m_nodes.value(id); // unless the reading of the folder above has taken it out
    if (above->childCount() == 0) {
        above->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicator);
    }
}

void FoldersTree::SetCut(const QSet<QString>& paths) {
    for (FolderNode* node : std::as_const(m_nodes)) {
        const QString path = node->SpelledPath();
        if (m_cut.contains(path) != paths.contains(path)) {
            node->setData(0, kNodeCutRole, paths.contains(path));
        }
    }
    m_cut = paths;
}

void FoldersTree::StartLabelEdit() {
    if (CurrentKind() == NodeKind::Below) {
        editItem(currentItem(), 0);
    }
}

void FoldersTree::Renamed(const QModelIndex& index, const QString& name) {
    const FolderNode* node = NodeAt(index);
    if (!node || !rename) {
        return;
    }
    const quint64 id = node->id;
    if (!rename(node->SpelledPath(), name)) {
        return;
    }
    FolderNode* renamed = m_nodes.value(id); // a message box may have let much happen
    if (renamed && renamed->parent()) {
        qDeleteAll(renamed->takeChildren());
        renamed->setText(0, name);
        renamed->path = PathOf(static_cast<FolderNode*>(renamed->parent())->path, name);
        renamed->machinePath.clear();
        renamed->loaded = false;
        renamed->setExpanded(false);
        AskForPlus({renamed});
    }
}

void FoldersTree::AcceptDrops(FileDrops::Dropped dropped) {
    m_drops = std::make_unique<FileDrops>(
        *this,
        [this](const QModelIndex& index) -> std::optional<QString> {
            const FolderNode* node = NodeAt(index);
            return node ? std::optional(node->SpelledPath()) : std::nullopt;
        },
        std::move(dropped));
    m_drops->open = [this](const QModelIndex& index) { expand(index); };
}

void FoldersTree::startDrag(Qt::DropActions) {
    if (dragged && CurrentKind() == NodeKind::Below) {
        DragFiles(*this, dragged());
    }
}

void FoldersTree::dragEnterEvent(QDragEnterEvent* event) {
    if (m_drops) {
        m_drops->Enter(*event);
    }
}

void FoldersTree::dragMoveEvent(QDragMoveEvent* event) {
    QTreeWidget::dragMoveEvent(event); // scrolls near the edges; its answer does not count
    if (m_drops) {
        m_drops->Move(*event);
    }
}

void FoldersTree::dragLeaveEvent(QDragLeaveEvent* event) {
    QTreeWidget::dragLeaveEvent(event);
    if (m_drops) {
        m_drops->Leave();
    }
}

void FoldersTree::dropEvent(QDropEvent* event) {
    if (m_drops) {
        m_drops->Drop(*event);
    }
    stopAutoScroll();
    setState(NoState);
}

void FoldersTree::paintEvent(QPaintEvent* event) {
    QTreeWidget::paintEvent(event);
    if (m_drops) {
        m_drops->Paint();
    }
}

bool FoldersTree::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto& help = static_cast<QHelpEvent&>(*event);
        const FolderNode* node = NodeAt(indexAt(help.pos()));
        // What the disk told when the node was looked at: a tip must not wait for a share.
        const QString text = node ? node->machinePath : QString();
        QToolTip::showText(help.globalPos(), text.toHtmlEscaped(), viewport());
        return true;
    }
    return QTreeWidget::viewportEvent(event);
}

} // namespace velmora
