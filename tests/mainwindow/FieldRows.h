// Rows of documents in the database: fields, their values, OCR.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "store/Schema.h"
#include "tests/indexing/IndexingFixture.h"

namespace velmora {

// A defined field and its column. Type 0 is text, 3 a date.
inline void AddField(const QString& name, const QString& caption, int type) {
    const RecordSetPtr rows = GetRsFields(0);
    rows->AddNew();
    rows->Fields(u"sfieldname").SetValue(name);
    rows->Fields(u"sdescr").SetValue(caption);
    rows->Fields(u"itype").SetValue(type);
    rows->Fields(u"suser").SetValue(Program().gUserKey);
    rows->UpdateBatch();
    OpenedConnection().AddColumn(QStringLiteral("tblDocFields"), {name, FieldType::Text, 50});
}

inline void AddDocumentRow(const RecordSetPtr& rows, const QString& folder, const QString& file) {
    rows->AddNew();
    rows->Fields(u"spath").SetValue(platform::Capitals(folder));
    rows->Fields(u"sfilename").SetValue(platform::Capitals(file));
    rows->Fields(u"suser").SetValue(Program().gUserKey);
}

inline void AddValues(const QString& folder, const QString& file,
                      const std::vector<std::pair<QString, QString>>& values) {
    const RecordSetPtr rows = GetRsFieldsValues({}, {});
    AddDocumentRow(rows, folder, file);
    for (const auto& [name, value] : values) {
        rows->Fields(name).SetValue(value);
    }
    rows->UpdateBatch();
}

inline void AddOcr(const QString& folder, const QString& file) {
    const RecordSetPtr rows = GetRsOcrFile({}, {});
    AddDocumentRow(rows, folder, file);
    rows->UpdateBatch();
}

} // namespace velmora
