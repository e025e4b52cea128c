// Puts the sheets of a workbook into a flow: what all their formats have in common.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Flow.h"

#include <cstdint>
#include <string_view>

namespace engine {

// A sheet is a page with its name as a heading, its cells as a table, and what stands around them.
class SheetFlow {
  public:
    explicit SheetFlow(Flow& flow) : m_flow(flow) {}

    // number from 1.
    void Begin(int number, std::string_view name);
    // What comes stands in another row. Rows without text do not appear.
    void NewRow();
    // Empty cells between two full ones of a row appear, up to a bound. column from 1; one that
    // does not lie behind the one before is shown all the same. Empty text: nothing.
    void Cell(int column, std::string_view text);
    void EndTable();
    void Note(std::string_view text);
    void TextBox(std::string_view text);
    // A header or footer with its codes: "&L&"Arial,Bold"&12Costs&RPage &P".
    void Margin(std::string_view code);
    void End();

  private:
    Flow& m_flow;
    int m_lastColumn = 0; // the last one shown in this row
    bool m_tableOpen = false;
    bool m_rowOpen = false;
};

// Text whose line ends are shown.
void PutSheetLines(std::string_view text, Flow& flow);

// What a cell shows for an error, by the code that binary formats keep: "#N/A".
[[nodiscard]] std::string_view SheetError(std::uint8_t code);

} // namespace engine
