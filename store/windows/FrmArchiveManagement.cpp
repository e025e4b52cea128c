// The list of shared archives.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/windows/FrmArchiveManagement.h"

#include "core/CommonFunctions.h"
#include "core/Dialogue.h"
#include "core/Messages.h"
#include "core/windows/Captions.h"
#include "resources/icons/Icons.h"
#include "ui_FrmArchiveManagement.h"

#include <QMenu>

using namespace Qt::StringLiterals;

namespace velmora {

FrmArchiveManagement::FrmArchiveManagement(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmArchiveManagement>()),
      m_mnuArchive(new QMenu(this)), m_mnuDelete(new QAction(this)) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    m_ui->lvwArchives->header()->setStretchLastSection(false);
    m_ui->lvwArchives->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_ui->lvwArchives->header()->setSectionResizeMode(1, QHeaderView::Interactive);
    m_ui->lvwArchives->setColumnWidth(1, width() / 3);

    m_mnuArchive->setObjectName(u"mnuArchive");
    m_mnuDelete->setObjectName(u"mnuDelete");
    m_mnuDelete->setText(GetMessage(1018));
    m_mnuDelete->setShortcut(Qt::Key_Delete);
    m_mnuDelete->setShortcutContext(Qt::WidgetShortcut);
    m_ui->lvwArchives->addAction(m_mnuDelete);
    m_mnuArchive->addAction(m_mnuDelete);
    m_mnuArchive->addAction(GetMessage(1001))->setObjectName(u"mnuCancel");

    // The one old family of systems on which an archive cannot lie on a share.
    m_ui->lblWaring98->setText(GetWinVersion() == -1 ? GetMessage(327) : QString());
    m_ui->lblWaring98->setVisible(!m_ui->lblWaring98->text().isEmpty());

    connect(m_mnuDelete, &QAction::triggered, this, &FrmArchiveManagement::mnuDelete_Click);
    connect(m_ui->lvwArchives, &QWidget::customContextMenuRequested, this,
            &FrmArchiveManagement::ShowPopup);
    connect(m_ui->lvwArchives, &QTreeWidget::itemSelectionChanged, this,
            &FrmArchiveManagement::UpdateButtons);
    connect(m_ui->cmdNewArchive, &QPushButton::clicked, this,
            &FrmArchiveManagement::cmdNewArchive_Click);
    connect(m_ui->cmdBrowse, &QPushButton::clicked, this, &FrmArchiveManagement::cmdBrowse_Click);
    connect(m_ui->cmdSalva, &QPushButton::clicked, this, &FrmArchiveManagement::cmdSalva_Click);
    connect(m_ui->cmdAnnulla, &QPushButton::clicked, this, &FrmArchiveManagement::cmdAnnulla_Click);
    connect(m_ui->cmdDelete, &QPushButton::clicked, this, &FrmArchiveManagement::mnuDelete_Click);
    connect(m_ui->cmdClose, &QPushButton::clicked, this, &QDialog::accept);
    ReadArchives();
    SetEntering(false);
}

FrmArchiveManagement::~FrmArchiveManagement() = default;

void FrmArchiveManagement::ReadArchives() {
    m_archives = velmora::ReadArchives();
    m_ui->lvwArchives->clear();
    for (const SharedArchive& archive : std::as_const(m_archives)) {
        const QString path = ShownArchivePath(archive.path);
        auto* item = new QTreeWidgetItem(m_ui->lvwArchives, {path, archive.description});
        item->setIcon(0, LineIcon(u"shared-archive"_s));
        item->setToolTip(0, path.toHtmlEscaped());
        item->setToolTip(1, archive.description.toHtmlEscaped());
    }
    UpdateButtons();
}

void FrmArchiveManagement::SetEntering(bool entering) {
    m_entering = entering;
    for (QLineEdit* edit : {m_ui->txtArchiveDescription, m_ui->txtArchivePath}) {
        edit->clear();
        edit->setEnabled(entering);
    }
    m_ui->cmdBrowse->setEnabled(entering);
    m_ui->cmdSalva->setEnabled(entering);
    m_ui->cmdAnnulla->setEnabled(entering);
    m_ui->cmdNewArchive->setEnabled(!entering);
    (entering ? m_ui->cmdSalva : m_ui->cmdClose)->setDefault(true);
    if (entering) {
        m_ui->txtArchiveDescription->setFocus();
    } else {
        m_ui->lvwArchives->setFocus();
    }
}

void FrmArchiveManagement::UpdateButtons() {
    const bool selected = !m_ui->lvwArchives->selectedItems().isEmpty();
    m_ui->cmdDelete->setEnabled(selected);
    m_mnuDelete->setEnabled(selected);
}

void FrmArchiveManagement::cmdNewArchive_Click() {
    SetEntering(true);
}

void FrmArchiveManagement::cmdBrowse_Click() {
    const QString path = BrowseForFolder(GetMessage(317));
    if (!path.isEmpty()) {
        m_ui->txtArchivePath->setText(ShownArchivePath(path));
    }
}

void FrmArchiveManagement::cmdSalva_Click() {
    // Events run while a share is asked: one click is enough.
    m_ui->cmdSalva->setEnabled(false);
    const bool added =
        AddArchive(m_ui->txtArchivePath->text(), m_ui->txtArchiveDescription->text());
    m_ui->cmdSalva->setEnabled(m_entering);
    if (added) {
        ReadArchives();
        SetEntering(false);
    } else if (m_entering) {
        QLineEdit* path = m_ui->txtArchivePath;
        (path->text().trimmed().isEmpty() ? path : m_ui->txtArchiveDescription)->setFocus();
    }
}

void FrmArchiveManagement::cmdAnnulla_Click() {
    SetEntering(false);
}

void FrmArchiveManagement::mnuDelete_Click() {
    const int row = m_ui->lvwArchives->currentIndex().row();
    if (row >= 0 && m_mnuDelete->isEnabled() && RemoveArchive(m_archives.at(row))) {
        ReadArchives();
    }
}

void FrmArchiveManagement::ShowPopup(const QPoint& place) {
    m_mnuArchive->popup(m_ui->lvwArchives->viewport()->mapToGlobal(place));
}

void FrmArchiveManagement::reject() {
    if (m_entering) {
        SetEntering(false);
    } else {
        QDialog::reject();
    }
}

} // namespace velmora
