// What the file list shows of a folder: its sub-folders and files, their sizes and dates.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/SystemError.h"

#include <QString>
#include <functional>
#include <vector>

namespace platform {
struct FileStatus;
}

namespace velmora {

struct FileRow {
    QString name; // as spelled on the disk
    bool isFolder = false;
    qint64 size = 0;       // bytes; -1 when the system does not tell
    qint64 modifiedNs = 0; // nanoseconds since 1970 UTC
    bool isProgram = false;
    QString folder = {}; // machine path; only of rows that come from anywhere

    bool operator==(const FileRow&) const = default;
};

FileRow RowOf(const QString& name, const platform::FileStatus& status);
// Hidden names, and what is neither a file nor a folder, are not shown.
bool IsShown(const QString& name, const platform::FileStatus& status);

struct FolderContent {
    std::vector<FileRow> rows; // sub-folders first, each by name
    bool exists = true;
    platform::SystemError error; // when it could not be read as a whole
};

// `folder`: logical path.
FolderContent ReadFolder(const QString& folder);
// The rows in the order of the disk. `goOn` is asked after each row and may show what is there so
// far; false ends the reading. `folder`: machine path.
FolderContent ReadRows(const QString& folder,
                       const std::function<bool(const std::vector<FileRow>&)>& goOn);

// Below 1000 bytes "n b", up to 1,000,000 "n Kb" with two places, above "n Mb".
QString SizeText(qint64 bytes);
// Twenty digits, so that texts sort as the numbers do; empty when the size is not known.
QString SizeKey(qint64 bytes);
// Date and time in the forms of the user's system.
QString DateText(qint64 modifiedNs);
// Year, month, day, hour, minute and second, each of at least two digits.
QString DateKey(qint64 modifiedNs);

// Logical path of a row's file in the spelling of the disk.
QString PathOf(const QString& folder, const QString& name);

} // namespace velmora
