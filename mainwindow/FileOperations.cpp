// What the person does to files and folders in the main window, with the database in step.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/FileOperations.h"

#include "core/Dialogue.h"
#include "core/Failure.h"
#include "core/FileFunctions.h"
#include "core/Messages.h"
#include "mainwindow/FileMessageIds.h"
#include "mainwindow/FolderFiles.h"
#include "platform/Copy.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "store/ModDb.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr qsizetype kMostTold = 10; // lines of a list in a message

class Busy {
  public:
    explicit Busy(bool& busy) : m_busy(busy) { m_busy = true; }
    ~Busy() { m_busy = false; }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

  private:
    bool& m_busy;
};

QString Lines(const QStringList& names) {
    QString text = names.mid(0, kMostTold).join(u'\n');
    return names.size() > kMostTold ? text + u"\n…"_s : text;
}

void TellPassedOver(const ShellResult& result) {
    if (!result.passedOver.isEmpty()) {
        Tell(GetMessage(kPassedOver, {Lines(result.passedOver)}), GetMessage(99),
             Icon::Exclamation);
    }
}

// A move would take an indexed folder away from under the index.
bool HasIndexedFolder(const QStringList& paths) {
    const RecordSetPtr folders = GetRsIdxdFolders();
    return folders && std::any_of(paths.begin(), paths.end(), [&](const QString& path) {
               for (folders->MoveFirst(); !folders->EOF_(); folders->MoveNext()) {
                   const QString indexed = platform::WithBackslash(
                       platform::Capitals(folders->Fields(u"SPATH").Text()));
                   if (indexed.startsWith(platform::WithBackslash(platform::Capitals(path)))) {
                       return true;
                   }
               }
               return false;
           });
}

} // namespace

QString FileOperations::NewFolder(const QString& parent) {
    return Guard("FrmMain", "NewFolder", [&] {
        for (int counter = 1;; ++counter) {
            const QString name =
                counter == 1 ? GetMessage(202) : GetMessage(203) + QString::number(counter) + u')';
            const QString path = platform::JoinPath(parent, name);
            const QString machine = platform::ToMachine(path); // in any case: rows know no other
            if (!machine.isEmpty() && platform::Exists(machine)) {
                continue;
            }
            // Not closed to others as a copy is while it grows: the user's mask decides.
            const platform::SystemError error = machine.isEmpty()
                                                    ? platform::SystemError::Of(ENOENT)
                                                    : platform::MakeFolder(machine, 0777);
            if (error.Ok()) {
                return path;
            }
            if (error.code != EEXIST) {
                Tell(GetMessage(330), GetMessage(99), Icon::Critical);
                return QString();
            }
        }
    });
}

OperationOutcome FileOperations::DeleteFileOrFolder(const FileSelection& selection) {
    OperationOutcome outcome;
    if (m_busy || selection.paths.isEmpty() ||
        (selection.fromTree && selection.node == NodeKind::Root)) {
        return outcome;
    }
    if (selection.fromTree && selection.node == NodeKind::Indexed) {
        Tell(GetMessage(139), GetMessage(98), Icon::Exclamation);
        return outcome;
    }
    const Busy busy(m_busy);
    const ShellResult result = DeleteFile(selection.paths, &m_view);
    // The rows of what is gone stay: the verification clears them, and an undone deletion finds
    // its fields and annotations again.
    for (const ShellResult::Item& item : result.done) {
        outcome.removed << item.from;
    }
    outcome.done = !result.done.empty() || !result.cancelled;
    return outcome;
}

bool FileOperations::CopyToClipboard(const FileSelection& selection, bool cut) {
    if (selection.paths.isEmpty() || (selection.fromTree && selection.node == NodeKind::Root)) {
        return false;
    }
    if (selection.fromTree && selection.node == NodeKind::Indexed) {
        // The title speaks of deleting; it has always done so.
        Tell(GetMessage(137), GetMessage(98), Icon::Exclamation);
        return false;
    }
    m_clipboard.Write({selection.paths, cut});
    return true;
}

bool FileOperations::ClipboardFull() const {
    return !m_clipboard.Read().IsEmpty();
}

QStringList FileOperations::CutPaths() const {
    const FileList list = m_clipboard.Read();
    return list.move ? list.paths : QStringList();
}

OperationOutcome FileOperations::PasteClipboard(const QString& folder) {
    if (m_busy) {
        return {};
    }
    QStringList foreign;
    const FileList list = m_clipboard.Read(&foreign);
    if (!foreign.isEmpty()) {
        Tell(GetMessage(kForeignFiles, {Lines(foreign)}), GetMessage(99), Icon::Exclamation);
    }
    if (list.IsEmpty()) {
        return {};
    }
    const OperationOutcome outcome = Bring(list, folder);
    if (list.move && outcome.done) {
        // What has moved is no longer where the list says; the rest can be pasted once more.
        FileList left{{}, true};
        std::copy_if(list.paths.begin(), list.paths.end(), std::back_inserter(left.paths),
                     [&](const QString& path) { return !outcome.removed.contains(path); });
        m_clipboard.Write(left);
    }
    return outcome;
}

bool FileOperations::CanDrop(const FileList& files, const QString& folder) {
    const QString target = platform::ToMachine(folder);
    if (files.IsEmpty() || target.isEmpty() || !platform::IsFolder(target)) {
        return false;
    }
    return std::none_of(files.paths.begin(), files.paths.end(), [&](const QString& path) {
        return platform::IsWithin(target, platform::ToMachineAsSpelled(path));
    });
}

OperationOutcome FileOperations::Drop(const FileList& files, const QString& folder, bool onRoot) {
    if (m_busy || files.IsEmpty()) {
        return {};
    }
    return Bring(files, onRoot ? QString() : folder);
}

OperationOutcome FileOperations::Bring(const FileList& files, const QString& folder) {
    OperationOutcome outcome;
    if (folder.isEmpty() || !CanDrop(files, folder) ||
        (files.move && HasIndexedFolder(files.paths))) {
        Tell(GetMessage(135), GetMessage(119), Icon::Exclamation);
        return outcome;
    }
    const Busy busy(m_busy);
    const ShellResult result = files.move ? MoveFile(files.paths, folder, &m_view)
                                          : Copyfile(files.paths, folder, &m_view);
    for (const ShellResult::Item& item : result.done) {
        if (files.move) {
            // Documents reached through a link to a folder have their rows under the link.
            const bool isFolder =
                item.isFolder || platform::IsFolder(platform::ToMachineAsSpelled(item.to));
            DbMoveFile(item.from, item.to, isFolder);
            outcome.removed << item.from;
            outcome.reload << platform::ParentFolder(item.from);
        }
        outcome.added << item.to;
    }
    TellPassedOver(result);
    outcome.reload << folder;
    outcome.reload.removeDuplicates();
    outcome.done = true; // even a cancelled one may have left something
    return outcome;
}

bool FileOperations::lvwFiles_AfterLabelEdit(const QString& path, const QString& newName) {
    return Rename(path, newName, platform::IsFolder(platform::ToMachineAsSpelled(path)));
}

bool FileOperations::treFolders_AfterLabelEdit(const QString& path, const QString& newName) {
    return Rename(path, newName, true);
}

bool FileOperations::Rename(const QString& path, const QString& newName, bool isFolder) {
    const bool isDots = newName == u"." || newName == u"..";
    if (IsValidFileName(newName) || newName.trimmed().isEmpty() || isDots) {
        Tell(GetMessage(194), GetMessage(99), Icon::Exclamation);
        return false;
    }
    const QString newPath = PathOf(platform::ParentFolder(path), newName);
    if (m_busy || !RenameFile(path, newPath)) {
        return false;
    }
    DbMoveFile(path, newPath, isFolder);
    return true;
}

void FileOperations::ShellLaunchFile(const QStringList& paths) const {
    for (const QString& path : paths) {
        if (platform::Exists(platform::ToMachineAsSpelled(path))) {
            LaunchFile(QStringList(path));
        } else {
            Tell(GetMessage(1064), GetMessage(99), Icon::Exclamation);
        }
    }
}

} // namespace velmora
