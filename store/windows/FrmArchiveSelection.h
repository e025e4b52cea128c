// The question at the start: which archive to work on.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QStringList>
#include <memory>

namespace Ui {
class FrmArchiveSelection;
}

namespace velmora {

// Show it with exec(), then read Cancelled and ArchivePath.
class FrmArchiveSelection : public QDialog {
    Q_OBJECT

  public:
    explicit FrmArchiveSelection(QWidget* parent = nullptr);
    ~FrmArchiveSelection() override;

    // Index 0 is the empty text and stands for the default archive; the others are logical paths.
    QStringList ArchivePaths;
    // Out: the chosen one; empty for the default archive.
    QString ArchivePath;
    // Out: no archive was chosen. The button, Escape and the title bar's button do that.
    bool Cancelled = false;

    void reject() override;

  private:
    void ReadArchives();
    void cmdok_Click();

    std::unique_ptr<Ui::FrmArchiveSelection> m_ui;
};

} // namespace velmora
