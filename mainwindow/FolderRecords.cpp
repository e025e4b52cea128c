// Reads the database's rows of the documents in a folder.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/FolderRecords.h"

#include "core/CommonFunctions.h"
#include "core/Failure.h"
#include "platform/LogicalPath.h"
#include "store/ModDb.h"

#include <QDate>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr qlonglong kDateField = 3; // itype

} // namespace

QList<FieldColumn> ReadFieldColumns() {
    return Guard("FolderRecords", "ReadFieldColumns", [] {
        QList<FieldColumn> columns;
        const RecordSetPtr fields = GetRsFields(0);
        for (; fields && !fields->EOF_(); fields->MoveNext()) {
            columns << FieldColumn{platform::Capitals(fields->Fields(u"sfieldname").Text()),
                                   fields->Fields(u"sdescr").Text(),
                                   fields->Fields(u"itype").Number() == kDateField};
        }
        return columns;
    });
}

std::shared_ptr<const FolderRecords> FolderRecords::Read(const QString& folder,
                                                         const QList<FieldColumn>& columns) {
    return Guard("FolderRecords", "Read", [&] {
        auto records = std::make_shared<FolderRecords>();
        records->m_allFolders = folder.isEmpty();
        records->m_columns = columns;
        const QString path = platform::Capitals(folder);
        const RecordSetPtr scanned = GetRsOcrFile(path, {});
        for (; scanned && !scanned->EOF_(); scanned->MoveNext()) {
            records->m_ocr.insert(records->Key(*scanned));
        }
        if (!columns.isEmpty()) {
            if (const RecordSetPtr values = GetRsFieldsValues(path, {})) {
                records->ReadValues(*values);
            }
        }
        return records;
    });
}

void FolderRecords::ReadValues(RecordSet& rows) {
    for (; !rows.EOF_(); rows.MoveNext()) {
        QStringList& values = m_values[Key(rows)];
        values.clear();
        for (const FieldColumn& column : m_columns) {
            // A definition whose column could not be made has no values. Null and "" differ: only
            // a document whose date was emptied shows the empty mask.
            const bool isNull = !rows.HasField(column.name) || rows.Fields(column.name).IsNull();
            const QString text = isNull ? QString() : rows.Fields(column.name).Text();
            values << (isNull || !text.isNull() ? text : u""_s);
        }
    }
}

QString FolderRecords::Key(RecordSet& rows) const {
    const QString name = platform::Capitals(rows.Fields(u"sfilename").Text());
    return m_allFolders ? platform::JoinPath(platform::Capitals(rows.Fields(u"spath").Text()), name)
                        : name;
}

QString FolderRecords::Key(const FileRow& row) const {
    const QString folder = m_allFolders ? platform::ToLogical(row.folder) : QString();
    return platform::Capitals(PathOf(folder, row.name));
}

bool FolderRecords::HasOcr(const FileRow& row) const {
    return !row.isFolder && !m_ocr.isEmpty() && m_ocr.contains(Key(row));
}

QString FolderRecords::Stored(const FileRow& row, int field) const {
    if (row.isFolder || m_values.isEmpty()) {
        return {};
    }
    return m_values.value(Key(row)).value(field);
}

QString FolderRecords::Shown(const FileRow& row, int field) const {
    const QString stored = Stored(row, field);
    // What somebody else wrote and is no date is shown as it is: a report for each row of a folder
    // would lock the person out of it.
    const bool isDate = m_columns.value(field).isDate && !stored.isNull() &&
                        (stored.isEmpty() || QDate::fromString(stored, u"yyyyMMdd").isValid());
    return isDate ? UnFrmtDateDb(stored) : stored;
}

} // namespace velmora
