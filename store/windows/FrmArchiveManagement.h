// The list of shared archives: add one, make one, take one off the list.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "store/Archives.h"

#include <QDialog>
#include <memory>

class QMenu;

namespace Ui {
class FrmArchiveManagement;
}

namespace velmora {

// Can be opened at any time; the open archive stays the one that was chosen at the start. Either
// the list is looked at, or an entry is being typed: cmdNewArchive begins that, cmdSalva and
// cmdAnnulla end it.
class FrmArchiveManagement : public QDialog {
    Q_OBJECT

  public:
    explicit FrmArchiveManagement(QWidget* parent = nullptr);
    ~FrmArchiveManagement() override;

    // Escape: gives up the entry that is being typed, else closes the window.
    void reject() override;

  private:
    void ReadArchives();
    void SetEntering(bool entering);
    void UpdateButtons();
    void cmdNewArchive_Click();
    void cmdBrowse_Click();
    void cmdSalva_Click();
    void cmdAnnulla_Click();
    void mnuDelete_Click();
    void ShowPopup(const QPoint& place);

    std::unique_ptr<Ui::FrmArchiveManagement> m_ui;
    QMenu* m_mnuArchive;
    QAction* m_mnuDelete;
    QList<SharedArchive> m_archives; // in the order of the list
    bool m_entering = false;
};

} // namespace velmora
