// The state of a document of RTF while it is read: groups, properties, where text goes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/EventBuffer.h"
#include "engine/readers/Flow.h"
#include "engine/readers/RtfBlocks.h"
#include "engine/readers/RtfCodePages.h"
#include "engine/readers/RtfPicture.h"
#include "engine/readers/RtfScanner.h"
#include "engine/readers/RtfTables.h"
#include "engine/readers/RtfWords.h"

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

// Goes through the document piece by piece: RtfReading.cpp has the groups and words,
// RtfReadingText.cpp the text.
class RtfReading {
  public:
    RtfReading(std::string_view rtf, DocumentSink& sink)
        : m_scanner(rtf), m_sink(sink), m_flow(sink), m_bodyBlocks(m_flow) {}
    void Run();

  private:
    static constexpr int kNoFont = -1; // the default one
    // Where the bytes of a group go.
    enum class Into : std::uint8_t { Body, Value, Nothing, Picture, FontName, StyleName };
    struct Group {
        Into into = Into::Body;
        bool deleted = false;
        bool htmlOff = false; // a stand-in for programs that cannot show the HTML
        RtfMeaning job;       // what is to be done at its end
        int font = kNoFont;
        int fallbackLength = 1; // characters behind each \u
        RtfForm form;
    };
    struct Header {
        explicit Header(bool wantsPictures) : buffer(wantsPictures), flow(buffer), blocks(flow) {}
        EventBuffer buffer;
        Flow flow;
        RtfBlocks blocks;
    };

    bool Step();
    void OpenGroup();
    void CloseGroup();
    void SkipGroup();
    void EndJob(const RtfMeaning& job);
    void Word();
    bool GroupWord(RtfMeaning meaning);
    void PropertyWord(RtfMeaning meaning, int number);
    void TextWord(RtfMeaning meaning, int number);
    void Symbol(char c);
    void Bytes(std::string_view bytes, bool raw);
    void TakeEntries(Into into);
    void PutCharacter(char32_t character);
    void PutUnit(int number);
    std::string* Target();
    void SelectCodePage();
    void EndCharacter();
    void Flush();
    void NewLine();
    void EndParagraph();
    void BeginHeader();
    void EndHeader();
    void PutPicture();
    void ShapeValue();
    void Finish();

    [[nodiscard]] Group& Top() { return m_groups.back(); }
    [[nodiscard]] RtfBlocks& Blocks() { return m_header ? m_header->blocks : m_bodyBlocks; }
    [[nodiscard]] Flow& CurrentFlow() { return m_header ? m_header->flow : m_flow; }
    [[nodiscard]] int HeadingOf(const RtfForm& form) const {
        return form.outline >= 0 ? HeadingOfOutline(form.outline) : m_styles.HeadingOf(form.style);
    }

    RtfScanner m_scanner;
    DocumentSink& m_sink;
    Flow m_flow;
    RtfBlocks m_bodyBlocks;
    std::unique_ptr<Header> m_header;                   // that is being read
    std::vector<std::unique_ptr<Header>> m_lateHeaders; // that stood within a paragraph
    std::set<std::string> m_headerTexts;
    RtfCodePages m_pages;
    RtfFonts m_fonts;
    RtfStyles m_styles;
    RtfPicture m_picture;
    int m_openPictures = 0;         // groups of pictures within each other
    std::vector<Group> m_groups{1}; // the first stands around the document's own group
    std::size_t m_tooDeep = 0;      // groups that are open beyond the deepest one kept
    bool m_wasTooDeep = false;
    int m_codePage = 1252;
    int m_defaultFont = 0;
    bool m_pageKnown = false; // the code page of the font is selected
    bool m_starred = false;   // \* came just before
    int m_fallback = 0;       // characters that stand for the \u before them
    char32_t m_lead = 0;      // first half of a pair
    bool m_html = false;
    bool m_htmlCut = false;
    std::string m_run; // text of the body that is not in the blocks yet; all of an HTML document
    RtfForm m_runForm;
    std::string m_value, m_propertyName, m_shapeName;
};

// Without the blanks around it.
[[nodiscard]] std::string TrimRtfValue(std::string_view text);

} // namespace engine
