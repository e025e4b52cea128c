// Asks what to do where a name is taken.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FrmFileConflict.h"

#include "core/Messages.h"
#include "core/windows/Captions.h"
#include "core/windows/Looks.h"
#include "mainwindow/FileMessageIds.h"
#include "resources/icons/Icons.h"
#include "ui_FrmFileConflict.h"

using namespace Qt::StringLiterals;

namespace velmora {

using platform::ConflictChoice;

namespace {

void ShowSide(QLabel& picture, QLabel& path, QLabel& facts, const platform::CarrySide& side) {
    const bool isFolder = side.status.kind == platform::OwnKind::Folder;
    picture.setPixmap(
        LineIcon(isFolder ? u"folder"_s : IconOfFile(side.path)).pixmap(picture.minimumSize()));
    const int room = path.minimumWidth();
    path.setText(path.fontMetrics().elidedText(OneLine(side.path), Qt::ElideMiddle, room));
    path.setToolTip(OneLine(side.path).toHtmlEscaped());
    facts.setText(SideText(side));
}

} // namespace

FrmFileConflict::FrmFileConflict(const platform::Conflict& conflict, QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmFileConflict>()) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    m_ui->picQuestion->setPixmap(StandardPicture(*this, QStyle::SP_MessageBoxQuestion));
    m_ui->lblQuestion->setText(ConflictText(conflict));
    ShowSide(*m_ui->picNew, *m_ui->lblNewPath, *m_ui->lblNewFacts, conflict.from);
    ShowSide(*m_ui->picOld, *m_ui->lblOldPath, *m_ui->lblOldFacts, conflict.to);
    if (conflict.IsMerge()) {
        m_ui->cmdReplace->setText(GetMessage(kMerge));
    }
    m_ui->cmdReplace->setVisible(conflict.canReplace);
    // Enter must not overwrite; two folders put together lose nothing.
    (conflict.IsMerge() ? m_ui->cmdReplace : m_ui->cmdSkip)->setDefault(true);
    (conflict.IsMerge() ? m_ui->cmdReplace : m_ui->cmdSkip)->setFocus();
    connect(m_ui->cmdSkip, &QPushButton::clicked, this, [this] { Choose(ConflictChoice::Skip); });
    connect(m_ui->cmdReplace, &QPushButton::clicked, this,
            [this] { Choose(ConflictChoice::Replace); });
    connect(m_ui->cmdKeepBoth, &QPushButton::clicked, this,
            [this] { Choose(ConflictChoice::KeepBoth); });
    connect(m_ui->cmdAnnulla, &QPushButton::clicked, this, &QDialog::reject);
}

FrmFileConflict::~FrmFileConflict() = default;

void FrmFileConflict::Choose(ConflictChoice choice) {
    Answer = {choice, m_ui->chkForAll->isChecked()};
    accept();
}

} // namespace velmora
