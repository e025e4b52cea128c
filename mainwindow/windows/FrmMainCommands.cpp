// The commands of the main window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Dialogue.h"
#include "core/Failure.h"
#include "core/FileFunctions.h"
#include "core/Globals.h"
#include "core/Messages.h"
#include "core/windows/FrmSplash.h"
#include "core/windows/HelpKey.h"
#include "core/windows/frmQuickStart.h"
#include "indexing/IndexedFolders.h"
#include "indexing/MessageIds.h"
#include "indexing/windows/FrmGestFolders.h"
#include "indexing/windows/FrmUpdateIndex.h"
#include "mainwindow/MessageIds.h"
#include "mainwindow/UpdateFileIndex.h"
#include "mainwindow/windows/Browser.h"
#include "mainwindow/windows/FrmMain.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "platform/Power.h"
#include "search/windows/FrmSearchBuilder.h"
#include "search/windows/TextSearch.h"
#include "store/windows/FrmArchiveManagement.h"
#include "ui_FrmMain.h"

using namespace Qt::StringLiterals;

namespace velmora {

void FrmMain::MenuBar_ButtonClick(const QString& key) {
    using Action = std::function<void(FrmMain&)>;
    static const Action folders = [](FrmMain& form) { form.ShowFrmGestFolders(); };
    static const Action update = [](FrmMain& form) { form.RunUpdate(false); };
    static const Action launch = [](FrmMain& form) { form.ShellLaunchFile(false); };
    static const Action newFolder = [](FrmMain& form) { form.NewFolder(); };
    static const Action remove = [](FrmMain& form) { form.DeleteFileOrFolder(); };
    static const Action copy = [](FrmMain& form) { form.CopyToClipboard(false); };
    static const Action paste = [](FrmMain& form) { form.PasteClipboard(); };
    static const QHash<QString, Action> actions{
        {u"IDXEDFLD"_s, folders},
        {u"MNUIDXDFOLDERS"_s, folders},
        {u"BACK"_s, [](FrmMain& form) { form.m_browser->SetPrevPath(); }},
        {u"NEXT"_s, [](FrmMain& form) { form.m_browser->SetNextPath(); }},
        {u"UPLEVEL"_s, [](FrmMain& form) { form.m_browser->UpLevel(); }},
        {u"NEWFLD"_s, newFolder},
        {u"MNUNEWFLD"_s, newFolder},
        {u"DEL"_s, remove},
        {u"MNUDELETE"_s, remove},
        {u"COPY"_s, copy},
        {u"MNUCOPY"_s, copy},
        {u"MNUCUT"_s, [](FrmMain& form) { form.CopyToClipboard(true); }},
        {u"PASTE"_s, paste},
        {u"MNUPASTE"_s, paste},
        {u"MNURENAME"_s, [](FrmMain& form) { form.m_browser->StartLabelEdit(); }},
        {u"MNUSELECTALL"_s, [](FrmMain& form) { form.m_browser->SelectLvw(true); }},
        {u"MNUINVERTSELECTION"_s, [](FrmMain& form) { form.m_browser->SelectLvw(false); }},
        {u"MNUOPEN"_s, launch},
        {u"MNUOPENWITH"_s, [](FrmMain& form) { form.ShellLaunchFile(true); }},
        {u"SHELL"_s, launch},
        {u"UPDATEIDX"_s, update},
        {u"MNUREIDX"_s, update},
        {u"MNUREBUILD"_s, [](FrmMain& form) { form.RunUpdate(true); }},
        {u"MNUINDEXFILE"_s, [](FrmMain& form) { form.UpdateFileIndex(); }},
        {u"SEARCH"_s, [](FrmMain& form) { form.Search(); }},
        {u"MNUSEARCHINFOLDER"_s, [](FrmMain& form) { form.SearchInFolder(); }},
        {u"SEARCHBUILDER"_s,
         [](FrmMain& form) { FrmSearchBuilder(*form.m_ui->txtRicerca, &form).exec(); }},
        {u"MNUARCHIVEMANAGEMENT"_s, [](FrmMain& form) { FrmArchiveManagement(&form).exec(); }},
        {u"MNUFINDELEMENT"_s, [](FrmMain& form) { form.FindSelected(); }},
        {u"MNUFSTART"_s, [](FrmMain& form) { form.ShowFrmQuickStart(); }},
        {u"MNUHELP"_s, [](FrmMain& form) { SendHelpKey(form); }},
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
    Search(SelectedPath());
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
    host.CloseFilter = [this] { m_browser->CloseFilter(); };
    TextSearch(host, folder, m_ui->CHKMAIL->isChecked());
}

void FrmMain::FindSelected() {
    const QString path = SelectedPath();
    m_browser->CloseFilter();
    FindElement(path);
}

void FrmMain::ShellLaunchFile(bool openWith) {
    const QStringList paths = SelectedFiles().paths;
    if (openWith) {
        LaunchFile(paths, true);
    } else {
        m_operations.ShellLaunchFile(paths);
    }
}

void FrmMain::RunUpdate(bool rebuild) {
    FrmUpdateIndex window(this);
    window.ForceRecreate = rebuild;
    window.IndexMail = window.UpdateAll = true;
    // Not offered where it could not be kept.
    window.EnableAutoShutDown = platform::CanPowerOff();
    window.exec();
    Reload();
    ShowSummary(SummaryMessage(window));
    if (window.ShutDownPC && !window.Cancelled) {
        ShutDownPC(true);
    }
}

void FrmMain::UpdateFileIndex() {
    const FileSelection selection = SelectedFiles();
    const QString path = selection.paths.value(0);
    const bool isFile = !selection.fromTree && !platform::IsFolder(platform::ToMachine(path));
    FrmUpdateIndex window(this);
    window.FileOrFolderToAdd = velmora::UpdateFileIndex(path, isFile);
    window.exec();
    ShowSummary(SummaryMessage(window));
}

void FrmMain::cmdAddFolder_Click() {
    const QString path = BrowseForFolder(GetMessage(kChooseFolder));
    FolderChanges changes;
    if (path.isEmpty() || !AddIdxdFolders(path, changes)) {
        return;
    }
    InitializeTreeView();
    m_browser->SelectFolder(path);
    ShowSummary(RunFolderChanges(changes, this));
}

void FrmMain::cmdRemoveFolder_Click() {
    const auto folder = m_browser->CurrentIndexedFolder();
    FolderChanges changes;
    if (folder && RemoveIdxdFolders(*folder, changes)) {
        InitializeTreeView();
        ShowSummary(RunFolderChanges(changes, this));
    }
}

void FrmMain::ShowSummary(const QString& summary) {
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
    ShowSummary(window.Summary);
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
    const platform::SystemError refused = platform::PowerOff();
    if (!refused.Ok()) {
        // Nobody is in front of the machine; the log of the scheduler is where this is read.
        TextDialogue().Tell(GetMessage(kCannotSwitchOff) + u"\n"_s + refused.text, GetMessage(121),
                            Icon::Exclamation);
    }
}

void FrmMain::UnloadFrmMain() {
    close();
}

} // namespace velmora
