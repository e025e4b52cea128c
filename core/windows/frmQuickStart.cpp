// The first-steps page.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/windows/frmQuickStart.h"

#include "core/MessageIds.h"
#include "core/Messages.h"
#include "core/Settings.h"
#include "core/windows/Captions.h"
#include "core/windows/Looks.h"
#include "core/windows/Pictures.h"
#include "ui_frmQuickStart.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kLogoSize = 56;

// The name of a command as its menu shows it.
QString Command(int id) {
    return GetMessage(id).remove(u'&');
}

// One of the four steps; `commands` are named in its text.
void FillStep(QLabel& number, QLabel& heading, QLabel& text, int step,
              const QStringList& commands) {
    number.setText(QString::number(step));
    MakeHeading(number);
    QFont bold = heading.font();
    bold.setBold(true);
    heading.setFont(bold);
    heading.setText(GetMessage(kFirstStepHeading + 2 * (step - 1)));
    text.setText(GetMessage(kFirstStepText + 2 * (step - 1), commands));
}

} // namespace

frmQuickStart::frmQuickStart(QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::frmQuickStart>()) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    m_ui->imgLogo->setPixmap(LogoPicture(kLogoSize, *this));
    MakeHeading(*m_ui->lblTitle);
    FillStep(*m_ui->lblNumber1, *m_ui->lblHead1, *m_ui->lblText1, 1, {Command(5), Command(125)});
    FillStep(*m_ui->lblNumber2, *m_ui->lblHead2, *m_ui->lblText2, 2, {Command(10)});
    FillStep(*m_ui->lblNumber3, *m_ui->lblHead3, *m_ui->lblText3, 3, {Command(1057)});
    FillStep(*m_ui->lblNumber4, *m_ui->lblHead4, *m_ui->lblText4, 4, {Command(94)});
    connect(m_ui->cmdClose, &QPushButton::clicked, this, &QDialog::accept);
}

frmQuickStart::~frmQuickStart() = default;

void frmQuickStart::done(int result) {
    if (m_ui->chkDontShow->isChecked()) {
        SaveSetting(u"FTMessages"_s, u"QS"_s, u"1"_s);
    }
    QDialog::done(result);
}

} // namespace velmora
