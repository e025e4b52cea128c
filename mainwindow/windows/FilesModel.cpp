// The files of a folder, or files from anywhere, as a table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FilesModel.h"

#include "core/Messages.h"
#include "mainwindow/MessageIds.h"
#include "mainwindow/windows/FileIcons.h"
#include "platform/LogicalPath.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

FilesModel::FilesModel(QObject* parent)
    : QAbstractTableModel(parent), m_icons(std::make_unique<FileIcons>()) {}

FilesModel::~FilesModel() = default;

void FilesModel::SetFields(const QList<FieldColumn>& fields) {
    beginResetModel();
    m_fields = fields;
    m_plan.clear();
    for (int field = 0; field < fields.size(); ++field) {
        m_plan << ColumnPlan{field, false};
        if (fields[field].isDate) {
            m_plan << ColumnPlan{field, true};
        }
    }
    endResetModel();
}

bool FilesModel::IsHidden(int column) const {
    return column == SizeKey || column == DateKey || column == FolderColumn() ||
           (column >= FirstField && m_plan[column - FirstField].isKey);
}

void FilesModel::SetRows(FileRows rows) {
    m_rows = std::move(rows);
    m_folderCount = static_cast<int>(
        std::count_if(m_rows->begin(), m_rows->end(), [](const FileRow& r) { return r.isFolder; }));
}

void FilesModel::Clear(const QString& folder) {
    beginResetModel();
    m_folder = folder;
    m_records.reset();
    m_icons->Clear();
    SetRows(std::make_shared<const std::vector<FileRow>>());
    endResetModel();
}

void FilesModel::SetRecords(std::shared_ptr<const FolderRecords> records) {
    m_records = std::move(records);
    if (rowCount() > 0) {
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    }
}

void FilesModel::Take(const Listing& listing) {
    const bool comparable = listing.shown && listing.shown == m_rows;
    if (comparable && listing.sortOnly) {
        TakeOrder(listing);
    } else if (comparable && listing.changes) {
        TakeChanges(listing);
    } else if (!listing.sortOnly) {
        beginResetModel();
        SetRows(listing.rows);
        endResetModel();
    }
}

void FilesModel::TakeOrder(const Listing& listing) {
    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    SetRows(listing.rows);
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& old : before) {
        after << index(listing.newPlaces[static_cast<std::size_t>(old.row())], old.column());
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void FilesModel::TakeChanges(const Listing& listing) {
    const int lastColumn = columnCount() - 1;
    auto rows = std::make_shared<std::vector<FileRow>>(*m_rows);
    m_rows = rows;
    for (const RowChange& change : *listing.changes) {
        const int last = change.first + change.count - 1;
        const auto place = rows->begin() + change.first;
        const auto from = listing.rows->begin() + change.first;
        switch (change.kind) {
        case RowChange::Removed:
            beginRemoveRows({}, change.first, last);
            rows->erase(place, place + change.count);
            endRemoveRows();
            break;
        case RowChange::Inserted:
            beginInsertRows({}, change.first, last);
            rows->insert(place, from, from + change.count);
            endInsertRows();
            break;
        case RowChange::Changed:
            std::copy(from, from + change.count, place);
            Q_EMIT dataChanged(index(change.first, 0), index(last, lastColumn));
            break;
        }
    }
    SetRows(listing.rows);
}

void FilesModel::SetCut(const QSet<QString>& paths) {
    if (paths == m_cut) {
        return;
    }
    m_cut = paths;
    if (rowCount() > 0) {
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    }
}

void FilesModel::Rename(int row, const QString& name) {
    auto rows = std::make_shared<std::vector<FileRow>>(*m_rows);
    rows->at(static_cast<std::size_t>(row)).name = name;
    m_rows = std::move(rows);
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

QString FilesModel::Path(int row) const {
    const FileRow& file = Row(row);
    return PathOf(file.folder.isEmpty() ? m_folder : platform::ToLogical(file.folder), file.name);
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

FileOrder FilesModel::OrderOf(int column, Qt::SortOrder order) const {
    FileOrder wanted;
    wanted.descending = order == Qt::DescendingOrder;
    if (column == Size || column == SizeKey) {
        wanted.column = FileColumn::Size;
    } else if (column == Date || column == DateKey) {
        wanted.column = FileColumn::Date;
    } else if (column == FolderColumn()) {
        wanted.column = FileColumn::Folder;
    } else if (column >= FirstField) {
        wanted.column = FileColumn::Field;
        wanted.field = m_plan[column - FirstField].field;
    }
    return wanted;
}

int FilesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows->size());
}

int FilesModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : FirstField + static_cast<int>(m_plan.size()) + 1;
}

QString FilesModel::Text(const FileRow& row, int column) const {
    switch (column) {
    case Name:
        return row.name;
    case Size:
        return row.isFolder ? u"-"_s : SizeText(row.size);
    case SizeKey:
        return row.isFolder ? QString() : velmora::SizeKey(row.size);
    case Date:
        return DateText(row.modifiedNs);
    case DateKey:
        return velmora::DateKey(row.modifiedNs);
    default:
        break;
    }
    if (column == FolderColumn()) {
        return row.folder;
    }
    const ColumnPlan& plan = m_plan[column - FirstField];
    if (!m_records) {
        return {};
    }
    return plan.isKey ? m_records->Stored(row, plan.field) : m_records->Shown(row, plan.field);
}

QVariant FilesModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const FileRow& row = Row(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return Text(row, index.column());
    case Qt::EditRole:
        return row.name;
    case Qt::DecorationRole:
        return index.column() == Name
                   ? QVariant(m_icons->IconOf(row, m_records && m_records->HasOcr(row)))
                   : QVariant();
    case Qt::TextAlignmentRole:
        return index.column() == Size ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case PathRole:
        return Path(index.row());
    case TagRole:
        return row.isFolder ? u"F"_s : QString();
    case CutRole:
        return !m_cut.isEmpty() && m_cut.contains(Path(index.row()));
    default:
        return {};
    }
}

QString FilesModel::ColumnKey(int column) const {
    static const QStringList fixed{u"NAME"_s, u"SIZE"_s, u"SIZEKEY"_s, u"DATE"_s, u"DATEKEY"_s};
    if (column < FirstField) {
        return fixed[column];
    }
    if (column == FolderColumn()) {
        return u"FOLDER"_s;
    }
    const ColumnPlan& plan = m_plan[column - FirstField];
    return (plan.isKey ? u"ODT_"_s : QString()) + m_fields[plan.field].name;
}

QString FilesModel::Caption(int column) const {
    switch (column) {
    case Name:
        return GetMessage(192);
    case Size:
        return GetMessage(90);
    case Date:
        return GetMessage(1054);
    case SizeKey:
    case DateKey:
        return {};
    default:
        break;
    }
    if (column == FolderColumn()) {
        return GetMessage(kFolderColumn);
    }
    const ColumnPlan& plan = m_plan[column - FirstField];
    return plan.isKey ? ColumnKey(column) : m_fields[plan.field].caption;
}

QVariant FilesModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
        return Caption(section);
    case Qt::TextAlignmentRole:
        return section == Size ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                               : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    case KeyRole:
        return ColumnKey(section);
    case TagRole: {
        const bool isField = section >= FirstField && section != FolderColumn();
        return isField && !IsHidden(section) && m_fields[m_plan[section - FirstField].field].isDate
                   ? u"D"_s
                   : QString();
    }
    default:
        return {};
    }
}

Qt::ItemFlags FilesModel::flags(const QModelIndex& index) const {
    Qt::ItemFlags flags = QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren;
    if (index.isValid()) {
        flags |= Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled;
        flags.setFlag(Qt::ItemIsEditable, index.column() == Name);
    }
    return flags;
}

void FilesModel::sort(int column, Qt::SortOrder order) {
    const FileOrder wanted = OrderOf(std::clamp(column, 0, FolderColumn()), order);
    if (wanted != m_order) {
        m_order = wanted;
        Q_EMIT OrderWanted();
    }
}

} // namespace velmora
