// Loading and sorting of the result list.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/ResultSet.h"

#include "core/Messages.h"

#include <QCollator>
#include <QLocale>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kLastSortingColumn = 3;

QCollator NamesInOrder() {
    static constexpr QLocale::Language kLanguages[] = {
        QLocale::Italian, QLocale::English, QLocale::German, QLocale::Spanish, QLocale::French};
    QCollator collator(QLocale(kLanguages[static_cast<int>(CurrentLanguage())]));
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    collator.setNumericMode(true); // page 9 before page 10
    return collator;
}

int CompareDates(const ResultRow& a, const ResultRow& b) {
    if (a.DATETOSORT != b.DATETOSORT) {
        return a.DATETOSORT < b.DATETOSORT ? -1 : 1;
    }
    return a.DATE < b.DATE ? -1 : b.DATE < a.DATE ? 1 : 0; // of one day: by the hour
}

} // namespace

void SortRows(std::vector<ResultRow>& rows, GridColumn column, SortOrder order) {
    const QCollator names = NamesInOrder();
    const auto compare = [&](const ResultRow& a, const ResultRow& b) {
        switch (column) {
        case GridColumn::DATE:
        case GridColumn::DATETOSORT:
            return CompareDates(a, b);
        case GridColumn::FILEDESCR:
            return names.compare(a.FILEDESCR, b.FILEDESCR);
        case GridColumn::HITCOUNT:
            return a.HITCOUNT < b.HITCOUNT ? -1 : a.HITCOUNT > b.HITCOUNT ? 1 : 0;
        case GridColumn::PATH:
            return names.compare(a.PATH, b.PATH);
        }
        return 0;
    };
    std::sort(rows.begin(), rows.end(), [&](const ResultRow& a, const ResultRow& b) {
        const int way = order == SortOrder::Ascending ? compare(a, b) : compare(b, a);
        return way != 0 ? way < 0 : a.position < b.position;
    });
}

ResultSet::ResultSet(engine::SearchResults results, const QString& folder)
    : m_results(std::move(results)), m_folder(folder) {}

void ResultSet::LoadResult(TypeFilter filter) {
    const ResultScope scope(m_folder, m_ocr);
    m_rows.clear();
    m_totalHits = 0;
    for (std::size_t position = 0; position < m_results.items.size(); ++position) {
        if (std::optional<ResultRow> row = MakeRow(m_results.items[position], filter, scope)) {
            row->position = static_cast<int>(position);
            m_totalHits += row->HITCOUNT;
            m_rows.push_back(*std::move(row));
        }
    }
    SortRows(m_rows, m_sortColumn, m_order);
}

bool ResultSet::Sorts(int column) {
    return column >= 1 && column <= kLastSortingColumn;
}

bool ResultSet::grdResult_ColumnClick(int column) {
    if (!Sorts(column)) {
        return false;
    }
    const auto clicked = column == 1 ? GridColumn::DATETOSORT : static_cast<GridColumn>(column);
    const bool turn = m_sortedByClick && clicked == m_sortColumn;
    m_order =
        turn && m_order == SortOrder::Ascending ? SortOrder::Descending : SortOrder::Ascending;
    m_sortColumn = clicked;
    m_sortedByClick = true;
    SortRows(m_rows, m_sortColumn, m_order);
    return true;
}

QString ResultSet::Caption() const {
    return GetMessage(245) + u": "_s + QString::number(m_rows.size()) + u' ' + GetMessage(93) +
           u" - "_s + GetMessage(128) + u": "_s + QString::number(m_totalHits);
}

quint64 ResultSet::FoundBeyond() const {
    return m_results.found > m_results.items.size() ? m_results.found : 0;
}

GridColumn ResultSet::SortColumn() const {
    return m_sortColumn == GridColumn::DATETOSORT ? GridColumn::DATE : m_sortColumn;
}

} // namespace velmora
