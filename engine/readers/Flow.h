// Between a reader and its sink: keeps blocks well nested, whatever the document does.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

class EventBuffer;

// A reader tells what it meets in the order of its tags; the sink gets a proper tree:
// - Paragraph, Heading and Preformatted hold text only: any Open closes them;
// - blocks without text do not appear, but for pages and the cells of a table;
// - an Item stands in a List, a Cell in a Row, a Row in a Table; what is missing is added, and
//   text that stands in none of them gets a Paragraph;
// - a Close without its Open does nothing, a missing Close is made up for;
// - nesting deeper than a document made by people keeps its text but loses its blocks.
class Flow {
  public:
    explicit Flow(DocumentSink& sink);
    ~Flow();
    Flow(const Flow&) = delete;
    Flow& operator=(const Flow&) = delete;

    void Open(Block block, int level = 0);
    void Close(Block block);
    // Ends the paragraph, heading or preformatted text that is open.
    void EndParagraph();
    [[nodiscard]] bool InPreformatted() const;
    // Whether a cell, note or the like of this kind is open here.
    [[nodiscard]] bool IsOpen(Block block) const;

    // Text as it stands; pieces join without a gap.
    void Text(std::string_view utf8);
    // Text whose runs of blanks count as one blank, and as none at the edges of a line.
    void Collapse(std::string_view utf8);
    // Parts the word before from the word behind.
    void Blank();
    void Break();
    // A line break, unless the line is empty.
    void EndLine();
    // alternativeText goes into the text too, so that words and their numbers are the same
    // whether pictures are wanted or not.
    void Picture(std::string_view mime, std::string_view bytes, std::string_view alternativeText);

    // A property that is told in the midst of the text: it comes where it stands, whether pictures
    // are wanted or not.
    void Field(std::string_view name, std::string_view value);

    // What comes between is put behind the paragraph that is open: a comment, a note or a text
    // box must not tear the sentence that it is anchored in. They nest.
    void BeginAside();
    void EndAside();

    // Closes everything. To be called once at the end.
    void Finish();

  private:
    struct Entry {
        Block block;
        int level;
    };
    struct Aside;

    [[nodiscard]] std::size_t Find(Block block) const;
    [[nodiscard]] bool OnlyText() const;
    void OpenParents(Block block);
    void Push(Block block, int level);
    void ShowAll();
    void Pop();
    void CloseTo(std::size_t depth);
    void ReadyForText();
    void FlushText();
    void ReplayAsides();

    DocumentSink& m_sink;
    DocumentSink* m_out; // the sink, or the buffer of the innermost aside
    std::vector<Entry> m_stack;
    std::size_t m_shown = 0; // so many of them the sink knows; the others have no text so far
    std::size_t m_base = 0;  // what lies below belongs to the text around the aside
    std::array<std::uint32_t, 16> m_ignored{}; // opens that were too deep, by block
    std::string m_text;
    bool m_ready = false; // text can be appended without further ado
    bool m_lineBegun = false;
    bool m_blank = false; // a blank is due before the next text
    int m_breaks = 0;     // line breaks that are due before the next text
    std::vector<Aside> m_asides;
    std::vector<std::unique_ptr<EventBuffer>> m_pending; // behind the paragraph that is open
    int m_flatAsides = 0; // asides that were too deep to be kept apart
};

} // namespace engine
