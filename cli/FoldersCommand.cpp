// velmora folders: the list of folders whose documents are indexed.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Commands.h"
#include "cli/Ending.h"
#include "cli/IndexProgress.h"
#include "cli/MessageIds.h"
#include "cli/Session.h"
#include "core/Messages.h"
#include "indexing/IndexedFolders.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"

#include <algorithm>
#include <optional>

namespace velmora {

namespace {

constexpr int kReplaceFolderTitle = 68;

int List(Output& output) {
    for (const IndexedFolder& folder : ListIndexedFolders()) {
        output.Line(platform::DisplayPath(folder.path));
    }
    return kDone;
}

// Adding what is listed or covered already is told, and leaves the others to be added.
int Add(const QByteArrayList& paths, Output& output) {
    // Who adds a folder that stands above listed ones wants it in their place.
    CommandDialogue dialogue(output, {GetMessage(kReplaceFolderTitle)});
    const ScopedDialogue askThere(dialogue);
    int code = kDone;
    for (const QByteArray& path : paths) {
        FolderChanges changes; // the next run of the index finds out by itself what is new
        if (AddIdxdFolders(LogicalPathOf(path), changes)) {
            output.Line(GetMessage(kFolderAdded, {MachinePathOf(path)}));
        } else {
            code = kIncomplete;
        }
    }
    return code;
}

// By the place it means on this machine, as a share may be listed by its network path.
std::optional<IndexedFolder> Listed(const QByteArray& path) {
    const QString machinePath = MachinePathOf(path);
    const QString logical = LogicalPathOf(path);
    for (const IndexedFolder& folder : ListIndexedFolders()) {
        if (platform::SamePath(folder.path, logical) ||
            platform::ToMachine(folder.path) == machinePath) {
            return folder;
        }
    }
    return std::nullopt;
}

// The documents leave the index first: if that fails the folder is still listed, and the command
// can be repeated.
int Remove(const QByteArrayList& paths, Output& output) {
    int code = kDone;
    for (const QByteArray& path : paths) {
        const auto folder = Listed(path);
        if (!folder) {
            output.Complain(GetMessage(kFolderNotListed, {MachinePathOf(path)}));
            code = kIncomplete;
            continue;
        }
        if (IndexExists()) {
            UpdateMembers members;
            members.FileOrFolderToAdd.emplace();
            members.FileOrFolderToRemove.emplace();
            members.FileOrFolderToRemove->Add(folder->path);
            RunUpdate(members, {}, output);
            if (members.Cancelled) {
                return kCancelled;
            }
            if (members.IndexReport.fault || members.IndexReport.aborted) {
                return kUnusable;
            }
        }
        FolderChanges changes;
        if (RemoveIdxdFolderUnasked(*folder, changes)) {
            output.Line(GetMessage(kFolderRemoved, {platform::DisplayPath(folder->path)}));
        }
    }
    return code;
}

} // namespace

int RunFolders(const Arguments& arguments, Output& output) {
    const QByteArray action = arguments.Operands().front();
    const QByteArrayList paths = arguments.Operands().mid(1);
    if (action != "list" && action != "add" && action != "remove") {
        throw UsageError{kUnknownCommand,
                         {QString::fromLatin1("folders ") + platform::DecodeName(action)}};
    }
    if (action == "list" && !paths.isEmpty()) {
        throw UsageError{kArgumentExtra, {platform::DecodeName(paths.front())}};
    }
    if (action != "list" && paths.isEmpty()) {
        throw UsageError{kArgumentMissing, {QString::fromLatin1("PATH")}};
    }
    if (std::any_of(paths.begin(), paths.end(), [](const auto& path) { return path.isEmpty(); })) {
        throw UsageError{kArgumentEmpty, {}};
    }
    OpenArchive(arguments);
    return action == "list"  ? List(output)
           : action == "add" ? Add(paths, output)
                             : Remove(paths, output);
}

} // namespace velmora
