// The wait window: shown without blocking while a job runs, with an animation.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QTimer>
#include <memory>

namespace Ui {
class FrmAttesa;
}

namespace velmora {

// The picture that moves while its widget is shown and events run.
class WaitAnimation : public QWidget {
    Q_OBJECT

  public:
    explicit WaitAnimation(QWidget* parent = nullptr);
    QSize sizeHint() const override { return {72, 72}; }
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    QTimer m_tick{this};
    double m_phase = 0;
};

// Show it, let events run twice, do the work, and let it go out of scope. The person cannot close
// it: there is nothing to cancel.
class FrmAttesa : public QDialog {
    Q_OBJECT

  public:
    explicit FrmAttesa(QWidget* parent = nullptr);
    ~FrmAttesa() override;

    // What is being waited for; "Please wait" when not set.
    void SetText(const QString& text);

    void reject() override {}

  private:
    std::unique_ptr<Ui::FrmAttesa> m_ui;
};

} // namespace velmora
