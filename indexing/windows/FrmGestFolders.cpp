// The list of indexed folders.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/windows/FrmGestFolders.h"

#include "core/Dialogue.h"
#include "core/Messages.h"
#include "core/windows/Captions.h"
#include "indexing/MessageIds.h"
#include "indexing/windows/FrmUpdateIndex.h"
#include "platform/LogicalPath.h"
#include "resources/icons/Icons.h"
#include "ui_FrmGestFolders.h"

#include <QShortcut>

using namespace Qt::StringLiterals;

namespace velmora {

FrmGestFolders::FrmGestFolders(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmGestFolders>()) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    FolderPane& list = *m_ui->lvwIndexedFolders;
    LocalTree& tree = *m_ui->treLocalResource;
    list.header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    list.SetPartner(tree, true);
    tree.SetPartner(list, false);
    m_ui->cmdRight->setIcon(LineIcon(u"move-right"_s));
    m_ui->cmdLeft->setIcon(LineIcon(u"move-left"_s));
    m_ui->cmdAddNewFolder->setIcon(LineIcon(u"folder-add"_s));
    connect(m_ui->cmdRight, &QPushButton::clicked, this, &FrmGestFolders::cmdRight_Click);
    connect(m_ui->cmdLeft, &QPushButton::clicked, this, &FrmGestFolders::cmdLeft_Click);
    connect(m_ui->cmdAddNewFolder, &QPushButton::clicked, this,
            &FrmGestFolders::cmdAddNewFolder_Click);
    connect(m_ui->cmdClose, &QPushButton::clicked, this, &QDialog::accept);
    connect(&list, &QTreeWidget::itemSelectionChanged, this, &FrmGestFolders::UpdateButtons);
    connect(&tree, &QTreeWidget::itemSelectionChanged, this, &FrmGestFolders::UpdateButtons);
    connect(&list, &QTreeWidget::itemDoubleClicked, this, &FrmGestFolders::cmdLeft_Click);
    connect(&list, &FolderPane::FoldersDropped, this, &FrmGestFolders::FoldersDropped,
            Qt::QueuedConnection);
    // What can be dropped there is the one folder that was dragged, which is the selected one.
    connect(&tree, &FolderPane::FoldersDropped, this, &FrmGestFolders::cmdLeft_Click,
            Qt::QueuedConnection);
    connect(new QShortcut(Qt::Key_Insert, &tree, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, this, &FrmGestFolders::cmdRight_Click);
    connect(new QShortcut(Qt::Key_Delete, &list, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, this, &FrmGestFolders::cmdLeft_Click);
    tree.InitializeTreeView();
    LoadIdxedFolders();
}

FrmGestFolders::~FrmGestFolders() = default;

void FrmGestFolders::LoadIdxedFolders() {
    m_folders = ListIndexedFolders();
    m_ui->lvwIndexedFolders->clear();
    for (const IndexedFolder& folder : std::as_const(m_folders)) {
        const QString shown = platform::DisplayPath(folder.path);
        auto* item = new QTreeWidgetItem(m_ui->lvwIndexedFolders, {folder.description, shown});
        item->setIcon(0, FolderIcon(folder.iconId));
        item->setData(0, FolderPane::kPathRole, shown);
        item->setToolTip(0, shown.toHtmlEscaped());
        item->setToolTip(1, shown.toHtmlEscaped());
    }
    UpdateButtons();
}

void FrmGestFolders::UpdateButtons() {
    m_ui->cmdRight->setEnabled(!m_ui->treLocalResource->SelectedPath().isEmpty());
    m_ui->cmdLeft->setEnabled(!m_ui->lvwIndexedFolders->selectedItems().isEmpty());
}

void FrmGestFolders::AddIdxdFolders(const QString& path) {
    if (velmora::AddIdxdFolders(path, m_changes)) {
        LoadIdxedFolders();
    }
}

void FrmGestFolders::cmdRight_Click() {
    const QString path = m_ui->treLocalResource->SelectedPath();
    if (!path.isEmpty()) {
        AddIdxdFolders(platform::ToLogical(path));
    }
}

void FrmGestFolders::cmdAddNewFolder_Click() {
    const QString path = BrowseForFolder(GetMessage(kChooseFolder));
    if (!path.isEmpty()) {
        AddIdxdFolders(path);
    }
}

void FrmGestFolders::cmdLeft_Click() {
    const int row = m_ui->lvwIndexedFolders->currentIndex().row();
    if (m_ui->cmdLeft->isEnabled() && row >= 0 && RemoveIdxdFolders(m_folders.at(row), m_changes)) {
        LoadIdxedFolders();
    }
}

void FrmGestFolders::FoldersDropped(const QStringList& paths) {
    for (const QString& path : paths) {
        AddIdxdFolders(platform::ToLogical(path));
    }
}

void FrmGestFolders::done(int result) {
    Summary = RunFolderChanges(std::exchange(m_changes, {}), this);
    QDialog::done(result);
}

} // namespace velmora
