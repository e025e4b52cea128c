// The folder tree and the file list beside it, as one piece of the main window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "indexing/IndexedFolders.h"
#include "mainwindow/BrowserState.h"
#include "mainwindow/FileList.h"
#include "mainwindow/FolderHistory.h"

#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

class QContextMenuEvent;
class QKeyEvent;
class QLabel;
class QModelIndex;
class QPushButton;
class QSplitter;
class QStackedWidget;
class QVBoxLayout;

namespace platform {
class FolderWatch;
}

namespace velmora {

class FilesList;
class FilesModel;
class FolderReader;
class FoldersTree;
struct Listing;

// Paths are logical. Folders are read on other threads: what a call shows may arrive after it
// returns (IsLoading, Loaded); small folders of a local disk are there at once.
//   browser->RenameRequested = [&](auto& path, auto& name, bool folder) { return Rename(…); };
//   connect(browser, &Browser::SelectionChanged, this, &FrmMain::UpdateBars);
//   browser->InitializeTreeView();
class Browser : public QWidget {
    Q_OBJECT

  public:
    explicit Browser(QWidget* parent = nullptr);
    ~Browser() override;

    // Builds the tree from the list of indexed folders; the chosen folder stays so when it is
    // still there, else the first one is chosen.
    void InitializeTreeView();
    [[nodiscard]] bool HasFolders() const;
    // The chosen node's row of the list of indexed folders; nothing for any other node.
    [[nodiscard]] std::optional<IndexedFolder> CurrentIndexedFolder() const;

    // Fills the list for a folder, and the open level of the tree with it. The folder that is
    // shown already is read again only when forced; selection and scroll place then stay.
    void LoadlvwFiles(const QString& path, bool forceReload);
    // Reads the defined fields anew and rebuilds their columns.
    void CreateLVWColumns();
    // Reads the database's rows of the shown documents again, without reading the folder.
    void UpdateCurrentFileField();

    void SetPrevPath();
    void SetNextPath();
    void UpLevel();
    // Chooses the node of a folder, opening those above. False when it is not below an indexed
    // folder or not there.
    bool SelectFolder(const QString& path);
    // Shows a file or folder in the tree and the list; tells when it cannot be found.
    void FindElement(const QString& path);
    // Selects a row of the shown folder by its name, now or when the list is complete; with the
    // flag its name can be typed at once.
    void SelectFile(const QString& name, bool rename = false);
    // Starts the rename in the active pane. Nothing for the root, an indexed folder and no row.
    void StartLabelEdit();
    // Selects all rows (true) or turns the selection round (false).
    void SelectLvw(bool all);
    void InvertSelection() { SelectLvw(false); }

    [[nodiscard]] BrowserState State() const;
    // The rows and nodes that were cut are shown dimmed until the next call.
    void SetCut(const QStringList& paths);
    [[nodiscard]] int RowCount() const;
    // How many of the rows are folders.
    [[nodiscard]] int FolderCount() const;
    // A listing is under way; Loaded follows.
    [[nodiscard]] bool IsLoading() const;

    // Shows files from anywhere in place of the folder, with a column for their folders and the
    // button that leads back. What is gone is left out.
    void ShowFound(const QStringList& paths);
    // Ends the search mode and shows the folder from before; the root when that is gone.
    void CloseFilter();

    // Where the user's settings keep the splitter and the columns.
    void SaveState() const;
    void RestoreState();

    // Places for more of the main window: below the tree, and instead of the list while there are
    // no indexed folders.
    void SetBelowTree(QWidget* widget);
    void SetEmptyPage(QWidget* widget);

    // Renames a file or folder; false takes the typed name back. `newName` differs from the old
    // one; whether it is a valid name is for the callee to judge.
    std::function<bool(const QString& oldPath, const QString& newName, bool isFolder)>
        RenameRequested;

  Q_SIGNALS:
    // The selection of either pane, the active pane, the history or the mode.
    void SelectionChanged();
    // A context menu is wanted for the pane; `place` is global.
    void PopupRequested(QWidget* pane, const QPoint& place);
    // A double click or Enter on a document.
    void Opened(const QString& path);
    // Files were dropped on a folder: list.move tells whether they are to be moved there.
    void FilesDropped(const velmora::FileList& list, const QString& targetFolder);
    // A drag of these begins; emptied, it does not.
    void DragStarted(velmora::FileList& list);
    // Rows came or changed: the counts are no longer what they were.
    void RowsChanged();
    // The list is complete.
    void Loaded();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    // A row to be chosen as soon as it is there.
    struct Target {
        QString name;
        bool tell = false; // when it is not there at all
        bool rename = false;
        bool reloaded = false;
    };

    void BuildPanes();
    void BuildFilterBar(QVBoxLayout& layout);
    void ConnectPanes();
    void ConnectNames();
    [[nodiscard]] QList<QWidget*> Panes() const;
    void treFolders_NodeClick();
    void lvwFiles_DblClick(const QModelIndex& index);
    void cmdCloseFilter_Click() { CloseFilter(); }
    [[nodiscard]] bool SelectVisited(const QString& path);
    [[nodiscard]] bool HandleKey(const QKeyEvent& event);
    void AskForPopup(QWidget& pane, const QContextMenuEvent& event);

    // BrowserList.cpp
    void FollowChanges();
    void StopFollowing();
    void StartListing(bool keepRows, bool quiet);
    void SortList();
    void Reload();
    void TakeListing(const std::shared_ptr<Listing>& listing);
    void FinishListing(const Listing& listing);
    void FollowDisk(const Listing& listing);
    void FolderIsGone();
    void FolderIsRefused();
    void ResolveTarget();
    void AfterEdit();
    void ReadRecords();
    void ListChanged();
    void LeaveSearchMode();

    QSplitter* m_vsplitter = nullptr;
    FoldersTree* m_treFolders = nullptr;
    FilesList* m_lvwFiles = nullptr;
    FilesModel* m_files = nullptr;
    QWidget* m_picSearch = nullptr;
    QLabel* m_lblFound = nullptr;
    QPushButton* m_cmdCloseFilter = nullptr;
    QStackedWidget* m_pages = nullptr;
    QVBoxLayout* m_belowTree = nullptr;

    std::unique_ptr<FolderReader> m_reader;
    std::unique_ptr<platform::FolderWatch> m_watch;
    QTimer m_settle; // gathers changes of the disk
    QTimer m_poll;   // where the disk does not tell its changes
    FolderHistory m_history;
    QString m_folder;       // whose files the list holds; empty for the root
    QString m_watched;      // machine path
    QString m_previousPath; // of before the search mode
    QStringList m_foundPaths;
    Target m_target;
    bool m_building = false; // the tree is being filled
    bool m_searchMode = false;
    bool m_treeActive = false;
    bool m_keepRows = false;         // the present listing is compared with what is shown
    bool m_quiet = false;            // nobody asked for the present listing
    bool m_changedMeanwhile = false; // the disk told a change while it was under way
    bool m_failing = false;          // it failed, which is to be told in a moment
    bool m_waitsForEdit = false;     // a listing that came while a name was being edited
};

} // namespace velmora
