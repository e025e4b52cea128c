// The files of a folder as a table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/FolderFiles.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QIcon>

namespace velmora {

// Texts are made for the rows that are seen only, so that large folders cost little.
class FilesModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    using QAbstractTableModel::QAbstractTableModel;

    // Replaces all rows by those of a folder (logical path).
    void SetContent(const QString& folder, std::vector<FileRow> rows);

    [[nodiscard]] const FileRow& Row(int row) const {
        return m_rows.at(static_cast<std::size_t>(row));
    }
    // Logical path of the row's file.
    [[nodiscard]] QString Path(int row) const { return PathOf(m_folder, Row(row).name); }
    // The row of a name, the exact spelling first; -1 when there is none.
    [[nodiscard]] int RowOf(const QString& name) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

  private:
    [[nodiscard]] QVariant Text(const FileRow& row, int column) const;
    [[nodiscard]] QIcon IconOf(const FileRow& row) const;

    QString m_folder;
    std::vector<FileRow> m_rows;
    FileColumn m_sortColumn = FileColumn::Name;
    bool m_descending = false;
    mutable QHash<QString, QIcon> m_icons;
};

} // namespace velmora
