// The folders of this machine as a tree to choose from, and what a folder is called in lists.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

namespace velmora {

// Kinds of folders: keys of tree nodes and, but for the first, icons of indexed folders.
inline constexpr QStringView kMyComputer = u"MYCMP";
inline constexpr QStringView kDesktop = u"DSK";
inline constexpr QStringView kDocuments = u"DOCS";
inline constexpr QStringView kDisk = u"HDD";
inline constexpr QStringView kNetworkDisk = u"NETHDD";
inline constexpr QStringView kFolder = u"FLDCL";

struct LocalFolder {
    QString kind;
    QString text; // shown
    QString path; // machine path; empty for the computer itself
};

// Desktop, documents, the computer. Those below the computer are its drives.
QList<LocalFolder> LocalRoots();
QList<LocalFolder> LocalDrives();

struct Subfolders {
    QList<LocalFolder> folders; // in the order of names, without hidden ones
    bool refused = false;       // the folder cannot be read, or not to its end
};
// The folders directly in one (machine path). May be called on any thread, and takes as long as
// the disk takes.
Subfolders ReadSubfolders(const QString& path);

// How the list of indexed folders shows a folder (logical path): its kind and what it is called.
LocalFolder DescribeFolder(const QString& path);

} // namespace velmora
