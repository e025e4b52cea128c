// Documents that could not be read, as a table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/windows/ProblemModel.h"

#include "core/Messages.h"
#include "indexing/EngineWords.h"
#include "indexing/MessageIds.h"
#include "indexing/UnreadDocuments.h"

namespace velmora {

int ProblemModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_problems.size());
}

int ProblemModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QString ProblemModel::Text(int row, int column) const {
    const engine::Problem& problem = m_problems[static_cast<std::size_t>(row)];
    switch (column) {
    case File:
        return PlaceOf(problem).name;
    case Folder:
        return PlaceOf(problem).folder;
    case State:
        return StateMessage(problem.state);
    default:
        return ReasonMessage(problem.reason);
    }
}

QVariant ProblemModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) {
        return {};
    }
    const QString text = Text(index.row(), index.column());
    // A tool tip that may hold a file's name must not be taken for HTML.
    return role == Qt::ToolTipRole ? text.toHtmlEscaped() : text;
}

QVariant ProblemModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    constexpr int kHeadings[] = {106, kStateHeading, kReasonHeading, kFolderHeading};
    return GetMessage(kHeadings[section]);
}

QString ProblemModel::AsText() const {
    QString text;
    for (int row = 0; row < rowCount(); ++row) {
        text += m_problems[static_cast<std::size_t>(row)].file + u'\t' + Text(row, State) + u'\t' +
                Text(row, Reason) + u'\n';
    }
    return text;
}

} // namespace velmora
