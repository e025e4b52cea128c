// The question at the start: which archive to work on.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/windows/FrmArchiveSelection.h"

#include "core/Messages.h"
#include "core/windows/Captions.h"
#include "resources/icons/Icons.h"
#include "store/Archives.h"
#include "store/MessageIds.h"
#include "ui_FrmArchiveSelection.h"

using namespace Qt::StringLiterals;

namespace velmora {

FrmArchiveSelection::FrmArchiveSelection(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmArchiveSelection>()) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    m_ui->imgArchives->setPixmap(
        LineIcon(u"shared-archive"_s).pixmap(QSize(48, 48), devicePixelRatio()));
    connect(m_ui->cmdok, &QPushButton::clicked, this, &FrmArchiveSelection::cmdok_Click);
    connect(m_ui->cmdAnnulla, &QPushButton::clicked, this, &FrmArchiveSelection::reject);
    ReadArchives();
}

FrmArchiveSelection::~FrmArchiveSelection() = default;

void FrmArchiveSelection::ReadArchives() {
    ArchivePaths = {QString()};
    m_ui->cboArchives->AddText(GetMessage(kDefaultArchive));
    for (const SharedArchive& archive : velmora::ReadArchives()) {
        ArchivePaths << archive.path;
        m_ui->cboArchives->AddText(ArchiveText(archive));
    }
    m_ui->cboArchives->setCurrentIndex(LastSelectedArchive(ArchivePaths.size()));
}

void FrmArchiveSelection::cmdok_Click() {
    const int index = m_ui->cboArchives->currentIndex();
    const QString path = ArchivePaths.value(index);
    // Events run while the share is asked: nothing else may be pressed meanwhile but Escape.
    m_ui->cboArchives->setEnabled(false);
    m_ui->cmdok->setEnabled(false);
    const bool reachable = IsArchiveReachable(path);
    m_ui->cboArchives->setEnabled(true);
    m_ui->cmdok->setEnabled(true);
    m_ui->cboArchives->setFocus();
    if (reachable && !Cancelled) {
        ArchivePath = path;
        RememberSelectedArchive(index);
        accept();
    }
}

void FrmArchiveSelection::reject() {
    Cancelled = true;
    QDialog::reject();
}

} // namespace velmora
