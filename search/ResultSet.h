// The list of what a search found: filtered by type, sorted, counted.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "search/ResultRow.h"

#include <QString>
#include <vector>

namespace velmora {

// Columns as a person counts them, from 1.
enum class GridColumn { DATE = 1, FILEDESCR = 2, HITCOUNT = 3, PATH = 4, DATETOSORT = 8 };
enum class SortOrder { Ascending = 1, Descending = 2 };

// Sorts in place; rows that are alike keep the order of the results.
void SortRows(std::vector<ResultRow>& rows, GridColumn column, SortOrder order);

class ResultSet {
  public:
    // Takes the results over and reads the recognised documents of this user. folder: what was
    // searched, empty for the whole archive.
    ResultSet(engine::SearchResults results, const QString& folder);

    // Fills the rows with the documents of a class, in the order of the current sort.
    void LoadResult(TypeFilter filter = TypeFilter::ALL);
    // Whether a click on the head of a column sorts.
    [[nodiscard]] static bool Sorts(int column);
    // Sorts by a column of the list; a second click turns the order round. False: such a column
    // does not sort.
    bool grdResult_ColumnClick(int column);

    [[nodiscard]] const std::vector<ResultRow>& Rows() const { return m_rows; }
    [[nodiscard]] int TotalHits() const { return m_totalHits; }
    // "Search results: 12 Document/s - Hits: 70"
    [[nodiscard]] QString Caption() const;
    // Documents that satisfy the request when there are more of them than were kept; else 0.
    [[nodiscard]] quint64 FoundBeyond() const;
    [[nodiscard]] std::size_t Kept() const { return m_results.items.size(); }

    // How the rows are sorted now; the date's column is told as DATE.
    [[nodiscard]] GridColumn SortColumn() const;
    [[nodiscard]] SortOrder Order() const { return m_order; }

  private:
    engine::SearchResults m_results;
    QString m_folder;
    OcrDocuments m_ocr;
    std::vector<ResultRow> m_rows;
    int m_totalHits = 0;
    GridColumn m_sortColumn = GridColumn::HITCOUNT;
    SortOrder m_order = SortOrder::Descending;
    bool m_sortedByClick = false;
};

} // namespace velmora
