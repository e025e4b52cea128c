// The commands of the main window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Dialogue.h"
#include "core/Failure.h"
#include "core/FileFunctions.h"
#include "core/Globals.h"
#include "core/Messages.h"
#include "core/windows/FrmSplash.h"
#include "core/windows/frmQuickStart.h"
#include "indexing/IndexedFolders.h"
#include "indexing/MessageIds.h"
#include "indexing/windows/FrmGestFolders.h"
#include "indexing/windows/FrmUpdateIndex.h"
#include "mainwindow/MessageIds.h"
#include "mainwindow/UpdateFileIndex.h"
#include "mainwindow/windows/FrmMain.h"
#include "search/windows/TextSearch.h"
#include "ui_FrmMain.h"

using namespace Qt::StringLiterals;

namespace velmora {

void FrmMain::MenuBar_ButtonClick(const QString& key) {
    using Action = std::function<void(FrmMain&)>;
    static const Action folders = [](FrmMain& form) { form.ShowFrmGestFolders(); };
    static const Action update = [](FrmMain& form) { form.RunUpdate(false); };
    static const Action launch = [](FrmMain& form) { form.ShellLaunchFile(); };
    static const QHash<QString, Action> actions{
        {u"IDXEDFLD"_s, folders},
        {u"MNUIDXDFOLDERS"_s, folders},
        {u"UPDATEIDX"_s, update},
        {u"MNUREIDX"_s, update},
        {u"MNUREBUILD"_s, [](FrmMain& form) { form.RunUpdate(true); }},
        {u"MNUINDEXFILE"_s, [](FrmMain& form) { form.UpdateFileIndex(); }},
        {u"MNUOPEN"_s, launch},
        {u"SHELL"_s, launch},
        {u"UPLEVEL"_s, [](FrmMain& form) { form.UpLevel(); }},
        {u"SEARCH"_s, [](FrmMain& form) { form.Search(); }},
        {u"MNUSEARCHINFOLDER"_s, [](FrmMain& form) { form.SearchInFolder(); }},
        {u"MNUFSTART"_s, [](FrmMain& form) { form.ShowFrmQuickStart(); }},
        {u"MNUABOUT"_s, [](FrmMain& form) { FrmSplash(FrmSplash::Use::AboutBox, &form).exec(); }},
        {u"MNUEXIT"_s, [](FrmMain& form) { form.close(); }},
    };
    if (const auto action = actions.constFind(key); action != actions.constEnd()) {
        Guard("FrmMain", "MenuBar_ButtonClick", [&] { (*action)(*this); });
    }
}

void FrmMain::Search() {
    const Hourglass busy;
    Search({});
}

void FrmMain::SearchInFolder() {
    Search(CurrentSelection().Path());
}

void FrmMain::Search(const QString& folder) {
    if (m_ui->txtRicerca->text().isEmpty()) {
        Tell(GetMessage(277), GetMessage(82), Icon::Exclamation);
        m_ui->txtRicerca->setFocus();
        return;
    }
    TextSearchHost host;
    host.window = this;
    host.txtRicerca = m_ui->txtRicerca;
    host.Synonyms = m_ui->chkSinonimi->isChecked();
    host.FindElement = [this](const QString& path) { FindElement(path); };
    TextSearch(host, folder, m_ui->CHKMAIL->isChecked());
}

void FrmMain::UpLevel() {
    QTreeWidgetItem* node = m_ui->treFolders->currentItem();
    if (node && node->parent() && node->parent()->parent()) {
        m_ui->treFolders->setCurrentItem(node->parent());
    }
}

void FrmMain::ShellLaunchFile() {
    const QString path = CurrentSelection().Path();
    if (!path.isEmpty()) {
        LaunchFile(QStringList{path});
    }
}

void FrmMain::RunUpdate(bool rebuild) {
    FrmUpdateIndex window(this);
    window.ForceRecreate = rebuild;
    // EnableAutoShutDown stays off as long as ShutDownPC cannot keep what the box promises.
    window.IndexMail = window.UpdateAll = true;
    window.exec();
    LoadlvwFiles(m_ui->treFolders->CurrentPath(), true);
    statusBar()->showMessage(SummaryMessage(window));
}

void FrmMain::UpdateFileIndex() {
    FrmUpdateIndex window(this);
    window.FileOrFolderToAdd = velmora::UpdateFileIndex(
        CurrentSelection().Path(), CurrentSelection().filesActive && !CurrentSelection().itemIsFolder);
    window.exec();
    statusBar()->showMessage(SummaryMessage(window));
}

void FrmMain::cmdAddFolder_Click() {
    const QString path = BrowseForFolder(GetMessage(kChooseFolder));
    FolderChanges changes;
    if (path.isEmpty() || !AddIdxdFolders(path, changes)) {
        return;
    }
    InitializeTreeView();
    m_ui->treFolders->SelectPath(path);
    FoldersChanged(RunFolderChanges(changes, this));
}

void FrmMain::cmdRemoveFolder_Click() {
    const auto folder = m_ui->treFolders->CurrentIndexedFolder();
    FolderChanges changes;
    if (folder && RemoveIdxdFolders(*folder, changes)) {
        InitializeTreeView();
        FoldersChanged(RunFolderChanges(changes, this));
    }
}

void FrmMain::FoldersChanged(const QString& summary) {
    if (!summary.isEmpty()) {
        statusBar()->showMessage(summary);
    }
}

void FrmMain::AddIndexedFolder(const QString& path, const QString& description,
                               const QString& iconId) {
    (void)AddIdxdFolderRow(path, description, iconId);
}

void FrmMain::ShowFrmGestFolders() {
    FrmGestFolders window(this);
    window.exec();
    InitializeTreeView();
    FoldersChanged(window.Summary);
}

void FrmMain::ShowFrmQuickStart() {
    frmQuickStart(this).exec();
}

bool FrmMain::RunUnattendedUpdate(bool tickShutDown) {
    FrmUpdateIndex window(this);
    window.IndexMail = window.UpdateAll = true;
    if (tickShutDown) {
        window.TickAutoShutDown();
    }
    window.exec();
    return window.Cancelled;
}

void FrmMain::ShutDownPC(bool) {
    // Nobody is in front of the machine; the log of the scheduler is where this is read.
    TextDialogue().Tell(GetMessage(kCannotSwitchOff), GetMessage(121), Icon::Exclamation);
}

void FrmMain::UnloadFrmMain() {
    close();
}

} // namespace velmora
