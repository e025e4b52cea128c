// The files of a folder as a table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FilesModel.h"

#include "core/Messages.h"
#include "resources/icons/Icons.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace velmora {

void FilesModel::SetContent(const QString& folder, std::vector<FileRow> rows) {
    beginResetModel();
    m_folder = folder;
    m_rows = std::move(rows);
    if (m_sortColumn != FileColumn::Name || m_descending) {
        SortRows(m_rows, m_sortColumn, m_descending);
    }
    endResetModel();
}

int FilesModel::RowOf(const QString& name) const {
    int found = -1;
    for (int row = 0; row < rowCount(); ++row) {
        if (Row(row).name == name) {
            return row;
        }
        if (found < 0 && Row(row).name.compare(name, Qt::CaseInsensitive) == 0) {
            found = row;
        }
    }
    return found;
}

int FilesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int FilesModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 3;
}

QVariant FilesModel::Text(const FileRow& row, int column) const {
    switch (static_cast<FileColumn>(column)) {
    case FileColumn::Name:
        return row.name;
    case FileColumn::Size:
        return row.isFolder ? u"-"_s : SizeText(row.size);
    case FileColumn::Date:
        break;
    }
    const QDateTime date = QDateTime::fromMSecsSinceEpoch(row.modifiedNs / 1'000'000);
    return row.modifiedNs == 0 ? QString() : QLocale::system().toString(date, QLocale::ShortFormat);
}

QIcon FilesModel::IconOf(const FileRow& row) const {
    const QString name = row.isFolder ? u"folder"_s : IconOfFile(row.name);
    auto icon = m_icons.find(name);
    if (icon == m_icons.end()) {
        icon = m_icons.insert(name, LineIcon(name));
    }
    return *icon;
}

QVariant FilesModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const FileRow& row = Row(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return Text(row, index.column());
    case Qt::DecorationRole:
        return index.column() == 0 ? QVariant(IconOf(row)) : QVariant();
    case Qt::TextAlignmentRole:
        return index.column() == static_cast<int>(FileColumn::Size)
                   ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                   : QVariant();
    default:
        return {};
    }
}

QVariant FilesModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role == Qt::TextAlignmentRole && section == static_cast<int>(FileColumn::Size)) {
        return QVariant(Qt::AlignRight | Qt::AlignVCenter);
    }
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    constexpr int kHeadings[] = {192, 90, 1054};
    return GetMessage(kHeadings[section]);
}

void FilesModel::sort(int column, Qt::SortOrder order) {
    Q_EMIT layoutAboutToBeChanged();
    QStringList selected;
    const QModelIndexList before = persistentIndexList();
    for (const QModelIndex& index : before) {
        selected << Row(index.row()).name;
    }
    m_sortColumn = static_cast<FileColumn>(std::max(column, 0));
    m_descending = order == Qt::DescendingOrder;
    SortRows(m_rows, m_sortColumn, m_descending);
    QModelIndexList after;
    for (qsizetype at = 0; at < before.size(); ++at) {
        after << index(RowOf(selected[at]), before[at].column());
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged();
}

} // namespace velmora
