// What the database tells about the documents of the file list: OCR and the values of the fields.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/FolderFiles.h"
#include "store/RecordSet.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <memory>

namespace velmora {

// A user-defined field as a column of the list.
struct FieldColumn {
    QString name; // in capitals
    QString caption;
    bool isDate = false;

    bool operator==(const FieldColumn&) const = default;
};

// The fields of the user in the order of their definition; none, after a report, when they cannot
// be read.
QList<FieldColumn> ReadFieldColumns();

// The rows of one folder, or of all folders of the user, read in two queries. Never changes
// afterwards, so that sorting may look at it on another thread.
class FolderRecords {
  public:
    // `folder`: logical path; empty for all folders.
    static std::shared_ptr<const FolderRecords> Read(const QString& folder,
                                                     const QList<FieldColumn>& columns);

    [[nodiscard]] bool HasOcr(const FileRow& row) const;
    // The value of a field (from 0) as it is stored: a date in eight digits. Empty for none.
    [[nodiscard]] QString Stored(const FileRow& row, int field) const;
    // The same as the list shows it: a date in the form of the user's system.
    [[nodiscard]] QString Shown(const FileRow& row, int field) const;
    // What the list sorts a field by.
    [[nodiscard]] QString SortText(const FileRow& row, int field) const {
        return Stored(row, field);
    }

  private:
    [[nodiscard]] QString Key(const FileRow& row) const;
    [[nodiscard]] QString Key(RecordSet& rows) const;
    void ReadValues(RecordSet& rows);

    bool m_allFolders = false;
    QList<FieldColumn> m_columns;
    QSet<QString> m_ocr;
    QHash<QString, QStringList> m_values;
};

} // namespace velmora
