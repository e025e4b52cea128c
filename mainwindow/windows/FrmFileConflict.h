// Asks what to do where a name is taken.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/FileProgress.h"

#include <QDialog>
#include <memory>

namespace Ui {
class FrmFileConflict;
}

namespace velmora {

class FrmFileConflict : public QDialog {
    Q_OBJECT

  public:
    explicit FrmFileConflict(const platform::Conflict& conflict, QWidget* parent = nullptr);
    ~FrmFileConflict() override;

    // Out: Cancel, unless a button said otherwise.
    platform::ConflictAnswer Answer;

  private:
    void Choose(platform::ConflictChoice choice);

    std::unique_ptr<Ui::FrmFileConflict> m_ui;
};

} // namespace velmora
