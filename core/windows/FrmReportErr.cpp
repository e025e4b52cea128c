// The error report window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/windows/FrmReportErr.h"

#include "core/Globals.h"
#include "core/Mail.h"
#include "core/Messages.h"
#include "core/windows/Captions.h"
#include "core/windows/Looks.h"
#include "ui_FrmReportErr.h"

#include <QFontDatabase>
#include <QStyle>

using namespace Qt::StringLiterals;

namespace velmora {

FrmReportErr::FrmReportErr(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmReportErr>()) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    m_ui->imgError->setPixmap(StandardPicture(*this, QStyle::SP_MessageBoxCritical));
    m_ui->txtError->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    MakeHeading(*m_ui->lblInfoError);
    m_ui->cmdRetry->setFocus();
    connect(m_ui->cmdRetry, &QPushButton::clicked, this, &FrmReportErr::cmdRetry_Click);
    connect(m_ui->cmdCancel, &QPushButton::clicked, this, &FrmReportErr::cmdCancel_Click);
    connect(m_ui->cmdSendError, &QPushButton::clicked, this, &FrmReportErr::cmdSendError_Click);
}

FrmReportErr::~FrmReportErr() = default;

void FrmReportErr::SetReport(const QString& text) {
    m_report = text;
    m_ui->txtError->setPlainText(text);
}

void FrmReportErr::cmdRetry_Click() {
    Retry = true;
    accept();
}

void FrmReportErr::cmdCancel_Click() {
    Retry = false;
    reject();
}

void FrmReportErr::cmdSendError_Click() {
    const auto& mainCaption = Program().mainCaption;
    SendMail(GetMessage(118), (mainCaption ? mainCaption() : QString()) + u"\r\n"_s + m_report,
             SupportAddress());
}

} // namespace velmora
