// The picture of a run: a page that is being read. Moves while the run does.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QTimer>
#include <QWidget>

namespace velmora {

// Stands still on a desktop without animations, and whenever it is not running or not seen.
class ScanAnimation : public QWidget {
    Q_OBJECT

  public:
    explicit ScanAnimation(QWidget* parent = nullptr);

    void SetRunning(bool running);
    [[nodiscard]] bool IsMoving() const { return m_tick.isActive(); }
    QSize sizeHint() const override { return {48, 48}; }
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    void Settle();

    QTimer m_tick{this};
    double m_phase = 0; // of one way down and up, 0 to 1
    bool m_running = false;
};

// Whether the person's desktop wants things to move.
bool DesktopAnimates(const QWidget& widget);

} // namespace velmora
