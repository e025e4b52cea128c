// Takes what the libraries for old word processors and spreadsheets tell, and puts it into a flow.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Flow.h"
#include "engine/readers/SheetFlow.h"

#include <librevenge/librevenge.h>

#include <exception>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace engine {

// One document, text or spreadsheet. What the sink throws ends the library's work, which swallows
// it: ask Failure afterwards.
class RevengeText final : public librevenge::RVNGTextInterface,
                          public librevenge::RVNGSpreadsheetInterface {
  public:
    explicit RevengeText(DocumentSink& sink) : m_sink(sink), m_flow(sink), m_sheet(m_flow) {}

    // To be called once behind the library's work; throws what the sink threw.
    void Finish();
    // Whether there was any text.
    [[nodiscard]] bool HasText() const { return m_hasText; }

    using List = librevenge::RVNGPropertyList;

    void setDocumentMetaData(const List& properties) override;
    void startDocument(const List&) override {}
    void endDocument() override {}
    void definePageStyle(const List&) override {}
    void defineEmbeddedFont(const List&) override {}
    void openPageSpan(const List&) override {}
    void closePageSpan() override {}
    void openHeader(const List&) override { BeginMargin(); }
    void closeHeader() override { EndMargin(); }
    void openFooter(const List&) override { BeginMargin(); }
    void closeFooter() override { EndMargin(); }

    void defineParagraphStyle(const List&) override {}
    void openParagraph(const List& properties) override;
    void closeParagraph() override { EndParagraph(); }
    void defineCharacterStyle(const List&) override {}
    void openSpan(const List&) override {}
    void closeSpan() override {}
    void openLink(const List&) override {}
    void closeLink() override {}
    void defineSectionStyle(const List&) override {}
    void openSection(const List&) override {}
    void closeSection() override {}
    void insertTab() override { Put("\t"); }
    void insertSpace() override { Put(" "); }
    void insertText(const librevenge::RVNGString& text) override { Put(text.cstr()); }
    void insertLineBreak() override;
    void insertField(const List&) override {} // numbers of pages, the date of today
    void openOrderedListLevel(const List&) override { Open(Block::List, 1); }
    void openUnorderedListLevel(const List&) override { Open(Block::List, 0); }
    void closeOrderedListLevel() override { Close(Block::List); }
    void closeUnorderedListLevel() override { Close(Block::List); }
    void openListElement(const List&) override { Open(Block::Item); }
    void closeListElement() override { EndParagraph(); }

    void openFootnote(const List&) override { BeginNote(); }
    void closeFootnote() override { EndNote(); }
    void openEndnote(const List&) override { BeginNote(); }
    void closeEndnote() override { EndNote(); }
    void openComment(const List&) override { BeginNote(); }
    void closeComment() override { EndNote(); }
    void openTextBox(const List&) override;
    void closeTextBox() override;

    void openTable(const List&) override { Open(Block::Table); }
    void openTableRow(const List&) override { Open(Block::Row); }
    void closeTableRow() override { Close(Block::Row); }
    void openTableCell(const List&) override { Open(Block::Cell); }
    void closeTableCell() override { Close(Block::Cell); }
    void insertCoveredTableCell(const List&) override {}
    void closeTable() override { Close(Block::Table); }

    void openFrame(const List&) override {}
    void closeFrame() override {}
    void insertBinaryObject(const List&) override {}
    void insertEquation(const List&) override {}
    void openGroup(const List&) override {}
    void closeGroup() override {}
    void defineGraphicStyle(const List&) override {}
    void drawRectangle(const List&) override {}
    void drawEllipse(const List&) override {}
    void drawPolygon(const List&) override {}
    void drawPolyline(const List&) override {}
    void drawPath(const List&) override {}
    void drawConnector(const List&) override {}

    void defineSheetNumberingStyle(const List& properties) override;
    void openSheet(const List& properties) override;
    void closeSheet() override;
    void openSheetRow(const List&) override;
    void closeSheetRow() override {}
    void openSheetCell(const List& properties) override;
    void closeSheetCell() override;
    void defineChartStyle(const List&) override {}
    void openChart(const List&) override {}
    void closeChart() override {}
    void openChartTextObject(const List&) override { Open(Block::Paragraph); }
    void closeChartTextObject() override { EndParagraph(); }
    void openChartPlotArea(const List&) override {}
    void closeChartPlotArea() override {}
    void insertChartAxis(const List&) override {}
    void openChartSerie(const List&) override {}
    void closeChartSerie() override {}

  private:
    template <typename Work> void Guarded(Work work);
    [[nodiscard]] bool Collecting() const { return m_inCell || m_inMargin; }
    void Open(Block block, int level = 0);
    void Close(Block block);
    void EndParagraph();
    void Put(std::string_view text);
    void BeginMargin();
    void EndMargin();
    void BeginNote();
    void EndNote();
    [[nodiscard]] std::string ShowValue(const List& properties) const;

    DocumentSink& m_sink;
    Flow m_flow;
    SheetFlow m_sheet;
    std::exception_ptr m_failure;
    bool m_hasText = false;
    bool m_inMargin = false;         // header or footer
    std::set<std::string> m_margins; // every page repeats them
    bool m_inCell = false;           // of a sheet
    int m_column = 0;                // of that cell, from 1
    int m_sheets = 0;
    std::map<std::string, int> m_decimals; // by the name of a numbering style
    std::string m_collected;               // text of a margin or a cell
};

} // namespace engine
