// The progress window of an index update; it starts itself when it is shown.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "indexing/IndexedFolders.h"
#include "indexing/TimeLeft.h"
#include "indexing/UpdateIndex.h"

#include <QDialog>
#include <QElapsedTimer>
#include <memory>

namespace Ui {
class FrmUpdateIndex;
}

namespace velmora {

// Set the public members, call exec(), read Cancelled, ShutDownPC and IndexReport:
//   FrmUpdateIndex window(this);
//   window.UpdateAll = true;
//   window.exec();
// The window goes away by itself, but for documents that could not be read: it then stays to list
// them until it is closed, and offers to try them again, which is another run over the same, and
// all others of the index. In an unattended run, after a cancel, and when the machine is to be
// switched off it never stays. With OnlyLedger it lists what is not read in the whole index, and
// runs only when the person wants to try again.
class FrmUpdateIndex : public QDialog, public UpdateMembers, private UpdateView {
    Q_OBJECT

  public:
    explicit FrmUpdateIndex(QWidget* parent = nullptr);
    ~FrmUpdateIndex() override;

    bool OnlyLedger = false; // in

    // Ticks chkAutoShutDown before the window is shown.
    void TickAutoShutDown();

    // Escape and the title bar's button: a cancel while it runs, else the window closes.
    void reject() override;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void Form_Load();
    void tmrStartIdx_Timer();
    void cmdAnnulla_Click();
    void chkAutoShutDown_Click();
    void cmdCopyList_Click();
    void cmdRetry_Click();
    void cmdLedger_Click();
    void SetRunning(bool running);
    void ShowProblems();
    void List(std::vector<engine::Problem> problems, int heading);
    void ShowTimeLeft();

    void ShowStep(const QString& text) override;
    void SetTotalProgress(int percent) override;
    void SetFileProgress(int percent) override;
    int LogLength() const override;
    void EmptyLog() override;
    void AppendLog(const QString& text) override;

    std::unique_ptr<Ui::FrmUpdateIndex> m_ui;
    QTimer* m_tmrStartIdx;
    QTimer* m_tmrTimeLeft;
    QElapsedTimer m_clock; // since the window was made
    TimeLeft m_timeLeft;
    std::optional<PathDictionary> m_added;  // in the last run
    std::unique_ptr<UpdateStatus> m_status; // from the showing of the window to the run's end
};

// Brings the index in step with a changed list of folders, and answers the run's summary; empty
// when there was nothing to do.
QString RunFolderChanges(const FolderChanges& changes, QWidget* parent);

} // namespace velmora
