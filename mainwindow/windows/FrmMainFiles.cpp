// The file operations of the main window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Failure.h"
#include "mainwindow/windows/Browser.h"
#include "mainwindow/windows/FrmMain.h"
#include "platform/LogicalPath.h"

namespace velmora {

void FrmMain::NewFolder() {
    const QString folder = m_operations.NewFolder(m_browser->State().folder);
    if (!folder.isEmpty()) {
        Reload();
        m_browser->SelectFile(platform::FileName(folder), true);
    }
}

void FrmMain::DeleteFileOrFolder() {
    const FileSelection selection = SelectedFiles();
    const OperationOutcome outcome = m_operations.DeleteFileOrFolder(selection);
    if (outcome.done && selection.fromTree) {
        m_browser->SelectFolder(platform::ParentFolder(selection.paths.value(0)));
    }
    ShowOutcome(outcome);
}

void FrmMain::CopyToClipboard(bool cut) {
    if (m_operations.CopyToClipboard(SelectedFiles(), cut)) {
        m_browser->SetCut(m_operations.CutPaths());
    }
    UpdateBars();
}

void FrmMain::PasteClipboard() {
    ShowOutcome(m_operations.PasteClipboard(m_browser->State().folder));
    m_browser->SetCut(m_operations.CutPaths());
}

bool FrmMain::Rename(const QString& path, const QString& newName) {
    return Guard("FrmMain", "AfterLabelEdit", [&] {
        return m_browser->State().treeActive ? m_operations.treFolders_AfterLabelEdit(path, newName)
                                             : m_operations.lvwFiles_AfterLabelEdit(path, newName);
    });
}

void FrmMain::Drop(const FileList& list, const QString& folder) {
    Guard("FrmMain", "OLEDragDrop", [&] { ShowOutcome(m_operations.Drop(list, folder)); });
}

void FrmMain::ShowOutcome(const OperationOutcome& outcome) {
    if (!outcome.done) {
        return;
    }
    Reload();
    if (!outcome.added.isEmpty()) {
        m_browser->SelectFile(platform::FileName(outcome.added.front()));
    }
    UpdateBars();
}

} // namespace velmora
