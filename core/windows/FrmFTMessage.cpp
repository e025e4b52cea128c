// The window of first-time hints.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/windows/FrmFTMessage.h"

#include "core/windows/Captions.h"
#include "core/windows/Pictures.h"
#include "ui_FrmFTMessage.h"

namespace velmora {

FrmFTMessage::FrmFTMessage(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmFTMessage>()) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    connect(m_ui->cmdOk, &QPushButton::clicked, this, &QDialog::accept);
}

FrmFTMessage::~FrmFTMessage() = default;

void FrmFTMessage::SetMessage(int pictureId, const QString& text, const QString& title) {
    const QPixmap picture = HintPicture(pictureId, *this);
    m_ui->imgPicture->setPixmap(picture);
    m_ui->imgPicture->setVisible(!picture.isNull());
    m_ui->lblMessage->setText(text);
    setWindowTitle(title);
}

bool FrmFTMessage::DontShowAgain() const {
    return m_ui->chkDontShow->isChecked();
}

} // namespace velmora
