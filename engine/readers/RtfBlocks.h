// Makes paragraphs, lists and tables of what RTF only marks by properties and ends.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Flow.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

// What a paragraph's properties say of its place.
struct RtfForm {
    int style = 0;
    int outline = -1;   // 0 the highest; -1: its style tells
    int list = 0;       // 0 none
    int listLevel = 0;  // from 0
    int tableLevel = 0; // 1 in a table, 2 in one inside its cell; 0: inTable tells
    bool inTable = false;
};

class RtfBlocks {
  public:
    explicit RtfBlocks(Flow& flow) : m_flow(flow), m_contexts(1) {}

    // Puts text into the paragraph that is open; else opens one: heading is its level from 1, or
    // 0.
    void Text(const RtfForm& form, int heading, std::string_view utf8);
    // The same for a picture.
    void Picture(const RtfForm& form, int heading, std::string_view mime, std::string_view bytes,
                 std::string_view alternativeText);
    // The number or bullet that the next paragraph begins with. everyItem: this kind of mark
    // stands before every item, so that a paragraph without one belongs to the item before it.
    void SetListText(std::string_view utf8, bool everyItem);
    void Break() { m_flow.Break(); }
    void EndParagraph(const RtfForm& form);

    // A row of the outermost table has been announced.
    void AnnounceRow() { Top().rowAnnounced = true; }
    // level from 1.
    void EndCell(int level);
    void EndRow(int level);

    // What comes between has paragraphs and tables of its own.
    void BeginAside();
    void EndAside();
    // Whether neither a paragraph nor a list nor a table is open.
    [[nodiscard]] bool IsBetween() const;
    // Closes all that is open.
    void EndAll();

  private:
    struct TableLevel {
        bool row = false;
        bool cell = false;
    };
    struct Context {
        std::vector<TableLevel> tables;
        int listDepth = 0;
        int list = 0;
        bool everyItemMarked = false; // in the list that is open
        bool paragraph = false;
        bool rowAnnounced = false;
        std::string listText;
    };
    Context& Top() { return m_contexts.back(); }
    int LevelOf(const RtfForm& form);
    void GoToLevel(int level);
    void Ready(const RtfForm& form, int heading);
    void OpenItem(const RtfForm& form);
    void EndLists();

    Flow& m_flow;
    std::vector<Context> m_contexts; // the body's, then that of each aside within
};

} // namespace engine
