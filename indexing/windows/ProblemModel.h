// Documents that could not be read, as a table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/IndexJob.h"

#include <QAbstractTableModel>
#include <vector>

namespace velmora {

// Words the reasons only for the rows that are seen.
class ProblemModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column { File, State, Reason, Folder, ColumnCount };

    explicit ProblemModel(std::vector<engine::Problem> problems, QObject* parent = nullptr)
        : QAbstractTableModel(parent), m_problems(std::move(problems)) {}

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // A line a document: whole path, state, reason, parted by tabs.
    QString AsText() const;

  private:
    QString Text(int row, int column) const;

    std::vector<engine::Problem> m_problems;
};

} // namespace velmora
