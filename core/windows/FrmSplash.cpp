// The splash window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/windows/FrmSplash.h"

#include "core/MessageIds.h"
#include "core/Messages.h"
#include "core/windows/Captions.h"
#include "core/windows/Pictures.h"
#include "ui_FrmSplash.h"

#include <QEventLoop>

namespace velmora {

namespace {

// Long enough to be seen, short enough that nobody waits for it.
constexpr int kShownMs = 300;
constexpr int kLogoSize = 112;

} // namespace

FrmSplash::FrmSplash(Use use, QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmSplash>()), m_use(use) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    if (use == Use::Start) {
        setWindowFlags(Qt::SplashScreen | Qt::FramelessWindowHint);
        m_ui->cmdClose->hide();
    }
    m_ui->imgLogo->setPixmap(LogoPicture(kLogoSize, *this));
    QFont font = m_ui->lblName->font();
    font.setPointSizeF(font.pointSizeF() * 2.4);
    font.setBold(true);
    m_ui->lblName->setFont(font);
    m_ui->lblVersion->setText(GetMessage(kVersion, {QStringLiteral(VELMORA_VERSION)}));
    m_tmrClose.setObjectName(u"tmrClose");
    m_tmrClose.setSingleShot(true);
    m_tmrClose.setInterval(kShownMs);
    connect(&m_tmrClose, &QTimer::timeout, this, &QDialog::accept);
    connect(m_ui->cmdClose, &QPushButton::clicked, this, &QDialog::accept);
}

FrmSplash::~FrmSplash() = default;

// Showing a splash runs events, so on a slow machine the timer may strike before the base class
// begins to wait, and it would then wait for ever.
int FrmSplash::exec() {
    setWindowModality(Qt::ApplicationModal);
    show();
    if (isVisible()) {
        QEventLoop loop;
        connect(this, &QDialog::finished, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return result();
}

void FrmSplash::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (m_use == Use::Start) {
        m_tmrClose.start();
    }
}

void FrmSplash::mouseReleaseEvent(QMouseEvent* event) {
    QDialog::mouseReleaseEvent(event);
    if (m_use == Use::Start) {
        accept();
    }
}

} // namespace velmora
