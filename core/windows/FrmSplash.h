// The splash at start and, with its timer off, the about box.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QTimer>
#include <memory>

namespace Ui {
class FrmSplash;
}

namespace velmora {

class FrmSplash : public QDialog {
    Q_OBJECT

  public:
    enum class Use {
        Start,   // no frame, closes by itself or on a click on it
        AboutBox // framed, stays until it is closed
    };

    explicit FrmSplash(Use use, QWidget* parent = nullptr);
    ~FrmSplash() override;

    int exec() override;

  protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void showEvent(QShowEvent* event) override;

  private:
    std::unique_ptr<Ui::FrmSplash> m_ui;
    QTimer m_tmrClose{this};
    Use m_use;
};

} // namespace velmora
