// The main window: bars, search box, the indexed folders and their files.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Activation.h"
#include "mainwindow/CommandState.h"
#include "mainwindow/FileOperations.h"

#include <QHash>
#include <QMainWindow>
#include <QTimer>
#include <memory>

class QAction;
class QToolBar;

namespace Ui {
class FrmMain;
}

namespace velmora {

class Browser;
class DesktopClipboard;
class FileShellWindows;
struct BrowserState;

class FrmMain : public QMainWindow, private ActivationHost {
    Q_OBJECT

  public:
    explicit FrmMain(QWidget* parent = nullptr);
    ~FrmMain() override;

    // Every command arrives here by its key, from menu, tool bar, pop-up menu or key. An unknown
    // key does nothing.
    void MenuBar_ButtonClick(const QString& key);

    // Shows a file or folder (logical path) in the tree and the list.
    void FindElement(const QString& path);

  protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool event(QEvent* event) override;

  private:
    // Bars.
    void PrepareBars();
    void PrepareSearchBar();
    void FillBar(QWidget& bar, const QString& name);
    [[nodiscard]] QAction* CommandAction(const QString& key);
    void UpdateBars();
    void ShowPopup(const QPoint& place);

    // Panes.
    void PrepareBrowser();
    [[nodiscard]] CommandContext Context(const BrowserState& state) const;
    [[nodiscard]] FileSelection SelectedFiles() const;
    // What a command that takes one path works on; empty for none.
    [[nodiscard]] QString SelectedPath() const;
    void ShowCounts();
    void Reload();

    // Commands.
    void Search();
    void SearchInFolder();
    void FindSelected();
    void Search(const QString& folder);
    void ShellLaunchFile(bool openWith);
    void RunUpdate(bool rebuild);
    void UpdateFileIndex();
    void cmdAddFolder_Click();
    void cmdRemoveFolder_Click();
    void ShowSummary(const QString& summary);

    // File operations.
    void NewFolder();
    void DeleteFileOrFolder();
    void CopyToClipboard(bool cut);
    void PasteClipboard();
    bool Rename(const QString& path, const QString& newName);
    void Drop(const FileList& list, const QString& folder);
    void ShowOutcome(const OperationOutcome& outcome);

    void Form_Activate();
    void RestorePlace();
    void SavePlace();

    // ActivationHost.
    void AddIndexedFolder(const QString& path, const QString& description,
                          const QString& iconId) override;
    void ShowFrmGestFolders() override;
    void InitializeTreeView() override;
    void ShowFrmQuickStart() override;
    bool RunUnattendedUpdate(bool tickShutDown) override;
    void ShutDownPC(bool force) override;
    void UnloadFrmMain() override;

    std::unique_ptr<Ui::FrmMain> m_ui;
    QHash<QString, QAction*> m_actions;
    QToolBar* m_navBar = nullptr;
    Browser* m_browser;
    std::unique_ptr<FileShellWindows> m_shell;
    std::unique_ptr<DesktopClipboard> m_clipboard;
    FileOperations m_operations;
    QTimer m_tmrsetfocus{this};
    ActivationState m_activation;
};

} // namespace velmora
