// The list of indexed folders: add, remove; the index follows when the window closes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "indexing/IndexedFolders.h"

#include <QDialog>
#include <memory>

namespace Ui {
class FrmGestFolders;
}

namespace velmora {

// On the left the folders of this machine, on the right those in the index; folders go over by
// buttons, keys (Insert, Delete) and dragging, from a file manager too. Changes of the list take
// effect at once; what they mean for the index is gathered and done in one run when the window
// closes.
class FrmGestFolders : public QDialog {
    Q_OBJECT

  public:
    explicit FrmGestFolders(QWidget* parent = nullptr);
    ~FrmGestFolders() override;

    // Out: what came of the run in a line; empty when there was none.
    QString Summary;

    // Every way of closing comes here.
    void done(int result) override;

  private:
    void LoadIdxedFolders();
    void AddIdxdFolders(const QString& path);
    void cmdRight_Click();
    void cmdAddNewFolder_Click();
    void cmdLeft_Click();
    void FoldersDropped(const QStringList& paths);
    void UpdateButtons();

    std::unique_ptr<Ui::FrmGestFolders> m_ui;
    QList<IndexedFolder> m_folders; // in the order of the list
    FolderChanges m_changes;
};

} // namespace velmora
