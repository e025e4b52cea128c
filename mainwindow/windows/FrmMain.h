// The main window: bars, search box, the indexed folders and their files.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Activation.h"
#include "mainwindow/CommandState.h"
#include "mainwindow/Commands.h"

#include <QHash>
#include <QMainWindow>
#include <QTimer>
#include <memory>

class QAction;
class QMenu;
class QToolBar;

namespace Ui {
class FrmMain;
}

namespace velmora {

class FilesModel;

// What the panes have selected.
struct Selection {
    bool filesActive = false;     // else the folder tree
    QString folder;               // logical path of the tree's node; empty for the root or none
    bool isIndexedFolder = false; // the node stands in the list of indexed folders
    QString item; // logical path of the selected row of the file list; empty for none
    bool itemIsFolder = false;
    [[nodiscard]] QString Path() const { return filesActive && !item.isEmpty() ? item : folder; }
};

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
    void ShowPopup(QWidget& pane, const QPoint& place);

    // Panes.
    void PreparePanes();
    [[nodiscard]] Selection CurrentSelection() const;
    void treFolders_NodeClick();
    void lvwFiles_DblClick(const QModelIndex& index);
    void LoadlvwFiles(const QString& path, bool forceReload);
    void ShowCounts();

    // Commands.
    void Search();
    void SearchInFolder();
    void Search(const QString& folder);
    void UpLevel();
    void ShellLaunchFile();
    void RunUpdate(bool rebuild);
    void UpdateFileIndex();
    void cmdAddFolder_Click();
    void cmdRemoveFolder_Click();
    void FoldersChanged(const QString& summary);

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
    FilesModel* m_files;
    QTimer m_tmrsetfocus{this};
    QString m_folder; // whose files the list holds
    ActivationState m_activation;
};

} // namespace velmora
