// One sheet of an old binary workbook, and what the workbook tells all its sheets.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/BiffRecords.h"
#include "engine/readers/CodePage.h"
#include "engine/readers/NumberFormats.h"
#include "engine/readers/SharedTexts.h"
#include "engine/readers/SheetFlow.h"

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

class XlsBook {
  public:
    struct Sheet {
        std::string name;
        std::size_t at = 0;   // place of its first record in the stream
        bool program = false; // a module of macros
    };

    explicit XlsBook(int biffVersion) : version(biffVersion) {}

    const int version; // as BiffVersion tells
    SharedTexts shared;
    std::vector<Sheet> sheets;

    // Takes a record that concerns the whole workbook, and leaves any other alone.
    void Take(const BiffRecord& record);
    // A text that begins with its length, in one byte or two.
    [[nodiscard]] std::string ShortText(BiffCursor& cursor) const;
    [[nodiscard]] std::string LongText(BiffCursor& cursor) const;
    [[nodiscard]] std::string Show(double number, const BiffRecord& cell) const;
    // The style of the cells that have no room to tell theirs (version 2).
    void SetStyleOfCell(int style) { m_styleOfCell = style; }

  private:
    [[nodiscard]] std::string Text(BiffCursor& cursor, std::uint32_t count) const;
    void TakeFormat(const BiffRecord& record);
    void TakeSheet(const BiffRecord& record);
    void TakeSharedTexts(const BiffRecord& record);

    unsigned m_codePage = kWesternPage;
    NumberFormats m_formats;
    NumberFormats m_bareFormats; // by format; of workbooks that have no styles
    int m_formatCount = 0;
    bool m_hasStyles = false;
    int m_styleOfCell = 0;
};

class XlsSheet {
  public:
    XlsSheet(XlsBook& book, SheetFlow& flow) : m_book(book), m_flow(flow) {}
    // Puts everything up to the end of the sheet into the flow; the next record is its first.
    // Answers how far it has come in the stream.
    std::size_t Read(BiffReader& records);

  private:
    void Take(const BiffRecord& record);
    void TakeChartRecord(const BiffRecord& record);
    void TakeNumbers(const BiffRecord& record);
    void TakeFormula(const BiffRecord& record);
    void TakeNote(const BiffRecord& record);
    void TakeTextObject(const BiffRecord& record);
    void TakeMargins(const BiffRecord& record);
    [[nodiscard]] std::size_t ValueAt() const { return m_book.version == 2 ? 7 : 6; }
    [[nodiscard]] std::string LabelText(const BiffRecord& record) const;
    void Put(const BiffRecord& record, std::string_view text);
    void Put(unsigned row, unsigned column, std::string_view text);
    void PutAround();

    XlsBook& m_book;
    SheetFlow& m_flow;
    unsigned m_row = 0;
    unsigned m_formulaRow = 0, m_formulaColumn = 0; // whose text comes in a record of its own
    bool m_awaitsText = false;
    int m_depth = 0;      // of substreams
    int m_chartDepth = 0; // the one that is a chart, 0: none
    bool m_objectIsNote = false;
    // What is shown behind the cells.
    std::vector<std::string> m_margins, m_notes, m_boxes, m_chartWords;
    std::set<std::string> m_seenWords; // a chart names its columns again and again
};

} // namespace engine
