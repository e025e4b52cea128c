// The folders whose documents belong to the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/IndexedFolders.h"

#include "core/Dialogue.h"
#include "core/Failure.h"
#include "core/Globals.h"
#include "core/Messages.h"
#include "indexing/LocalFolders.h"
#include "indexing/MessageIds.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "store/MessageIds.h"
#include "store/ModDb.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr auto kModule = "FrmGestFolders";

// Why a folder cannot be indexed at all; empty when it can.
QString Refusal(const QString& path) {
    const QString machinePath = platform::ToMachine(path);
    if (machinePath.isEmpty() || !platform::IsFolder(machinePath)) {
        return GetMessage(kFolderMissing, {platform::DisplayPath(path)});
    }
    // A list of paths, one a line, goes to the engine.
    return path.contains(u'\n') || path.contains(u'\r') ? GetMessage(kLineBreakInName) : QString();
}

QList<IndexedFolder> ReadRows() {
    QList<IndexedFolder> folders;
    const RecordSetPtr rows = GetRsIdxdFolders();
    for (; !rows->EOF_(); rows->MoveNext()) {
        folders.append({static_cast<qint32>(rows->Fields(u"i_id").Number()),
                        rows->Fields(u"spath").Text(), rows->Fields(u"sdescr").Text(),
                        rows->Fields(u"siconid").Text()});
    }
    return folders;
}

void WriteRow(const QString& path, const QString& description, const QString& iconId) {
    const RecordSetPtr rows = GetRsIdxdFolders();
    rows->AddNew();
    rows->Fields(u"sdescr").SetValue(description);
    rows->Fields(u"spath").SetValue(platform::Capitals(platform::WithoutBackslash(path)));
    rows->Fields(u"siconid").SetValue(iconId);
    rows->Fields(u"suser").SetValue(Program().gUserKey);
    rows->UpdateBatch();
}

// Clears the way for the folder; false when it does not go into the list. `replaced` tells whether
// folders below it are to leave the list.
bool SettleCollision(const QString& path, bool& replaced) {
    FolderCollision collision;
    if (!Attempt(kModule, "AddIdxdFolders", [&] { collision = CollisionOf(path); })) {
        return false;
    }
    switch (collision.relation) {
    case FolderCollision::IsChild:
        Tell(GetMessage(200), GetMessage(134), Icon::Critical);
        return false;
    case FolderCollision::IsSame:
        Tell(GetMessage(165), GetMessage(40), Icon::Critical);
        return false;
    case FolderCollision::IsParent:
        replaced = Ask(GetMessage(164), GetMessage(68), Icon::Question) == Answer::Yes;
        return replaced;
    case FolderCollision::None:
        break;
    }
    return true;
}

// What was to be added below a folder comes with it, and goes with it if that is taken back.
void ForgetBelow(const QString& folder, PathDictionary& paths) {
    const QString below = platform::Capitals(platform::WithBackslash(folder));
    for (const QString& path : QStringList(paths.Items())) {
        if (path.startsWith(below)) {
            (void)paths.Remove(path);
        }
    }
}

} // namespace

QList<IndexedFolder> ListIndexedFolders() {
    return Guard(kModule, "LoadIdxedFolders", [] { return ReadRows(); });
}

FolderCollision CollisionOf(const QString& path) {
    FolderCollision collision;
    const RecordSetPtr rows = GetRsIdxdFolders();
    collision.relation = static_cast<FolderCollision::Relation>(
        IsParentOrChildFolder(path, *rows, collision.folder));
    return collision;
}

bool AddIdxdFolderRow(const QString& path, const QString& description, const QString& iconId) {
    return Attempt(kModule, "AddIdxdFolders", [&] { WriteRow(path, description, iconId); });
}

bool AddIdxdFolders(const QString& path, FolderChanges& changes) {
    const QString folder = platform::WithoutBackslash(path);
    if (const QString refusal = Refusal(folder); !refusal.isEmpty()) {
        Tell(refusal, GetMessage(134), Icon::Critical);
        return false;
    }
    bool replaced = false;
    if (!SettleCollision(folder, replaced)) {
        return false;
    }
    const LocalFolder described = DescribeFolder(folder);
    // The closing back-slash spares a neighbour that begins with the same letters.
    const bool added = Attempt(kModule, "AddIdxdFolders", [&] {
        OpenedConnection().InTransaction([&] {
            if (replaced) {
                DeleteFolders(platform::WithBackslash(folder), 0);
            }
            WriteRow(folder, described.text, described.kind);
        });
    });
    if (added && replaced) {
        ForgetBelow(folder, changes.add);
    }
    if (added && !changes.remove.Remove(folder)) {
        changes.add.Add(folder);
    }
    return added;
}

bool RemoveIdxdFolders(const IndexedFolder& folder, FolderChanges& changes) {
    const QString question =
        GetMessage(265) + folder.description + GetMessage(kQuoteAndQuestionMark);
    return Ask(question, GetMessage(67), Icon::Question) == Answer::Yes &&
           RemoveIdxdFolderUnasked(folder, changes);
}

bool RemoveIdxdFolderUnasked(const IndexedFolder& folder, FolderChanges& changes) {
    DeleteFolders(folder.path, folder.id);
    // The statement reports its failures itself; whether it went well is seen in the table.
    QList<IndexedFolder> left;
    const bool read = Attempt(kModule, "cmdLeft_Click", [&] { left = ReadRows(); });
    const bool stays = std::any_of(left.cbegin(), left.cend(),
                                   [&](const IndexedFolder& each) { return each.id == folder.id; });
    if (!read || stays) {
        return false;
    }
    if (!changes.add.Remove(folder.path)) {
        changes.remove.Add(folder.path);
    }
    return true;
}

} // namespace velmora
