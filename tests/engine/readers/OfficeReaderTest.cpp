// DOCX, XLSX, PPTX, OpenDocument and EPUB: the same things said in each of them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/engine/readers/Packages.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

using Fields = std::map<std::string, std::string>;

// ---- DOCX

constexpr const char* kTransitional =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
constexpr const char* kStrict = "http://purl.oclc.org/ooxml/officeDocument/relationships";

std::string Relationship(const std::string& id, const std::string& type, const std::string& target,
                         const char* space = kTransitional) {
    return "<Relationship Id='" + id + "' Type='" + space + "/" + type + "' Target='" + target +
           "'/>";
}

std::string List(const std::string& relationships) {
    return "<Relationships xmlns='http://schemas.openxmlformats.org/package/2006/relationships'>" +
           relationships + "</Relationships>";
}

std::string Word(const std::string& root, const std::string& content) {
    return "<?xml version='1.0' encoding='UTF-8' standalone='yes'?><w:" + root +
           " xmlns:w='http://schemas.openxmlformats.org/wordprocessingml/2006/main'"
           " xmlns:r='" +
           kTransitional +
           "'"
           " xmlns:mc='http://schemas.openxmlformats.org/markup-compatibility/2006'>" +
           content + "</w:" + root + ">";
}

Parts DocxParts(const std::string& body, const std::string& relationships = {}) {
    return {{"_rels/.rels", List(Relationship("r1", "officeDocument", "word/document.xml"))},
            {"word/document.xml", Word("document", "<w:body>" + body + "</w:body>")},
            {"word/_rels/document.xml.rels", List(relationships)}};
}

std::string DocxText(const std::string& body) {
    return ReadWith(ReadDocx, MakeZip(DocxParts(body))).text;
}

TEST(DocxReader, Paragraphs) {
    EXPECT_EQ(
        DocxText("<w:p><w:r><w:t>un</w:t></w:r><w:r><w:t xml:space='preserve'>do this</w:t><w:tab/>"
                 "<w:t>a</w:t><w:br/><w:t>b&amp;c</w:t><w:noBreakHyphen/><w:sym "
                 "w:char='2192'/></w:r></w:p><w:p/>"
                 "<w:p><w:pPr><w:outlineLvl w:val='1'/></w:pPr><w:r><w:t>Head</w:t></w:r></w:p>"),
        "[p]undo this\ta[br]b&c‑→[/p][h2]Head[/h2]");
}

TEST(DocxReader, WhatIsNotShownIsNotRead) {
    EXPECT_EQ(
        DocxText(
            "<w:p><w:del><w:r><w:delText>old</w:delText></w:r></w:del>"
            "<w:moveFrom><w:r><w:t>gone</w:t></w:r></w:moveFrom>"
            "<w:ins><w:r><w:t>new</w:t></w:r></w:ins></w:p>"
            "<w:p><w:r><w:fldChar w:fldCharType='begin'/><w:instrText>IF </w:instrText>"
            "<w:fldChar w:fldCharType='begin'/><w:instrText>PAGE</w:instrText>"
            "<w:fldChar w:fldCharType='separate'/><w:t>inner</w:t><w:fldChar w:fldCharType='end'/>"
            "<w:fldChar w:fldCharType='separate'/><w:t>result</w:t><w:fldChar "
            "w:fldCharType='end'/></w:r></w:p>"
            "<w:p><w:r><w:fldChar w:fldCharType='begin'/><w:t>lost</w:t></w:r></w:p>"
            "<w:p><w:r><w:t>after a broken field</w:t></w:r></w:p>"),
        "[p]new[/p][p]result[/p][p]after a broken field[/p]");
}

TEST(DocxReader, TextBoxesComeOnceAndBehindTheirParagraph) {
    const std::string box = "<w:txbxContent><w:p><w:r><w:t>boxed</w:t></w:r></w:p></w:txbxContent>";
    EXPECT_EQ(
        DocxText(
            "<w:p><w:r><w:t>be</w:t></w:r><w:r><mc:AlternateContent><mc:Choice Requires='wps'>" +
            box + "</mc:Choice><mc:Fallback>" + box +
            "</mc:Fallback></mc:AlternateContent></w:r>"
            "<w:r><w:t>fore</w:t></w:r></w:p><w:p><w:r><w:t>next</w:t></w:r></w:p>"),
        "[p]before[/p][p]boxed[/p][p]next[/p]");
}

TEST(DocxReader, InitialIsPartOfItsWord) {
    EXPECT_EQ(
        DocxText(
            "<w:p><w:pPr><w:framePr w:dropCap='drop'/></w:pPr><w:r><w:t>O</w:t></w:r></w:p>"
            "<w:p><w:r><w:t>nce upon</w:t></w:r></w:p><w:p><w:r><w:t>a time</w:t></w:r></w:p>"),
        "[p]Once upon[/p][p]a time[/p]");
}

TEST(DocxReader, TablesAndLists) {
    const auto item = [](const char* text, int level) {
        return "<w:p><w:pPr><w:pStyle w:val='L'/><w:numPr><w:ilvl w:val='" + std::to_string(level) +
               "'/></w:numPr></w:pPr><w:r><w:t>" + text + "</w:t></w:r></w:p>";
    };
    Parts parts =
        DocxParts("<w:p><w:pPr><w:pStyle w:val='Own'/></w:pPr><w:r><w:t>Head</w:t></w:r></w:p>" +
                      item("one", 0) + item("two", 1) + item("three", 0) +
                      "<w:tbl><w:tblPr/><w:tr><w:tc><w:tcPr/><w:p/></w:tc><w:tc>" + item("in", 0) +
                      "</w:tc></w:tr></w:tbl>",
                  Relationship("s", "styles", "styles.xml") +
                      Relationship("n", "numbering", "/word/numbering.xml"));
    parts.emplace_back(
        "word/styles.xml",
        Word("styles",
             "<w:style w:styleId='H'><w:name w:val='heading 3'/></w:style>"
             "<w:style w:styleId='Own'><w:name w:val='My'/><w:basedOn w:val='H'/></w:style>"
             "<w:style w:styleId='L'><w:name w:val='List'/><w:pPr><w:numPr><w:numId w:val='7'/>"
             "</w:numPr></w:pPr></w:style>"));
    parts.emplace_back("word/numbering.xml",
                       Word("numbering",
                            "<w:abstractNum w:abstractNumId='1'><w:lvl w:ilvl='0'><w:numFmt "
                            "w:val='decimal'/></w:lvl>"
                            "<w:lvl w:ilvl='1'><w:numFmt w:val='bullet'/></w:lvl></w:abstractNum>"
                            "<w:num w:numId='7'><w:abstractNumId w:val='1'/></w:num>"));
    EXPECT_EQ(
        ReadWith(ReadDocx, MakeZip(parts)).text,
        "[h3]Head[/h3][ol][li][p]one[/p][ul][li][p]two[/p][/li][/ul][/li][li][p]three[/p][/li][/ol]"
        "[table][tr][td][/td][td][ol][li][p]in[/p][/li][/ol][/td][/tr][/table]");
}

TEST(DocxReader, NotesHeadersAndPictures) {
    Parts parts = DocxParts(
        "<w:p><w:r><w:t>bo</w:t><w:footnoteReference w:id='2'/><w:t>dy</w:t></w:r><w:r><w:drawing>"
        "<wp:docPr xmlns:wp='x' descr='a tree'/><a:blip xmlns:a='y' "
        "r:embed='p'/></w:drawing></w:r></w:p>",
        Relationship("h", "header", "header1.xml") +
            Relationship("f", "footnotes", "footnotes.xml") +
            Relationship("p", "image", "media/image1.png"));
    parts.emplace_back("word/header1.xml", Word("hdr", "<w:p><w:r><w:t>top</w:t></w:r></w:p>"));
    parts.emplace_back(
        "word/footnotes.xml",
        Word("footnotes",
             "<w:footnote w:type='separator'><w:p><w:r><w:t>no</w:t></w:r></w:p></w:footnote>"
             "<w:footnote w:id='2'><w:p><w:r><w:t>note</w:t></w:r></w:p></w:footnote>"));
    parts.emplace_back("word/media/image1.png", "not looked into");
    const RecordingSink sink = ReadWith(ReadDocx, MakeZip(parts), true);
    EXPECT_EQ(sink.text, "[p]top[/p][p]body a tree[/p][note][p]note[/p][/note]");
    ASSERT_EQ(sink.pictures.size(), 1U);
    EXPECT_EQ(sink.pictures[0], (std::pair<std::string, std::string>("image/png", "a tree")));
}

TEST(DocxReader, StrictForm) {
    const Parts parts{
        {"_rels/.rels", List(Relationship("r1", "officeDocument", "doc/main.xml", kStrict))},
        {"doc/main.xml", "<w:document xmlns:w='http://purl.oclc.org/ooxml/wordprocessingml/main'>"
                         "<w:body><w:p><w:r><w:t>strict</w:t></w:r></w:p></w:body></w:document>"}};
    EXPECT_EQ(ReadWith(ReadDocx, MakeZip(parts)).text, "[p]strict[/p]");
}

TEST(DocxReader, RealDocuments) {
    EXPECT_EQ(ReadWith(ReadDocx, LoadOffice("hdr-header-footer.docx")).text,
              "[p]Header for section-1[/p][p]section with header[/p][p]section without header of "
              "its own.[/p]"
              "[p]Footer for section 1[/p]");
    EXPECT_NE(ReadWith(ReadDocx, LoadOffice("comments-rich-para.docx"))
                  .text.find("[note][p]Text with character style.[/p][/note]"),
              std::string::npos);
    EXPECT_NE(ReadWith(ReadDocx, LoadOffice("par-hlink-frags.docx"))
                  .text.find("[p]Two with link to bookmark.[/p]"),
              std::string::npos);
    EXPECT_NE(ReadWith(ReadDocx, LoadOffice("test_with_comment.docx")).text.find("[note][p]"),
              std::string::npos);
}

// ---- One document in three formats

TEST(OfficeReaders, SameDocumentSameText) {
    const char* text = "[p]This is a sample text available in page 1[/p][p]This second part of the "
                       "text is in Page 2[/p]";
    const RecordingSink docx = ReadWith(ReadDocx, LoadOffice("test.docx"));
    const RecordingSink odt = ReadWith(ReadOpenDocument, LoadOffice("test.odt"));
    EXPECT_EQ(docx.text, text);
    EXPECT_EQ(odt.text, text);
    for (const char* field : {"title", "author", "subject", "comments"})
        EXPECT_EQ(docx.fields.at(field), odt.fields.at(field)) << field;
    EXPECT_EQ(docx.fields.at("title"), "Test Tika title");
    EXPECT_EQ(docx.fields.at("company"), "elastic");
    EXPECT_NE(ReadWith(ReadHtml, LoadOffice("test.html"))
                  .text.find("[p]This is a sample text available in page 1[/p]"),
              std::string::npos);
}

// ---- XLSX

std::string Sheet(const std::string& content) {
    return "<x:worksheet xmlns:x='http://schemas.openxmlformats.org/spreadsheetml/2006/main'>" +
           content + "</x:worksheet>";
}

Parts XlsxParts(const std::string& first, const std::string& second,
                const std::string& workbookProperties = {}) {
    return {
        {"_rels/.rels", List(Relationship("r1", "officeDocument", "xl/workbook.xml"))},
        {"xl/workbook.xml", "<workbook xmlns:r='" + std::string(kTransitional) + "'>" +
                                workbookProperties +
                                "<sheets><sheet name='Costs' sheetId='9' r:id='b'/><sheet "
                                "name='Plan' sheetId='2' r:id='a'/></sheets></workbook>"},
        {"xl/_rels/workbook.xml.rels",
         List(Relationship("a", "worksheet", "worksheets/sheet1.xml") +
              Relationship("b", "worksheet", "worksheets/sheet2.xml") +
              Relationship("c", "sharedStrings", "sharedStrings.xml") +
              Relationship("d", "styles", "styles.xml"))},
        {"xl/worksheets/sheet2.xml", Sheet(first)},
        {"xl/worksheets/sheet1.xml", Sheet(second)},
        {"xl/sharedStrings.xml",
         "<sst><si><t>plain</t></si><si><r><t>ri</t></r><r><t xml:space='preserve'>ch text</t></r>"
         "<rPh><t>reading</t></rPh></si><si><t>two\nlines_x000D_</t></si></sst>"},
        {"xl/styles.xml",
         "<styleSheet><numFmts><numFmt numFmtId='164' formatCode='&quot;day&quot; dd/mm/yyyy'/>"
         "<numFmt numFmtId='165' formatCode='#,##0.00 [$EUR];[Red]-0'/></numFmts>"
         "<cellStyleXfs><xf numFmtId='14'/></cellStyleXfs><cellXfs><xf numFmtId='0'/><xf "
         "numFmtId='14'/>"
         "<xf numFmtId='164'/><xf numFmtId='165'/><xf numFmtId='9'/><xf numFmtId='22'/><xf "
         "numFmtId='46'/></cellXfs></styleSheet>"}};
}

TEST(XlsxReader, CellsAsTheyAreShown) {
    const Parts parts = XlsxParts(
        "<x:sheetData><x:row r='1'><x:c r='A1' t='s'><x:v>1</x:v></x:c><x:c r='C1' "
        "t='s'><x:v>2</x:v></x:c>"
        "<x:c r='D1' t='s'><x:v>99</x:v></x:c></x:row><x:row/><x:row><x:c "
        "t='inlineStr'><x:is><x:t>in</x:t></x:is></x:c>"
        "<x:c t='b'><x:v>1</x:v></x:c><x:c t='e'><x:v>#N/A</x:v></x:c><x:c "
        "t='str'><x:f>A1&amp;\"x\"</x:f><x:v>sum</x:v></x:c></x:row>"
        "</x:sheetData><x:headerFooter><x:oddHeader>&amp;L&amp;\"Arial,Bold\"&amp;12Left&amp;RPage "
        "&amp;P &amp;&amp; more</x:oddHeader></x:headerFooter>",
        "<x:sheetData><x:row><x:c><x:v>0.30000000000000004</x:v></x:c><x:c "
        "s='1'><x:v>45292</x:v></x:c><x:c s='2'><x:v>59</x:v></x:c>"
        "<x:c s='3'><x:v>1234.5</x:v></x:c><x:c s='4'><x:v>0.256</x:v></x:c><x:c "
        "s='5'><x:v>45657.75</x:v></x:c><x:c s='6'><x:v>1.5</x:v></x:c>"
        "<x:c "
        "s='77'><x:v>1E3</x:v></x:c><x:c><x:v>12345678901234</x:v></x:c></x:row></x:sheetData>");
    EXPECT_EQ(
        ReadWith(ReadXlsx, MakeZip(parts)).text,
        "[page1][h1]Costs[/h1][table][tr][td]rich text[/td][td][/td][td]two[br]lines [/td][/tr]"
        "[tr][td]in[/td][td]TRUE[/td][td]#N/A[/td][td]sum[/td][/tr][/table][p]Left Page & "
        "more[/p][/page1]"
        "[page2][h1]Plan[/h1][table][tr][td]0.3[/td][td]2024-01-01[/td][td]1900-02-28[/"
        "td][td]1234.50[/td][td]26%[/td]"
        "[td]2024-12-31 "
        "18:00[/td][td]36:00[/td][td]1000[/td][td]12345678901234[/td][/tr][/table][/page2]");
}

TEST(XlsxReader, DaysFrom1904) {
    const Parts parts =
        XlsxParts("<x:sheetData><x:row><x:c s='1'><x:v>0</x:v></x:c></x:row></x:sheetData>", "",
                  "<workbookPr date1904='1'/>");
    EXPECT_EQ(ReadWith(ReadXlsx, MakeZip(parts)).Words(), "Costs 1904-01-01 Plan");
}

TEST(XlsxReader, RealWorkbooks) {
    const RecordingSink sink = ReadWith(ReadXlsx, LoadOffice("Book1.xlsx"));
    EXPECT_NE(sink.text.find("[note]Hyperlink test[/note]"), std::string::npos);
    EXPECT_NE(sink.text.find("[tr][td]> 23 Inch[/td][td]19[/td][td]HP[/td][td]200[/td][/tr]"),
              std::string::npos);
    EXPECT_EQ(sink.text.find("[p]Lenove[/p]"), sink.text.rfind("[p]Lenove[/p]"))
        << "a chart says its words once";
    EXPECT_NE(ReadWith(ReadXlsx, LoadOffice("test.xlsx"))
                  .text.find("[td]6ff4173b-42a5-4784-9b19-f49caff4d93d[/td]"),
              std::string::npos);
}

// ---- PPTX

std::string Slide(const std::string& shapes) {
    return "<p:sld xmlns:p='p' xmlns:a='a' xmlns:r='" + std::string(kTransitional) +
           "'><p:cSld><p:spTree>" + shapes + "</p:spTree></p:cSld></p:sld>";
}

std::string Shape(const std::string& placeholder, const std::string& text) {
    return "<p:sp><p:nvSpPr><p:cNvPr id='1' name='x'/><p:nvPr><p:ph type='" + placeholder +
           "'/></p:nvPr></p:nvSpPr>"
           "<p:txBody><a:p><a:r><a:rPr/><a:t>" +
           text + "</a:t></a:r></a:p></p:txBody></p:sp>";
}

TEST(PptxReader, SlidesInTheirOrderWithNotes) {
    const Parts parts{
        {"_rels/.rels", List(Relationship("r1", "officeDocument", "ppt/presentation.xml"))},
        {"ppt/presentation.xml", "<p:presentation xmlns:p='p' xmlns:r='" +
                                     std::string(kTransitional) +
                                     "'><p:sldIdLst><p:sldId id='5' r:id='b'/><p:sldId id='6' "
                                     "r:id='a'/></p:sldIdLst></p:presentation>"},
        {"ppt/_rels/presentation.xml.rels", List(Relationship("a", "slide", "slides/slide1.xml") +
                                                 Relationship("b", "slide", "slides/slide2.xml"))},
        {"ppt/slides/slide1.xml", Slide(Shape("body", "last"))},
        {"ppt/slides/slide2.xml",
         Slide(Shape("ctrTitle", "Title") +
               Shape("body", "first</a:t></a:r><a:br/><a:r><a:t>line") +
               "<p:graphicFrame><a:tbl><a:tr><a:tc><a:txBody><a:p><a:r><a:t>cell</a:t></a:r></"
               "a:p></a:txBody></a:tc></a:tr></a:tbl></p:graphicFrame>")},
        {"ppt/slides/_rels/slide2.xml.rels",
         List(Relationship("n", "notesSlide", "../notesSlides/notesSlide1.xml") +
              Relationship("d", "diagramData", "../diagrams/data1.xml") +
              Relationship("c", "comments", "../comments/comment1.xml"))},
        {"ppt/notesSlides/notesSlide1.xml",
         Slide(Shape("body", "say this") + Shape("sldNum", "7"))},
        {"ppt/diagrams/data1.xml",
         "<dgm:dataModel xmlns:dgm='d' "
         "xmlns:a='a'><dgm:t><a:p><a:r><a:t>step</a:t></a:r></a:p></dgm:t></dgm:dataModel>"},
        {"ppt/comments/comment1.xml",
         "<p:cmLst xmlns:p='p'><p:cm><p:text>why?</p:text></p:cm></p:cmLst>"}};
    EXPECT_EQ(ReadWith(ReadPptx, MakeZip(parts)).text,
              "[page1][h1]Title[/h1][p]first[br]line[/p][table][tr][td][p]cell[/p][/td][/tr][/"
              "table][p]step[/p]"
              "[note][p]say this[/p][/note][note]why?[/note][/page1][page2][p]last[/p][/page2]");
}

TEST(PptxReader, RealPresentations) {
    EXPECT_NE(ReadWith(ReadPptx, LoadOffice("tbl-cell.pptx"))
                  .text.find("[td][p]vert anchor is top[/p][/td]"),
              std::string::npos);
    EXPECT_EQ(ReadWith(ReadPptx, LoadOffice("shp-access-chart.pptx")).Words(),
              "Series 1 Category 1 Category 2 Category 3 Category 4 Series 2 Series 3");
}

// ---- OpenDocument

constexpr const char* kOdfSpaces =
    " xmlns:office='urn:oasis:names:tc:opendocument:xmlns:office:1.0' "
    "xmlns:text='urn:oasis:names:tc:opendocument:xmlns:text:1.0'"
    " xmlns:table='urn:oasis:names:tc:opendocument:xmlns:table:1.0' "
    "xmlns:draw='urn:oasis:names:tc:opendocument:xmlns:drawing:1.0'"
    " xmlns:style='urn:oasis:names:tc:opendocument:xmlns:style:1.0' "
    "xmlns:dc='http://purl.org/dc/elements/1.1/'"
    " xmlns:svg='urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0' "
    "xmlns:xlink='http://www.w3.org/1999/xlink'"
    " xmlns:presentation='urn:oasis:names:tc:opendocument:xmlns:presentation:1.0' "
    "xmlns:meta='urn:oasis:names:tc:opendocument:xmlns:meta:1.0'";

std::string Odf(const std::string& root, const std::string& content) {
    return "<?xml version='1.0'?><office:" + root + kOdfSpaces + ">" + content +
           "</office:" + root + ">";
}

Parts OdfParts(const std::string& body) {
    return {{"mimetype", "application/vnd.oasis.opendocument.text"},
            {"content.xml",
             Odf("document-content",
                 "<office:automatic-styles><style:style/></office:automatic-styles><office:body>" +
                     body + "</office:body>")}};
}

TEST(OpenDocumentReader, Text) {
    Parts parts = OdfParts(
        "<office:text><text:tracked-changes><text:p>deleted</text:p></text:tracked-changes>"
        "<text:h text:outline-level='2'>He<text:span>ad</text:span></text:h>"
        "<text:p>  a <text:s text:c='2'/>b<text:tab/>c<text:line-break/>d</text:p>"
        "<text:p>with<office:annotation><dc:creator>Ann</dc:creator><dc:date>2024</"
        "dc:date><text:p>why</text:p></office:annotation>in"
        "<text:note><text:note-citation>1</text:note-citation><text:note-body><text:p>foot</"
        "text:p></text:note-body></text:note> it "
        "<text:title>field</text:title></text:p>"
        "<text:p>x<draw:frame><draw:text-box><text:p>boxed</text:p></draw:text-box></draw:frame>y"
        "<draw:frame><draw:image "
        "xlink:href='Pictures/1.png'/><svg:title>sun</svg:title><svg:desc>a "
        "drawing</svg:desc></draw:frame></text:p>"
        "<text:list><text:list-item><text:p>one</text:p></text:list-item></text:list></"
        "office:text>");
    parts.emplace_back(
        "styles.xml",
        Odf("document-styles",
            "<office:master-styles><style:master-page><style:header><text:p>top</text:p></"
            "style:header>"
            "<style:footer><text:p>bottom</text:p></"
            "style:footer><draw:frame><draw:text-box><text:p>Click to add</text:p>"
            "</draw:text-box></draw:frame></style:master-page></office:master-styles>"));
    parts.emplace_back(
        "meta.xml",
        Odf("document-meta",
            "<office:meta><dc:title>T</dc:title><meta:initial-creator>Ann</"
            "meta:initial-creator><dc:creator>Bob</dc:creator>"
            "<meta:keyword>k1</meta:keyword><meta:keyword>k2</meta:keyword><meta:user-defined "
            "meta:name='Case'>77</meta:user-defined></office:meta>"));
    parts.emplace_back("Pictures/1.png", "x");
    const RecordingSink sink = ReadWith(ReadOpenDocument, MakeZip(parts), true);
    EXPECT_EQ(sink.text,
              "[p]top[/p][h2]Head[/h2][p]a   b\tc[br]d[/p][p]within it "
              "field[/p][note][p]why[/p][/note][note][p]foot[/p][/note]"
              "[p]xy sun a drawing[/p][p]boxed[/p][ul][li][p]one[/p][/li][/ul][p]bottom[/p]");
    EXPECT_EQ(sink.fields,
              (Fields{{"title", "T"}, {"author", "Ann"}, {"keywords", "k1, k2"}, {"case", "77"}}));
    EXPECT_EQ(sink.pictures.size(), 1U);
}

TEST(OpenDocumentReader, SheetsWithRepeatedCells) {
    const std::string sheet =
        "<office:spreadsheet><table:table table:name='Data'><table:table-row><table:table-cell "
        "table:number-columns-repeated='2'/>"
        "<table:table-cell "
        "table:number-columns-repeated='3'><text:p>x</text:p></"
        "table:table-cell><table:table-cell><text:p>y</text:p></table:table-cell>"
        "<table:table-cell table:number-columns-repeated='16384'/></table:table-row>"
        "<table:table-row table:number-rows-repeated='1048576'><table:table-cell "
        "table:number-columns-repeated='16384'/></table:table-row></table:table></"
        "office:spreadsheet>";
    const char* text = "[page1][h1]Data[/h1][table][tr][td][/td][td][/td][td][p]x[/p][/td][td][/"
                       "td][td][/td][td][p]y[/p][/td][/tr][/table][/page1]";
    EXPECT_EQ(ReadWith(ReadOpenDocument, MakeZip(OdfParts(sheet))).text, text);
    EXPECT_EQ(
        ReadWith(ReadOpenDocument, Odf("document", "<office:body>" + sheet + "</office:body>"))
            .text,
        text)
        << "as one file";
}

TEST(OpenDocumentReader, Slides) {
    EXPECT_EQ(
        ReadWith(ReadOpenDocument,
                 MakeZip(OdfParts("<office:presentation><draw:page><draw:frame "
                                  "presentation:class='title'><draw:text-box><text:p>Title</"
                                  "text:p></draw:text-box></draw:frame>"
                                  "<draw:custom-shape><text:p>shape</text:p></draw:custom-shape>"
                                  "<presentation:notes><draw:frame><draw:text-box><text:p>say</"
                                  "text:p></draw:text-box></draw:frame></presentation:notes></"
                                  "draw:page></office:presentation>")))
            .text,
        "[page1][h1]Title[/h1][p]shape[/p][note][p]say[/p][/note][/page1]");
}

TEST(OpenDocumentReader, RealText) {
    const RecordingSink sink = ReadWith(ReadOpenDocument, LoadOffice("welcome.odt"), true);
    EXPECT_NE(
        sink.text.find("[note][ul][li][p]And it can do rich annotations too![/p][/li][/ul][/note]"),
        std::string::npos);
    EXPECT_EQ(sink.fields.at("author"), "John Doe");
    EXPECT_EQ(sink.pictures.size(), 1U);
}

// ---- EPUB

Parts BookParts() {
    return {
        {"mimetype", "application/epub+zip"},
        {"META-INF/container.xml",
         "<container xmlns='urn:oasis:names:tc:opendocument:xmlns:container'><rootfiles><rootfile "
         "full-path='OEBPS/book.opf'/></rootfiles></container>"},
        {"OEBPS/book.opf",
         "<package "
         "xmlns:dc='http://purl.org/dc/elements/1.1/'><metadata><dc:title>Tales</"
         "dc:title><dc:creator>Ann</dc:creator></metadata>"
         "<manifest><item id='a' href='one%20a.xhtml' media-type='application/xhtml+xml'/><item "
         "id='b' href='two.xhtml' media-type='application/xhtml+xml'/>"
         "<item id='c' href='unused.css' media-type='text/css'/></manifest><spine><itemref "
         "idref='b'/><itemref idref='a'/></spine></package>"},
        {"OEBPS/one a.xhtml", "<html><head><title>no</title></head><body><p>last<img "
                              "src='../img/x.png' alt='pic'/></p></body></html>"},
        {"OEBPS/two.xhtml",
         "<?xml version='1.0' encoding='utf-8'?><html><body><h1>Erst</h1><p>für</p></body></html>"},
        {"img/x.png", "x"}};
}

TEST(EpubReader, SpineOrder) {
    const RecordingSink sink = ReadWith(ReadEpub, MakeZip(BookParts()), true);
    EXPECT_EQ(sink.text, "[h1]Erst[/h1][p]für[/p][p]last pic[/p]");
    EXPECT_EQ(sink.fields, (Fields{{"title", "Tales"}, {"author", "Ann"}}));
    EXPECT_EQ(sink.pictures.size(), 1U);
    EXPECT_NE(
        ReadWith(ReadEpub, LoadOffice("test.epub")).text.find("[h1]Chapter 2: More Content[/h1]"),
        std::string::npos);
}

// ---- Trouble

ReadState StateOf(Kind kind, const std::string& bytes) {
    RecordingSink sink;
    MemberRecorder members;
    try {
        ReadDocument(kind, {bytes, {}}, sink, members);
    } catch (const ReadError& error) {
        return error.state;
    }
    return sink.problems.empty() ? ReadState::Read : ReadState::Partly;
}

TEST(OfficeReaders, PasswordsAreTold) {
    EXPECT_EQ(StateOf(Kind::Docx, LoadOffice("test-protected.docx")), ReadState::Encrypted);
    EXPECT_EQ(StateOf(Kind::Xlsx, LoadOffice("encryptSHA512.xlsx")), ReadState::Encrypted);
    Parts odt = OdfParts("<office:text/>");
    odt.emplace_back("META-INF/manifest.xml",
                     "<m:manifest xmlns:m='m'><m:file-entry "
                     "m:full-path='content.xml'><m:encryption-data/></m:file-entry></m:manifest>");
    EXPECT_EQ(StateOf(Kind::OpenDocument, MakeZip(odt)), ReadState::Encrypted);
    Parts book = BookParts();
    book.emplace_back("META-INF/encryption.xml",
                      "<encryption><CipherReference URI='OEBPS/font.otf'/></encryption>");
    EXPECT_EQ(StateOf(Kind::Epub, MakeZip(book)), ReadState::Read) << "a scrambled font";
    book.back().second = "<encryption><CipherReference URI='OEBPS/two.xhtml'/><CipherReference "
                         "URI='OEBPS/one%20a.xhtml'/></encryption>";
    EXPECT_EQ(StateOf(Kind::Epub, MakeZip(book)), ReadState::Encrypted);
}

TEST(OfficeReaders, DamageCostsOnlyWhatIsDamaged) {
    Parts parts = DocxParts("<w:p><w:r><w:t>whole</w:t></w:r></w:p>",
                            Relationship("f", "footnotes", "footnotes.xml"));
    parts.emplace_back("word/footnotes.xml",
                       Word("footnotes", "<w:footnote><w:p><w:r><w:t>note</w:t></w:r></w:p>"));
    RecordingSink sink = ReadWith(ReadDocx, MakeZip(parts));
    EXPECT_EQ(sink.Words(), "whole note");
    ASSERT_EQ(sink.problems.size(), 1U);
    EXPECT_EQ(sink.problems[0], "word/footnotes.xml is malformed at line 1");

    std::string long_;
    for (int i = 0; i < 20'000; ++i)
        long_ += "<w:p><w:r><w:t>word" + std::to_string(i * 7919 % 10'007) + "</w:t></w:r></w:p>";
    std::string bytes =
        MakeZip({{"word/_rels/document.xml.rels", List("")},
                 {"word/document.xml", Word("document", "<w:body>" + long_ + "</w:body>")}});
    bytes.resize(bytes.size() / 2); // a broken download: no table of contents
    EXPECT_EQ(DetectKind({bytes, "x"}), Kind::Docx);
    sink = ReadWith(ReadDocx, bytes);
    EXPECT_GT(sink.Words().size(), 50'000U);
    ASSERT_EQ(sink.problems.size(), 2U);
    EXPECT_EQ(sink.problems[0], "the end of the file is missing");
    EXPECT_EQ(sink.problems[1], "word/document.xml is damaged");

    for (const Kind kind :
         {Kind::Docx, Kind::Xlsx, Kind::Xlsb, Kind::Pptx, Kind::OpenDocument, Kind::Epub}) {
        EXPECT_EQ(StateOf(kind, MakeZip({{"other.txt", "x"}})), ReadState::Damaged);
        EXPECT_EQ(StateOf(kind, "PK\3\4 no zip at all"), ReadState::Damaged);
    }
}

TEST(OfficeReaders, BombsAreCut) {
    const std::string bomb(80 * 1024 * 1024, ' ');
    const RecordingSink sink =
        ReadWith(ReadDocx, MakeZip(DocxParts("<w:p><w:r><w:t>small</w:t></w:r></w:p>" + bomb)));
    EXPECT_EQ(sink.Words(), "small");
    ASSERT_EQ(sink.problems.size(), 1U);
    EXPECT_EQ(sink.problems[0], "word/document.xml is larger than what is unpacked");
}

} // namespace
} // namespace engine
