// What the file list shows of a folder: its sub-folders and files, their sizes and dates.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/SystemError.h"

#include <QString>
#include <vector>

namespace velmora {

struct FileRow {
    QString name; // as spelled on the disk
    bool isFolder = false;
    qint64 size = 0;       // bytes; -1 when the system does not tell
    qint64 modifiedNs = 0; // nanoseconds since 1970 UTC
};

struct FolderContent {
    std::vector<FileRow> rows; // sub-folders first, each by name
    bool exists = true;
    platform::SystemError error; // when it could not be read as a whole
};

// Hidden names, and what is neither a file nor a folder, are left out. `folder`: logical path.
FolderContent ReadFolder(const QString& folder);

enum class FileColumn { Name, Size, Date };
// Sorts anew; sub-folders stay first. Names with numbers in them sort by the number.
void SortRows(std::vector<FileRow>& rows, FileColumn column, bool descending);

// Below 1000 bytes "n b", up to 1,000,000 "n Kb" with two places, above "n Mb".
QString SizeText(qint64 bytes);

// Logical path of a row's file in the spelling of the disk.
QString PathOf(const QString& folder, const QString& name);

} // namespace velmora
