// Writes the add list and the remove list of a run.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/UpdateLists.h"

#include "core/CommonFunctions.h"
#include "core/Failure.h"
#include "core/FileFunctions.h"
#include "core/Globals.h"
#include "core/Messages.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "store/ModDb.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Behind a path: the folder with all that is below it.
const QString kWithSubfolders = u"<+>"_s;
// The mail client whose messages lie in a folder on the disk.
constexpr qint32 kStoreClient = 1;

bool FitsOnALine(const QString& path) {
    return !path.contains(u'\n') && !path.contains(u'\r');
}

bool IsFolder(const QString& path) {
    const QString machinePath = platform::ToMachine(path);
    return !machinePath.isEmpty() && platform::IsFolder(machinePath);
}

// False for a folder that is gone, not mounted or closed to this user.
bool CanBeListed(const QString& folder) {
    return IsFolder(folder) && platform::ListFolder(platform::ToMachine(folder)).error.Ok();
}

void AppendLines(const QString& listFile, const QStringList& lines) {
    // Its name is the program's own, so that Qt finds it; a full disk is told by flush.
    QFile file(platform::ToMachine(listFile));
    const QByteArray bytes =
        lines.isEmpty() ? QByteArray() : (lines.join(u"\r\n"_s) + u"\r\n"_s).toUtf8();
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append) || file.write(bytes) != bytes.size() ||
        !file.flush()) {
        throw Error(file.error(), file.fileName() + u": "_s + file.errorString());
    }
}

QStringList PartialLines(const UpdateMembers& members) {
    QStringList lines;
    if (members.FileOrFolderToAdd) {
        for (const QString& path : members.FileOrFolderToAdd->Items()) {
            lines << (IsFolder(path) ? path + kWithSubfolders : path);
        }
    }
    return lines;
}

QStringList FullLines() {
    const QString ocr = ArchiveIndexPath() + u"\\ocr"_s;
    // Without scanned documents it is not there yet. Where it cannot be made, neither can the
    // index, which tells so.
    (void)platform::CreateFolders(MachinePath(ocr));
    QStringList lines{ocr + kWithSubfolders};
    // A list that could not be read must not pass for an empty one: the index would be emptied.
    const RecordSetPtr rows = GetRsIdxdFolders();
    for (; !rows->EOF_(); rows->MoveNext()) {
        lines << rows->Fields(u"spath").Text() + kWithSubfolders;
    }
    return lines;
}

void AddMail(QStringList& lines, UpdateMembers& members, const MailConfig& mail) {
    if (!members.FileOrFolderToRemove) {
        members.FileOrFolderToRemove.emplace();
    }
    // What the last run wrote of the mail leaves the index before the mail is read anew.
    members.FileOrFolderToRemove->Add(gProgramPath() + u"\\OutlookMails\\"_s + Program().gUserKey);
    if (mail.iclient == kStoreClient) {
        lines << mail.smailpath + kWithSubfolders;
    }
}

[[nodiscard]] bool WriteAddList(UpdateLists& lists, UpdateMembers& members,
                                const MailConfig& mail) {
    QStringList lines;
    if (members.IndexMail && mail.configured) {
        AddMail(lines, members, mail);
    }
    if (members.ForceRecreate || members.UpdateAll) {
        lines << FullLines();
        lists.compress = true;
    } else {
        lines << PartialLines(members);
    }
    lines.removeIf([](const QString& line) { return !FitsOnALine(line); });
    if (!lists.add.Create()) {
        return false;
    }
    AppendLines(lists.add.Name(), lines);
    return true;
}

[[nodiscard]] bool WriteRemoveList(UpdateLists& lists, const UpdateMembers& members, bool create,
                                   UpdateView& view) {
    if (create || !members.FileOrFolderToRemove) {
        return true;
    }
    lists.compress = true;
    if (members.FileOrFolderToRemove->Count() == 0) {
        return true;
    }
    if (!lists.remove.Create()) {
        return false;
    }
    for (const QString& folder : members.FileOrFolderToRemove->Items()) {
        const bool allNamed = BuildFileListToDelete(folder, lists.remove.Name(), view);
        if (!allNamed || !CanBeListed(folder)) {
            lists.removeFolders << folder;
        }
    }
    return true;
}

} // namespace

ListFile& ListFile::operator=(ListFile&& other) noexcept {
    if (this != &other) {
        Remove();
        m_name = std::exchange(other.m_name, {});
    }
    return *this;
}

bool ListFile::Create() {
    m_name = GetTmpFileName();
    return !m_name.isEmpty();
}

void ListFile::Remove() {
    if (!m_name.isEmpty()) {
        (void)platform::RemoveFile(platform::ToMachine(m_name));
        m_name.clear();
    }
}

QString ArchiveIndexPath() {
    return platform::JoinPath(Program().gArchivePath, u"indexes\\"_s + Program().gUserKey);
}

MailConfig ReadMailConfig() {
    const RecordSetPtr rows = GetRsMailConfig();
    if (rows->EOF_()) {
        return {};
    }
    return {true, static_cast<qint32>(rows->Fields(u"iclient").Number()),
            rows->Fields(u"smailpath").Text()};
}

bool WriteLists(UpdateLists& lists, UpdateMembers& members, bool create, const MailConfig& mail,
                UpdateView& view) {
    return WriteAddList(lists, members, mail) && WriteRemoveList(lists, members, create, view);
}

bool BuildFileListToDelete(const QString& folder, const QString& listFile, UpdateView& view) {
    view.ShowStep(GetMessage(235));
    FoundFiles().clear();
    FindFilesAPI(folder, u"*.*"_s);
    QStringList found = std::exchange(FoundFiles(), {});
    if (found.isEmpty()) {
        return true;
    }
    const bool allNamed =
        found.removeIf([](const QString& path) { return !FitsOnALine(path); }) == 0;
    AppendLines(listFile, found);
    return allNamed;
}

} // namespace velmora
