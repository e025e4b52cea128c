// The main window: its panes and its life. Bars: FrmMainBars.cpp, commands: FrmMainCommands.cpp,
// file operations: FrmMainFiles.cpp.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FrmMain.h"

#include "core/Globals.h"
#include "core/Messages.h"
#include "core/Settings.h"
#include "core/windows/Captions.h"
#include "indexing/IndexedFolders.h"
#include "mainwindow/MessageIds.h"
#include "mainwindow/windows/Browser.h"
#include "mainwindow/windows/FileShellWindows.h"
#include "platform/LogicalPath.h"
#include "resources/icons/Icons.h"
#include "ui_FrmMain.h"

#include <QCloseEvent>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Where this window stood last, among the user's settings.
const QString kSection = u"FrmMain"_s;

} // namespace

FrmMain::FrmMain(QWidget* parent)
    : QMainWindow(parent), m_ui(std::make_unique<Ui::FrmMain>()),
      m_shell(std::make_unique<FileShellWindows>(this)),
      m_clipboard(std::make_unique<DesktopClipboard>()), m_operations(*m_shell, *m_clipboard) {
    m_ui->setupUi(this);
    m_browser = m_ui->pnlBrowser;
    AssignHBCaption(this);
    setWindowIcon(ProgramIcon());
    if (!Program().gIsDefaultArchive) {
        setWindowTitle(GetMessage(121) + u" - "_s + platform::DisplayPath(Program().gArchivePath));
    }
    m_tmrsetfocus.setSingleShot(true);
    m_tmrsetfocus.setInterval(0);
    connect(&m_tmrsetfocus, &QTimer::timeout, this, [this] { m_ui->txtRicerca->setFocus(); });
    PrepareBrowser();
    PrepareBars();
    PrepareSearchBar();
    RestorePlace();
    m_browser->CreateLVWColumns();
    InitializeTreeView();
    m_activation.EmptyTree = !m_browser->HasFolders();
}

FrmMain::~FrmMain() {
    // A window that is shown loses the focus only while its base is destroyed, when the members
    // are gone.
    m_browser->disconnect(this);
    disconnect(qApp, nullptr, this, nullptr);
}

void FrmMain::PrepareBrowser() {
    m_browser->SetBelowTree(m_ui->pnlFolderButtons);
    m_browser->SetEmptyPage(m_ui->pagNoFolders);
    m_ui->cmdAddFolder->setIcon(LineIcon(u"folder-add"_s));
    m_ui->cmdAddFirstFolder->setIcon(LineIcon(u"folder-add"_s));
    m_ui->cmdRemoveFolder->setIcon(LineIcon(u"folder-remove"_s));
    connect(m_browser, &Browser::SelectionChanged, this, &FrmMain::UpdateBars);
    connect(m_browser, &Browser::RowsChanged, this, &FrmMain::ShowCounts);
    connect(m_browser, &Browser::PopupRequested, this,
            [this](QWidget*, const QPoint& place) { ShowPopup(place); });
    connect(m_browser, &Browser::Opened, this,
            [this](const QString& path) { m_operations.ShellLaunchFile({path}); });
    connect(m_clipboard.get(), &DesktopClipboard::Changed, this, &FrmMain::UpdateBars);
    connect(m_browser, &Browser::FilesDropped, this, &FrmMain::Drop);
    m_browser->RenameRequested = [this](const QString& path, const QString& newName, bool) {
        return Rename(path, newName);
    };
    connect(m_ui->cmdAddFolder, &QPushButton::clicked, this, &FrmMain::cmdAddFolder_Click);
    connect(m_ui->cmdAddFirstFolder, &QPushButton::clicked, this, &FrmMain::cmdAddFolder_Click);
    connect(m_ui->cmdRemoveFolder, &QPushButton::clicked, this, &FrmMain::cmdRemoveFolder_Click);
}

void FrmMain::InitializeTreeView() {
    m_browser->InitializeTreeView();
}

CommandContext FrmMain::Context(const BrowserState& state) const {
    CommandContext context;
    context.searchMode = state.searchMode;
    context.treeFocus = state.treeActive;
    context.node = state.node;
    context.historyPosition = state.historyPosition;
    context.historySize = state.historySize;
    context.clipboardFull = m_operations.ClipboardFull();
    context.selected = static_cast<int>(state.selected.size());
    context.allTiff = context.allPdf = !state.selected.isEmpty();
    for (const BrowserItem& item : state.selected) {
        const QString name = item.name.toUpper();
        context.hasFolder |= item.isFolder;
        context.allTiff &= !item.isFolder && name.endsWith(u".TIF");
        context.allPdf &= !item.isFolder && name.endsWith(u".PDF");
    }
    context.isDefaultArchive = Program().gIsDefaultArchive;
    return context;
}

FileSelection FrmMain::SelectedFiles() const {
    const BrowserState state = m_browser->State();
    FileSelection selection;
    selection.fromTree = state.treeActive;
    selection.node = state.node;
    if (state.treeActive) {
        if (!state.folder.isEmpty()) {
            selection.paths << state.folder;
        }
        return selection;
    }
    for (const BrowserItem& item : state.selected) {
        selection.paths << item.path;
    }
    return selection;
}

QString FrmMain::SelectedPath() const {
    return SelectedFiles().paths.value(0);
}

void FrmMain::ShowCounts() {
    const int folders = m_browser->FolderCount();
    const int rows = m_browser->RowCount();
    statusBar()->showMessage(
        m_browser->State().node == NodeKind::Root && !m_browser->State().searchMode
            ? QString()
            : GetMessage(kFolderCounts,
                         {QString::number(folders), QString::number(rows - folders)}));
}

void FrmMain::Reload() {
    m_browser->LoadlvwFiles(m_browser->State().folder, true);
}

void FrmMain::FindElement(const QString& path) {
    m_browser->FindElement(path);
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
    if (m_operations.IsBusy()) {
        event->ignore();
        return;
    }
    SavePlace();
    QMainWindow::closeEvent(event);
}

void FrmMain::RestorePlace() {
    restoreGeometry(QByteArray::fromBase64(GetSetting(kSection, u"Geometry"_s).toLatin1()));
    m_browser->RestoreState();
}

void FrmMain::SavePlace() {
    SaveSetting(kSection, u"Geometry"_s, QString::fromLatin1(saveGeometry().toBase64()));
    m_browser->SaveState();
}

} // namespace velmora
