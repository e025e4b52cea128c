// The error report: what failed, in words to read and copy; Retry, Cancel, or send it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QDialog>
#include <memory>

namespace Ui {
class FrmReportErr;
}

namespace velmora {

class FrmReportErr : public QDialog {
    Q_OBJECT

  public:
    explicit FrmReportErr(QWidget* parent = nullptr);
    ~FrmReportErr() override;

    void SetReport(const QString& text);

    // Out: whether the failed unit shall run again. Closing the window counts as Cancel.
    bool Retry = false;

  private:
    void cmdRetry_Click();
    void cmdCancel_Click();
    void cmdSendError_Click();

    std::unique_ptr<Ui::FrmReportErr> m_ui;
    QString m_report; // as reported: the text box would change its line ends
};

} // namespace velmora
