// The folders of this machine.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/LocalFolders.h"

#include "core/Messages.h"
#include "indexing/MessageIds.h"
#include "platform/Drives.h"
#include "platform/Files.h"
#include "platform/Folders.h"
#include "platform/LogicalPath.h"

#include <QCollator>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

LocalFolder NodeOf(const platform::Drive& drive) {
    const QString label = drive.path == u"/" ? GetMessage(kFileSystem) : drive.label;
    return {(drive.network ? kNetworkDisk : kDisk).toString(), label + u" ("_s + drive.path + u')',
            drive.path};
}

} // namespace

QList<LocalFolder> LocalRoots() {
    return {
        {kDesktop.toString(), GetMessage(85), platform::SpecialFolder(platform::kDesktopFolder)},
        {kDocuments.toString(), GetMessage(92),
         platform::SpecialFolder(platform::kDocumentsFolder)},
        {kMyComputer.toString(), GetMessage(244), {}}};
}

QList<LocalFolder> LocalDrives() {
    QList<LocalFolder> nodes;
    for (const platform::Drive& drive : platform::CurrentDrives()) {
        nodes.append(NodeOf(drive));
    }
    return nodes;
}

Subfolders ReadSubfolders(const QString& path) {
    const platform::FolderListing listing = platform::ListFolder(path);
    Subfolders found;
    found.refused = !listing.error.Ok();
    for (const platform::FolderEntry& entry : listing.entries) {
        if (entry.IsFolder() && !entry.name.startsWith(u'.')) {
            const QString folder = (path == u"/" ? QString() : path) + u'/' + entry.name;
            found.folders.append({kFolder.toString(), entry.name, folder});
        }
    }
    QCollator byName;
    byName.setNumericMode(true);
    byName.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(found.folders.begin(), found.folders.end(),
              [&](const LocalFolder& a, const LocalFolder& b) {
                  return byName.compare(a.text, b.text) < 0;
              });
    return found;
}

LocalFolder DescribeFolder(const QString& path) {
    const auto isThis = [&](const LocalFolder& folder) {
        return !folder.path.isEmpty() && platform::SamePath(platform::ToLogical(folder.path), path);
    };
    for (const LocalFolder& folder : LocalDrives() + LocalRoots()) {
        if (isThis(folder)) {
            return folder;
        }
    }
    const QString shown = platform::DisplayPath(path);
    const QString name = path.startsWith(u"\\\\") ? path : shown.section(u'/', -1);
    return {kFolder.toString(), name.isEmpty() ? shown : name, shown};
}

} // namespace velmora
