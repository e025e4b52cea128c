// The first-steps page, shown at the start until it is ticked off.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QDialog>
#include <memory>

namespace Ui {
class frmQuickStart;
}

namespace velmora {

class frmQuickStart : public QDialog {
    Q_OBJECT

  public:
    explicit frmQuickStart(QWidget* parent = nullptr);
    ~frmQuickStart() override;

    // Every way of closing comes here; a ticked box is remembered.
    void done(int result) override;

  private:
    std::unique_ptr<Ui::frmQuickStart> m_ui;
};

} // namespace velmora
