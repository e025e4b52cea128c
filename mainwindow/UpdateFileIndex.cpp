// What of a selection is brought up to date in the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/UpdateFileIndex.h"

#include "indexing/UpdateLists.h"
#include "platform/LogicalPath.h"
#include "store/ModDb.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Empty for a document without a row. A hundred rows share a folder.
QString OcrFolderOf(const QString& document) {
    const RecordSetPtr rows =
        GetRsOcrFile(platform::ParentFolder(document), platform::FileName(document));
    if (rows->EOF_()) {
        return {};
    }
    const qlonglong id = rows->Fields(u"i_id").Number();
    return platform::JoinPath(ArchiveIndexPath(), u"ocr\\%1\\%2"_s.arg(id / 100 + 1).arg(id));
}

} // namespace

PathDictionary UpdateFileIndex(const QString& path, bool isFile) {
    PathDictionary paths;
    if (isFile && platform::Capitals(path).endsWith(u".TIF")) {
        if (const QString ocr = OcrFolderOf(path); !ocr.isEmpty()) {
            paths.Add(ocr);
        }
    } else if (!path.isEmpty()) {
        paths.Add(path);
    }
    return paths;
}

} // namespace velmora
