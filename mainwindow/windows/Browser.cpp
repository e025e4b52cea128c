// The folder tree and the file list: panes, navigation, selection. The list's content:
// BrowserList.cpp.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/Browser.h"

#include "core/Dialogue.h"
#include "core/Messages.h"
#include "core/Settings.h"
#include "mainwindow/windows/FilesList.h"
#include "mainwindow/windows/FilesModel.h"
#include "mainwindow/windows/FoldersTree.h"
#include "mainwindow/windows/NameDelegate.h"
#include "platform/Files.h"
#include "platform/FolderWatch.h"
#include "platform/LogicalPath.h"

#include <QContextMenuEvent>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Where this piece stood last, among the user's settings.
const QString kSection = u"FrmMain"_s;
constexpr int kTreeWidth = 260;
constexpr int kListWidth = 740;
constexpr int kIconSize = 20;

QVBoxLayout* BareLayout(QWidget& widget) {
    auto* layout = new QVBoxLayout(&widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    return layout;
}

} // namespace

Browser::Browser(QWidget* parent)
    : QWidget(parent), m_files(new FilesModel(this)),
      m_reader(std::make_unique<FolderReader>(
          [this](const std::shared_ptr<Listing>& listing) { TakeListing(listing); })),
      m_watch(std::make_unique<platform::FolderWatch>()) {
    BuildPanes();
    ConnectPanes();
    FollowChanges();
    CreateLVWColumns();
}

Browser::~Browser() {
    // Members go before the panes, whose last words must not reach them.
    m_reader.reset();
    m_watch.reset();
    for (QWidget* pane : Panes()) {
        pane->removeEventFilter(this);
        pane->disconnect(this);
    }
}

void Browser::BuildPanes() {
    m_vsplitter = new QSplitter(this);
    m_vsplitter->setObjectName(u"vsplitter"_s);
    m_vsplitter->setChildrenCollapsible(false);
    auto* left = new QWidget;
    m_belowTree = BareLayout(*left);
    m_treFolders = new FoldersTree;
    m_treFolders->setObjectName(u"treFolders"_s);
    m_treFolders->setAccessibleName(GetMessage(43));
    m_belowTree->addWidget(m_treFolders, 1);

    auto* right = new QWidget;
    QVBoxLayout& list = *BareLayout(*right);
    BuildFilterBar(list);
    m_lvwFiles = new FilesList(*m_files);
    m_lvwFiles->setObjectName(u"lvwFiles"_s);
    m_lvwFiles->setAccessibleName(GetMessage(106));
    m_lvwFiles->setIconSize({kIconSize, kIconSize});
    m_treFolders->setIconSize({kIconSize, kIconSize});
    list.addWidget(m_lvwFiles, 1);

    m_pages = new QStackedWidget;
    m_pages->addWidget(right);
    m_vsplitter->addWidget(left);
    m_vsplitter->addWidget(m_pages);
    m_vsplitter->setStretchFactor(0, 0);
    m_vsplitter->setStretchFactor(1, 1);
    m_vsplitter->setSizes({kTreeWidth, kListWidth});
    BareLayout(*this)->addWidget(m_vsplitter);
}

void Browser::BuildFilterBar(QVBoxLayout& layout) {
    m_picSearch = new QWidget;
    m_picSearch->setObjectName(u"picSearch"_s);
    auto* bar = new QHBoxLayout(m_picSearch);
    bar->setContentsMargins(4, 0, 0, 0);
    m_lblFound = new QLabel;
    m_lblFound->setObjectName(u"lblFound"_s);
    m_cmdCloseFilter = new QPushButton(GetMessage(1027).replace(u'\n', u' '));
    m_cmdCloseFilter->setObjectName(u"cmdCloseFilter"_s);
    bar->addWidget(m_lblFound, 1);
    bar->addWidget(m_cmdCloseFilter);
    m_picSearch->hide();
    layout.addWidget(m_picSearch);
}

QList<QWidget*> Browser::Panes() const {
    return {m_treFolders, m_treFolders->viewport(), m_lvwFiles, m_lvwFiles->viewport()};
}

void Browser::ConnectPanes() {
    connect(m_treFolders, &QTreeWidget::currentItemChanged, this, [this] {
        if (!m_building) {
            treFolders_NodeClick();
        }
    });
    connect(m_treFolders, &QTreeWidget::itemClicked, this, [this] {
        if (m_searchMode) { // the chosen node chosen again: back to its folder
            treFolders_NodeClick();
        }
    });
    connect(m_lvwFiles, &QTreeView::activated, this, &Browser::lvwFiles_DblClick);
    connect(m_lvwFiles->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &Browser::SelectionChanged);
    connect(m_lvwFiles, &FilesList::EditEnded, this, &Browser::AfterEdit, Qt::QueuedConnection);
    connect(m_files, &FilesModel::OrderWanted, this, &Browser::SortList);
    connect(m_cmdCloseFilter, &QPushButton::clicked, this, &Browser::cmdCloseFilter_Click);
    for (QWidget* pane : Panes()) {
        pane->installEventFilter(this);
    }
    ConnectNames();
    const auto dragged = [this](QStringList paths) {
        FileList list{std::move(paths), false};
        Q_EMIT DragStarted(list);
        return list;
    };
    m_treFolders->dragged = [this, dragged] {
        return dragged({m_treFolders->CurrentSpelledPath()});
    };
    m_lvwFiles->dragged = [this, dragged] {
        QStringList paths;
        for (const BrowserItem& item : State().selected) {
            paths << item.path;
        }
        return dragged(paths);
    };
    const auto dropped = [this](const FileList& list, const QString& target) {
        Q_EMIT FilesDropped(list, target);
    };
    m_treFolders->AcceptDrops(dropped);
    m_lvwFiles->AcceptDrops(
        [this](const QModelIndex& index) -> std::optional<QString> {
            if (index.isValid() && m_files->Row(index.row()).isFolder) {
                return m_files->Path(index.row());
            }
            // The empty area and a file stand for the folder that is shown.
            const bool inFolder = !m_searchMode && !m_folder.isEmpty();
            return inFolder ? std::optional(m_files->Folder()) : std::nullopt;
        },
        dropped);
}

void Browser::ConnectNames() {
    m_lvwFiles->Names().renamed = [this](const QModelIndex& index, const QString& name) {
        const QString path = m_files->Path(index.row());
        const QString before = m_files->Row(index.row()).name;
        if (RenameRequested && RenameRequested(path, name, m_files->Row(index.row()).isFolder)) {
            // The row may have moved meanwhile; the folder tells the rest soon.
            const int row = m_files->RowOf(before);
            if (row >= 0 && m_files->Path(row) == path) {
                m_files->Rename(row, name);
            }
            m_settle.start();
        }
    };
    m_treFolders->rename = [this](const QString& path, const QString& name) {
        const bool done = RenameRequested && RenameRequested(path, name, true);
        if (done) {
            QTimer::singleShot(0, this, [this] { treFolders_NodeClick(); });
        }
        return done;
    };
}

void Browser::InitializeTreeView() {
    m_building = true;
    m_treFolders->InitializeTreeView();
    m_building = false;
    m_pages->setCurrentIndex(HasFolders() ? 0 : m_pages->count() - 1);
    if (!m_searchMode) {
        treFolders_NodeClick();
    }
}

bool Browser::HasFolders() const {
    return !m_treFolders->IsEmpty();
}

std::optional<IndexedFolder> Browser::CurrentIndexedFolder() const {
    return m_treFolders->CurrentIndexedFolder();
}

void Browser::treFolders_NodeClick() {
    LeaveSearchMode();
    const QString path = m_treFolders->CurrentPath();
    m_history.Append(path);
    LoadlvwFiles(path, false);
    Q_EMIT SelectionChanged();
}

void Browser::lvwFiles_DblClick(const QModelIndex& index) {
    const QString path = m_files->Path(index.row());
    if (!m_files->Row(index.row()).isFolder) {
        Q_EMIT Opened(path);
    } else if (!SelectFolder(path)) {
        Tell(GetMessage(1063), GetMessage(99), Icon::Critical);
    }
}

bool Browser::SelectVisited(const QString& path) {
    const bool isThere = path.isEmpty() || platform::IsFolder(platform::ToMachine(path));
    return isThere && SelectFolder(path);
}

void Browser::SetPrevPath() {
    if (!m_searchMode) {
        m_history.Back([this](const QString& path) { return SelectVisited(path); });
        Q_EMIT SelectionChanged();
    }
}

void Browser::SetNextPath() {
    if (!m_searchMode) {
        m_history.Forward([this](const QString& path) { return SelectVisited(path); });
        Q_EMIT SelectionChanged();
    }
}

void Browser::UpLevel() {
    if (!m_searchMode) {
        m_treFolders->SelectParent();
    }
}

bool Browser::SelectFolder(const QString& path) {
    return m_treFolders->SelectPath(path);
}

void Browser::FindElement(const QString& path) {
    LeaveSearchMode();
    if (SelectFolder(path)) {
        LoadlvwFiles(m_treFolders->CurrentPath(), false);
        m_treFolders->setFocus();
        return;
    }
    if (!m_treFolders->IsBelowIndexed(path)) {
        LoadlvwFiles(m_treFolders->CurrentPath(), false);
        Tell(GetMessage(1063), GetMessage(99), Icon::Critical);
        return;
    }
    if (!SelectFolder(platform::ParentFolder(path))) {
        LoadlvwFiles(m_treFolders->CurrentPath(), false);
        Tell(GetMessage(1064), GetMessage(121), Icon::Critical);
        return;
    }
    LoadlvwFiles(m_treFolders->CurrentPath(), false);
    m_target = {platform::FileName(path), true, false};
    ResolveTarget();
}

void Browser::SelectFile(const QString& name, bool rename) {
    m_target = {name, false, rename};
    ResolveTarget();
}

void Browser::StartLabelEdit() {
    if (m_treeActive) {
        m_treFolders->setFocus();
        m_treFolders->StartLabelEdit();
        return;
    }
    const std::vector<int> rows = m_lvwFiles->SelectedRows();
    const QModelIndex current = m_lvwFiles->currentIndex();
    if (current.isValid() && rows == std::vector<int>{current.row()}) {
        m_lvwFiles->setFocus();
        m_lvwFiles->edit(current.siblingAtColumn(FilesModel::Name));
    }
}

void Browser::SelectLvw(bool all) {
    if (all) {
        m_lvwFiles->selectAll();
    } else if (m_files->rowCount() > 0) {
        const QItemSelection every(
            m_files->index(0, 0),
            m_files->index(m_files->rowCount() - 1, m_files->columnCount() - 1));
        m_lvwFiles->selectionModel()->select(every, QItemSelectionModel::Toggle);
    }
    m_lvwFiles->setFocus();
}

BrowserState Browser::State() const {
    BrowserState state;
    state.treeActive = m_treeActive;
    state.searchMode = m_searchMode;
    state.node = m_treFolders->CurrentKind();
    state.folder = m_treFolders->CurrentSpelledPath();
    state.historyPosition = m_history.Position();
    state.historySize = m_history.Size();
    for (const int row : m_lvwFiles->SelectedRows()) {
        const FileRow& file = m_files->Row(row);
        state.selected << BrowserItem{m_files->Path(row), file.name, file.isFolder};
    }
    return state;
}

void Browser::SetCut(const QStringList& paths) {
    const QSet<QString> cut(paths.begin(), paths.end());
    m_files->SetCut(cut);
    m_treFolders->SetCut(cut);
}

int Browser::RowCount() const {
    return m_files->rowCount();
}

int Browser::FolderCount() const {
    return m_files->FolderCount();
}

void Browser::SaveState() const {
    SaveSetting(kSection, u"Splitter"_s, QString::fromLatin1(m_vsplitter->saveState().toBase64()));
    SaveSetting(kSection, u"FileColumns"_s, m_lvwFiles->ColumnState());
}

void Browser::RestoreState() {
    m_vsplitter->restoreState(
        QByteArray::fromBase64(GetSetting(kSection, u"Splitter"_s).toLatin1()));
    m_lvwFiles->SetColumnState(GetSetting(kSection, u"FileColumns"_s));
}

void Browser::SetBelowTree(QWidget* widget) {
    m_belowTree->addWidget(widget);
}

void Browser::SetEmptyPage(QWidget* widget) {
    m_pages->addWidget(widget);
}

bool Browser::HandleKey(const QKeyEvent& event) {
    const Qt::KeyboardModifiers keys = event.modifiers() & ~Qt::KeypadModifier;
    if ((event.key() == Qt::Key_Backspace && keys == Qt::NoModifier) ||
        (event.key() == Qt::Key_Left && keys == Qt::AltModifier)) {
        SetPrevPath();
    } else if (event.key() == Qt::Key_Right && keys == Qt::AltModifier) {
        SetNextPath();
    } else if (event.key() == Qt::Key_Up && keys == Qt::AltModifier) {
        UpLevel();
    } else {
        return false;
    }
    return true;
}

void Browser::AskForPopup(QWidget& pane, const QContextMenuEvent& event) {
    auto& view = static_cast<QAbstractItemView&>(pane);
    QPoint place = event.globalPos();
    if (event.reason() == QContextMenuEvent::Keyboard) {
        const QRect row = view.visualRect(view.currentIndex());
        place = view.viewport()->mapToGlobal(row.isValid() ? row.center() : QPoint(8, 8));
    }
    Q_EMIT PopupRequested(&pane, place);
}

bool Browser::eventFilter(QObject* watched, QEvent* event) {
    const bool isTree = watched == m_treFolders || watched == m_treFolders->viewport();
    QWidget& pane = isTree ? static_cast<QWidget&>(*m_treFolders) : *m_lvwFiles;
    switch (event->type()) {
    case QEvent::FocusIn:
        m_treeActive = isTree;
        Q_EMIT SelectionChanged();
        break;
    case QEvent::KeyPress:
        return watched == &pane && HandleKey(static_cast<const QKeyEvent&>(*event));
    case QEvent::ContextMenu:
        AskForPopup(pane, static_cast<const QContextMenuEvent&>(*event));
        return true;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace velmora
