// The result list as a table of four columns.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "search/ResultSet.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QIcon>

namespace velmora {

// Columns from 0: date, file, hits, path.
class ResultModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    // The result set must outlive the model.
    explicit ResultModel(ResultSet& results, QObject* parent = nullptr);

    // Fills the table with the documents of a class.
    void LoadResult(TypeFilter filter);
    // A click on a head; column from 0. False: the column does not sort.
    bool grdResult_ColumnClick(int column);
    // Null when there is no such row.
    [[nodiscard]] const ResultRow* Row(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

  private:
    [[nodiscard]] QVariant Text(const ResultRow& row, int column) const;
    [[nodiscard]] const QIcon& Icon(const ResultRow& row) const;

    ResultSet& m_results;
    mutable QHash<QString, QIcon> m_icons; // by ending
};

} // namespace velmora
