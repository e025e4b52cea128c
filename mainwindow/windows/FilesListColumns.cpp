// The columns of the file list: which are shown, how wide, in which order.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FilesList.h"
#include "mainwindow/windows/FilesModel.h"

#include <QHeaderView>
#include <QScopedValueRollback>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kMinimumName = 180;
constexpr int kFolderWidth = 260;

QString KeyOf(const FilesModel& model, int column) {
    return model.headerData(column, Qt::Horizontal, FilesModel::KeyRole).toString();
}

// Wide enough for the heading and what usually stands below it.
int UsualWidth(const FilesList& list, const FilesModel& model, int column) {
    const QFontMetrics metrics(list.font());
    const auto wide = [&](const QString& text) { return metrics.horizontalAdvance(text) + 34; };
    const QString heading = model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
    const int marked = wide(heading) + 16; // with the arrow of the sorting
    switch (column) {
    case FilesModel::Name:
        return 300;
    case FilesModel::Size:
        return std::max(marked, wide(u"0000,00 Mb"_s));
    case FilesModel::Date:
        return std::max(marked, wide(DateText(1'700'000'000'000'000'000)));
    default:
        return column == model.FolderColumn() ? kFolderWidth
                                              : std::clamp(marked, wide(u"00/00/0000"_s), 240);
    }
}

} // namespace

void FilesList::ShowColumns(bool withFolder) {
    m_withFolder = withFolder;
    PlaceColumns();
}

void FilesList::PlaceColumns() {
    const QScopedValueRollback placing(m_placing, true);
    QHeaderView& head = *header();
    std::vector<std::pair<int, int>> wanted; // visual place, column
    for (int column = 0; column < m_model.columnCount(); ++column) {
        const bool isFolder = column == m_model.FolderColumn();
        setColumnHidden(column, isFolder ? !m_withFolder : m_model.IsHidden(column));
        const ColumnPlace place = m_places.value(KeyOf(m_model, column));
        const int width = place.width > 0 ? place.width : UsualWidth(*this, m_model, column);
        if (!isColumnHidden(column)) {
            head.resizeSection(column, width);
        }
        // Where nothing was chosen the folder stands beside the name, all else in order.
        const int usual = isFolder ? FilesModel::Name : column;
        wanted.emplace_back(place.visual >= 0 ? place.visual : usual, column);
    }
    std::stable_sort(wanted.begin(), wanted.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (int visual = 0; visual < static_cast<int>(wanted.size()); ++visual) {
        const int column = wanted[static_cast<std::size_t>(visual)].second;
        head.moveSection(head.visualIndex(column), visual);
        if (!m_sortKey.isEmpty() && KeyOf(m_model, column) == m_sortKey.section(u'/', 0, 0)) {
            sortByColumn(column,
                         m_sortKey.endsWith(u"/D") ? Qt::DescendingOrder : Qt::AscendingOrder);
        }
    }
    m_sortKey.clear();
    FillWidth();
}

// Notes what the person has done to the columns before they are made anew.
void FilesList::KeepColumns() {
    for (int column = 0; column < m_model.columnCount() && column < header()->count(); ++column) {
        ColumnPlace& place = m_places[KeyOf(m_model, column)];
        // A hidden column goes where it usually stands: nobody has put it anywhere.
        place.visual = isColumnHidden(column) ? -1 : header()->visualIndex(column);
        if (m_ownWidths && !isColumnHidden(column)) {
            place.width = columnWidth(column);
        }
    }
}

void FilesList::FillWidth() {
    if (m_ownWidths || m_placing || !isVisible()) {
        return;
    }
    const QScopedValueRollback placing(m_placing, true);
    int others = 0;
    for (int column = 1; column < m_model.columnCount(); ++column) {
        others += isColumnHidden(column) ? 0 : columnWidth(column);
    }
    header()->resizeSection(0, std::max(kMinimumName, viewport()->width() - others));
}

QString FilesList::ColumnState() {
    KeepColumns();
    QStringList parts;
    for (auto place = m_places.cbegin(); place != m_places.cend(); ++place) {
        parts << u"%1:%2:%3"_s.arg(place.key()).arg(place->width).arg(place->visual);
    }
    const int sorted = header()->sortIndicatorSection();
    const bool descending = header()->sortIndicatorOrder() == Qt::DescendingOrder;
    return parts.join(u';') + u'|' + KeyOf(m_model, sorted) + (descending ? u"/D"_s : u"/A"_s);
}

void FilesList::SetColumnState(const QString& state) {
    m_places.clear();
    for (const QString& part : state.section(u'|', 0, 0).split(u';', Qt::SkipEmptyParts)) {
        const ColumnPlace place{std::clamp(part.section(u':', 1, 1).toInt(), 0, 4000),
                                part.section(u':', 2, 2).toInt()};
        m_places[part.section(u':', 0, 0)] = place;
        m_ownWidths = m_ownWidths || place.width > 0;
    }
    m_sortKey = state.section(u'|', 1);
    PlaceColumns();
}

} // namespace velmora
