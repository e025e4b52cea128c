// What the person does to files and folders in the main window, with the rows of the database in
// step: new folder, rename, delete, copy, cut, paste, drag and drop, open.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
// Paths are logical, names in the spelling of the disk. Everything is told and asked through
// core/Dialogue.h and the ShellView. An operation comes back when it is over and lets events run
// meanwhile; a second one begun in between does nothing.
#pragma once

#include "core/ShellOperation.h"
#include "mainwindow/CommandState.h"
#include "mainwindow/FileList.h"

namespace velmora {

// What is selected in the pane that has the focus.
struct FileSelection {
    bool fromTree = false;
    NodeKind node = NodeKind::Below; // of the tree, when it is the one
    QStringList paths;
};

// Where cut and copied files are kept.
class FileClipboard {
  public:
    virtual ~FileClipboard() = default;
    // What FromMimeData reads there; quick.
    [[nodiscard]] virtual FileList Read(QStringList* foreign = nullptr) const = 0;
    virtual void Write(const FileList& list) = 0; // an empty list empties it
};

struct OperationOutcome {
    bool done = false;   // something changed: read the list again
    QStringList removed; // are no longer where they were
    QStringList added;   // are new, as named: to be selected
    QStringList reload;  // folders whose tree nodes have to be read again
};

class FileOperations {
  public:
    // Both must outlive this object.
    FileOperations(ShellView& view, FileClipboard& clipboard)
        : m_view(view), m_clipboard(clipboard) {}

    // An operation is under way: the program must not close.
    [[nodiscard]] bool IsBusy() const { return m_busy; }

    // Makes a folder of a free name below `parent`; its path, empty when refused (told).
    QString NewFolder(const QString& parent);

    OperationOutcome DeleteFileOrFolder(const FileSelection& selection);

    // Puts the selection on the clipboard. False when refused (told) or when there is nothing to
    // copy. `cut`: pasting will move.
    bool CopyToClipboard(const FileSelection& selection, bool cut);
    // Files of this computer are on the clipboard.
    [[nodiscard]] bool ClipboardFull() const;
    // The paths that were cut here or elsewhere: shown dimmed.
    [[nodiscard]] QStringList CutPaths() const;
    OperationOutcome PasteClipboard(const QString& folder);

    // A drop onto a folder; `onRoot`: onto the tree's topmost node, which takes nothing.
    OperationOutcome Drop(const FileList& files, const QString& folder, bool onRoot = false);
    // Whether a drop could be taken; for the pointer during a drag.
    [[nodiscard]] static bool CanDrop(const FileList& files, const QString& folder);

    // The ends of a label edit; false: the old name stays. `newName` is the name alone, as typed.
    bool lvwFiles_AfterLabelEdit(const QString& path, const QString& newName);
    bool treFolders_AfterLabelEdit(const QString& path, const QString& newName);

    // Opens each with the desktop's program.
    void ShellLaunchFile(const QStringList& paths) const;

  private:
    OperationOutcome Bring(const FileList& files, const QString& folder);
    bool Rename(const QString& path, const QString& newName, bool isFolder);

    ShellView& m_view;
    FileClipboard& m_clipboard;
    bool m_busy = false;
};

} // namespace velmora
