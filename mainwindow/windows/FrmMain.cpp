// The main window: its panes and its life. Bars: FrmMainBars.cpp, commands: FrmMainCommands.cpp.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FrmMain.h"

#include "core/Dialogue.h"
#include "core/Globals.h"
#include "core/Messages.h"
#include "core/Settings.h"
#include "core/windows/Captions.h"
#include "mainwindow/MessageIds.h"
#include "mainwindow/windows/FilesModel.h"
#include "platform/LogicalPath.h"
#include "resources/icons/Icons.h"
#include "ui_FrmMain.h"

#include <QCloseEvent>
#include <QHeaderView>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Where this window stood last, among the user's settings.
const QString kSection = u"FrmMain"_s;
constexpr int kFoldersWidth = 260;

QString Encoded(const QByteArray& state) {
    return QString::fromLatin1(state.toBase64());
}

QByteArray Decoded(const QString& key) {
    return QByteArray::fromBase64(GetSetting(kSection, key).toLatin1());
}

} // namespace

FrmMain::FrmMain(QWidget* parent)
    : QMainWindow(parent), m_ui(std::make_unique<Ui::FrmMain>()), m_files(new FilesModel(this)) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    setWindowIcon(ProgramIcon());
    if (!Program().gIsDefaultArchive) {
        setWindowTitle(GetMessage(121) + u" - "_s + platform::DisplayPath(Program().gArchivePath));
    }
    m_tmrsetfocus.setSingleShot(true);
    m_tmrsetfocus.setInterval(0);
    connect(&m_tmrsetfocus, &QTimer::timeout, this, [this] { m_ui->txtRicerca->setFocus(); });
    PrepareBars();
    PrepareSearchBar();
    PreparePanes();
    RestorePlace();
    InitializeTreeView();
    m_activation.EmptyTree = m_ui->treFolders->IsEmpty();
}

FrmMain::~FrmMain() {
    // A window that is shown loses the focus only while its base is destroyed, when the members
    // are gone.
    disconnect(qApp, nullptr, this, nullptr);
}

void FrmMain::PreparePanes() {
    m_ui->lvwFiles->setModel(m_files);
    m_ui->lvwFiles->sortByColumn(0, Qt::AscendingOrder);
    QHeaderView& header = *m_ui->lvwFiles->header();
    header.setStretchLastSection(false);
    header.setSectionResizeMode(0, QHeaderView::Stretch);
    header.setMinimumSectionSize(60);
    header.resizeSection(1, 110);
    header.resizeSection(2, 210);
    m_ui->cmdAddFolder->setIcon(LineIcon(u"folder-add"_s));
    m_ui->cmdAddFirstFolder->setIcon(LineIcon(u"folder-add"_s));
    m_ui->cmdRemoveFolder->setIcon(LineIcon(u"folder-remove"_s));
    m_ui->vsplitter->setStretchFactor(0, 0);
    m_ui->vsplitter->setStretchFactor(1, 1);
    m_ui->vsplitter->setSizes({kFoldersWidth, width() - kFoldersWidth});

    connect(m_ui->treFolders, &QTreeWidget::currentItemChanged, this,
            &FrmMain::treFolders_NodeClick);
    connect(m_ui->lvwFiles, &QTreeView::activated, this, &FrmMain::lvwFiles_DblClick);
    connect(m_ui->lvwFiles->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &FrmMain::UpdateBars);
    connect(m_ui->cmdAddFolder, &QPushButton::clicked, this, &FrmMain::cmdAddFolder_Click);
    connect(m_ui->cmdAddFirstFolder, &QPushButton::clicked, this, &FrmMain::cmdAddFolder_Click);
    connect(m_ui->cmdRemoveFolder, &QPushButton::clicked, this, &FrmMain::cmdRemoveFolder_Click);
    // Commands work on the pane that was used last.
    connect(qApp, &QApplication::focusChanged, this, &FrmMain::UpdateBars);
    for (QWidget* pane :
         {static_cast<QWidget*>(m_ui->treFolders), static_cast<QWidget*>(m_ui->lvwFiles)}) {
        connect(pane, &QWidget::customContextMenuRequested, this,
                [this, pane](const QPoint& place) { ShowPopup(*pane, place); });
    }
}

void FrmMain::InitializeTreeView() {
    const QSignalBlocker quiet(m_ui->treFolders);
    m_ui->treFolders->InitializeTreeView();
    m_ui->stkFiles->setCurrentWidget(m_ui->treFolders->IsEmpty() ? m_ui->pagNoFolders
                                                                 : m_ui->pagFiles);
    treFolders_NodeClick();
}

Selection FrmMain::CurrentSelection() const {
    Selection selection;
    selection.folder = m_ui->treFolders->CurrentPath();
    selection.isIndexedFolder = m_ui->treFolders->CurrentIndexedFolder().has_value();
    const QModelIndex index = m_ui->lvwFiles->currentIndex();
    if (index.isValid() && m_ui->lvwFiles->selectionModel()->isRowSelected(index.row())) {
        selection.item = m_files->Path(index.row());
        selection.itemIsFolder = m_files->Row(index.row()).isFolder;
    }
    // A chosen file is what a person means, unless the tree has the focus.
    selection.filesActive = !selection.item.isEmpty() && !m_ui->treFolders->hasFocus();
    return selection;
}

void FrmMain::treFolders_NodeClick() {
    LoadlvwFiles(m_ui->treFolders->CurrentPath(), false);
    UpdateBars();
}

void FrmMain::LoadlvwFiles(const QString& path, bool forceReload) {
    if (path == m_folder && !forceReload && !path.isEmpty()) {
        return;
    }
    m_folder = path;
    FolderContent content;
    if (!path.isEmpty()) {
        const Hourglass busy;
        content = ReadFolder(path);
    }
    m_files->SetContent(path, std::move(content.rows));
    ShowCounts();
    if (!content.exists && !m_ui->treFolders->CurrentIndexedFolder()) {
        m_folder.clear();
        Tell(GetMessage(1063), GetMessage(116), Icon::Exclamation);
        m_ui->treFolders->DropPath(path);
    } else if (!content.exists) {
        m_folder.clear();
        Tell(GetMessage(296) + u"\n"_s + platform::DisplayPath(path), GetMessage(41),
             Icon::Critical);
        m_ui->treFolders->SelectRoot();
    } else if (!content.error.Ok()) {
        m_folder.clear();
        Tell(GetMessage(329) + u"\n"_s + platform::DisplayPath(path), GetMessage(99),
             Icon::Critical);
        m_ui->treFolders->SelectRoot();
    }
}

void FrmMain::ShowCounts() {
    int folders = 0;
    for (int row = 0; row < m_files->rowCount(); ++row) {
        folders += m_files->Row(row).isFolder ? 1 : 0;
    }
    statusBar()->showMessage(
        m_folder.isEmpty()
            ? QString()
            : GetMessage(kFolderCounts, {QString::number(folders),
                                         QString::number(m_files->rowCount() - folders)}));
}

void FrmMain::lvwFiles_DblClick(const QModelIndex& index) {
    if (m_files->Row(index.row()).isFolder) {
        m_ui->treFolders->SelectPath(m_files->Path(index.row()));
    } else {
        ShellLaunchFile();
    }
}

void FrmMain::FindElement(const QString& path) {
    if (m_ui->treFolders->SelectPath(path)) {
        m_ui->treFolders->setFocus();
        return;
    }
    const int notThere = m_ui->treFolders->SelectPath(platform::ParentFolder(path)) ? 1064 : 1063;
    LoadlvwFiles(m_ui->treFolders->CurrentPath(), true);
    const QString name = platform::DisplayPath(path).section(u'/', -1);
    const int row = notThere == 1064 ? m_files->RowOf(name) : -1;
    if (row < 0) {
        Tell(GetMessage(notThere), GetMessage(116), Icon::Exclamation);
        return;
    }
    const QModelIndex index = m_files->index(row, 0);
    m_ui->lvwFiles->setCurrentIndex(index);
    m_ui->lvwFiles->scrollTo(index);
    m_ui->lvwFiles->setFocus();
}

void FrmMain::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!event->spontaneous() && m_activation.FirstActivation) {
        // Not tied to the window's activation, which never comes where no window manager runs: an
        // unattended run must not wait for it.
        QTimer::singleShot(0, this, [this] { RunFirstActivation(m_activation, *this); });
    }
}

bool FrmMain::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) {
        Form_Activate();
    }
    return QMainWindow::event(event);
}

void FrmMain::Form_Activate() {
    m_tmrsetfocus.start();
    UpdateBars();
}

void FrmMain::closeEvent(QCloseEvent* event) {
    SavePlace();
    QMainWindow::closeEvent(event);
}

void FrmMain::RestorePlace() {
    restoreGeometry(Decoded(u"Geometry"_s));
    m_ui->vsplitter->restoreState(Decoded(u"Splitter"_s));
    m_ui->lvwFiles->header()->restoreState(Decoded(u"Columns"_s));
}

void FrmMain::SavePlace() {
    SaveSetting(kSection, u"Geometry"_s, Encoded(saveGeometry()));
    SaveSetting(kSection, u"Splitter"_s, Encoded(m_ui->vsplitter->saveState()));
    SaveSetting(kSection, u"Columns"_s, Encoded(m_ui->lvwFiles->header()->saveState()));
}

} // namespace velmora
