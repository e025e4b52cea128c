// The progress of a copy, a move or a deletion.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/FileProgress.h"

#include <QDialog>
#include <QElapsedTimer>
#include <memory>

namespace Ui {
class FrmFileProgress;
}

namespace velmora {

// Not run by exec: shown while the operation goes on.
class FrmFileProgress : public QDialog {
    Q_OBJECT

  public:
    explicit FrmFileProgress(ShellWork work, QWidget* parent = nullptr);
    ~FrmFileProgress() override;

    // The person wants it to end; it does so at the next safe point.
    bool Cancelled = false;

    void ShowProgress(const platform::CarryProgress& progress);

    // Escape and the closing of the window are Cancel.
    void reject() override;

  private:
    std::unique_ptr<Ui::FrmFileProgress> m_ui;
    RateMeter m_rate;
    QElapsedTimer m_clock;
};

} // namespace velmora
