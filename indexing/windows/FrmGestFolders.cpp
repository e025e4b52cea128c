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

using namespace Qt::StringLiterals;

namespace velmora {

FrmGestFolders::FrmGestFolders(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmGestFolders>()) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    m_ui->lvwIndexedFolders->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_ui->cmdAddNewFolder->setIcon(LineIcon(u"folder-add"_s));
    m_ui->cmdLeft->setIcon(LineIcon(u"folder-remove"_s));
    connect(m_ui->cmdAddNewFolder, &QPushButton::clicked, this,
            &FrmGestFolders::cmdAddNewFolder_Click);
    connect(m_ui->cmdLeft, &QPushButton::clicked, this, &FrmGestFolders::cmdLeft_Click);
    connect(m_ui->cmdClose, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_ui->lvwIndexedFolders, &QTreeWidget::itemSelectionChanged, this,
            &FrmGestFolders::UpdateButtons);
    LoadIdxedFolders();
}

FrmGestFolders::~FrmGestFolders() = default;

void FrmGestFolders::LoadIdxedFolders() {
    m_folders = ListIndexedFolders();
    m_ui->lvwIndexedFolders->clear();
    for (const IndexedFolder& folder : std::as_const(m_folders)) {
        const QString shown = platform::DisplayPath(folder.path);
        auto* item = new QTreeWidgetItem(m_ui->lvwIndexedFolders, {folder.description, shown});
        item->setIcon(0, LineIcon(u"folder"_s));
        item->setToolTip(1, shown.toHtmlEscaped());
    }
    UpdateButtons();
}

void FrmGestFolders::UpdateButtons() {
    m_ui->cmdLeft->setEnabled(!m_ui->lvwIndexedFolders->selectedItems().isEmpty());
}

void FrmGestFolders::AddIdxdFolders(const QString& path) {
    if (velmora::AddIdxdFolders(path, m_changes)) {
        LoadIdxedFolders();
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
    if (row >= 0 && RemoveIdxdFolders(m_folders.at(row), m_changes)) {
        LoadIdxedFolders();
    }
}

void FrmGestFolders::done(int result) {
    Summary = RunFolderChanges(std::exchange(m_changes, {}), this);
    QDialog::done(result);
}

} // namespace velmora
