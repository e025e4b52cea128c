// The files of a folder, or files from anywhere, as a table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/FolderReader.h"
#include "mainwindow/FolderRecords.h"

#include <QAbstractTableModel>
#include <QSet>

namespace velmora {

class FileIcons;

// Columns in order: the five below, one for each field with a hidden one behind each date field,
// and at the end the folder, of use for rows from anywhere. Texts are made for the rows that are
// seen only, so that large folders cost little.
class FilesModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column { Name, Size, SizeKey, Date, DateKey, FirstField };
    enum Role {
        // Of a row: its logical path, "F" for a folder, whether it was cut. Of a column: "D" for a
        // date field, its lasting name ("NAME", a field's name, "ODT_" + a field's name).
        PathRole = Qt::UserRole,
        TagRole,
        CutRole,
        KeyRole
    };

    explicit FilesModel(QObject* parent = nullptr);
    ~FilesModel() override;

    void SetFields(const QList<FieldColumn>& fields);
    [[nodiscard]] const QList<FieldColumn>& Fields() const { return m_fields; }
    // Whether a column is a sort key or the folder's, which are not for the eye.
    [[nodiscard]] bool IsHidden(int column) const;
    [[nodiscard]] int FolderColumn() const { return columnCount() - 1; }

    // Empties the table for another folder (logical path, empty for rows from anywhere).
    void Clear(const QString& folder);
    // The folder as it is spelled on the disk, once it is known.
    void SetFolder(const QString& folder) { m_folder = folder; }
    [[nodiscard]] const QString& Folder() const { return m_folder; }
    void SetRecords(std::shared_ptr<const FolderRecords> records);
    [[nodiscard]] const std::shared_ptr<const FolderRecords>& Records() const { return m_records; }
    // Shows these rows: a few changes one by one, so that selection and scroll place stay, else all
    // anew. Rows that were sorted from those shown change their places only.
    void Take(const Listing& listing);
    void SetCut(const QSet<QString>& paths);
    // Another name until the folder is read again; the row stays where it is.
    void Rename(int row, const QString& name);

    [[nodiscard]] const FileRows& Rows() const { return m_rows; }
    [[nodiscard]] const FileRow& Row(int row) const {
        return m_rows->at(static_cast<std::size_t>(row));
    }
    // Logical path of the row's file.
    [[nodiscard]] QString Path(int row) const;
    // The row of a name, the exact spelling first; -1 when there is none.
    [[nodiscard]] int RowOf(const QString& name) const;
    [[nodiscard]] int FolderCount() const { return m_folderCount; }

    // What a click on the column's heading sorts by: a size, date or date field by its key.
    [[nodiscard]] FileOrder OrderOf(int column, Qt::SortOrder order) const;
    [[nodiscard]] const FileOrder& Order() const { return m_order; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Only notes the order and asks for it: large folders are sorted on another thread.
    void sort(int column, Qt::SortOrder order) override;

  Q_SIGNALS:
    void OrderWanted();

  private:
    struct ColumnPlan {
        int field = -1; // into m_fields
        bool isKey = false;
    };
    [[nodiscard]] QString Text(const FileRow& row, int column) const;
    [[nodiscard]] QString ColumnKey(int column) const;
    [[nodiscard]] QString Caption(int column) const;
    void TakeChanges(const Listing& listing);
    void TakeOrder(const Listing& listing);
    void SetRows(FileRows rows);

    QString m_folder;
    FileRows m_rows = std::make_shared<const std::vector<FileRow>>();
    int m_folderCount = 0;
    QList<FieldColumn> m_fields;
    QList<ColumnPlan> m_plan; // of the columns from FirstField on, without the folder's
    std::shared_ptr<const FolderRecords> m_records;
    FileOrder m_order;
    QSet<QString> m_cut;
    std::unique_ptr<FileIcons> m_icons;
};

} // namespace velmora
