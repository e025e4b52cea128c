// Reads tblocrfiles once and answers from memory.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/OcrDocuments.h"

#include "core/Settings.h"
#include "platform/LogicalPath.h"
#include "store/ModDb.h"

namespace velmora {

OcrDocuments::OcrDocuments() {
    RecordSetPtr rows = GetRsOcrFile({}, {});
    if (!rows) {
        return; // the failure has been reported
    }
    for (; !rows->EOF_(); rows->MoveNext()) {
        m_names.insert(
            rows->Fields(u"i_id").Number(),
            platform::JoinPath(rows->Fields(u"spath").Text(), rows->Fields(u"sfilename").Text()));
    }
}

QString OcrDocuments::GetFileNameByOcrFile(const QString& ocrFileName) const {
    const QString folder = platform::FileName(platform::ParentFolder(ocrFileName));
    return m_names.value(NumericValue(folder));
}

bool IsInScope(const QString& documentName, const QString& scope) {
    return scope.isEmpty() || platform::Capitals(documentName + u'\\')
                                  .startsWith(platform::Capitals(platform::WithBackslash(scope)));
}

} // namespace velmora
