// The smallest packages that readers accept, with a place for each part that they look for.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/fuzz/Packages.h"

#include "tests/fuzz/Packing.h"

#include <algorithm>
#include <array>

namespace fuzz {

using engine::Kind;

namespace {

#define OFFICE "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
#define PACKAGE "http://schemas.openxmlformats.org/package/2006/relationships"

// The relationships of a part: id, last word of the type, target.
#define RELATIONS(list) "<Relationships xmlns=\"" PACKAGE "\">" list "</Relationships>"
#define RELATION(id, type, target)                                                                 \
    "<Relationship Id=\"" id "\" Type=\"" OFFICE "/" type "\" Target=\"" target "\"/>"

const std::vector<Part> kDocx{
    {"[Content_Types].xml", "<Types/>"},
    {"_rels/.rels", RELATIONS(RELATION("r1", "officeDocument", "word/document.xml"))},
    {"word/_rels/document.xml.rels",
     RELATIONS(
         RELATION("r1", "styles", "styles.xml") RELATION("r2", "numbering", "numbering.xml")
             RELATION("r3", "footnotes", "footnotes.xml") RELATION("r4", "endnotes", "endnotes.xml")
                 RELATION("r5", "comments", "comments.xml") RELATION("r6", "header", "header1.xml")
                     RELATION("r7", "footer", "footer1.xml") RELATION("r8", "image", "media/a.png")
                         RELATION("r9", "aFChunk", "chunk.html"))},
    {"word/media/a.png", "\x89PNG\r\n\x1a\n"},
    {"word/chunk.html", "<p>chunk<table><td>cell"},
};

const std::vector<Part> kXlsx{
    {"[Content_Types].xml", "<Types/>"},
    {"_rels/.rels", RELATIONS(RELATION("r1", "officeDocument", "xl/workbook.xml"))},
    {"xl/workbook.xml",
     "<workbook xmlns:r=\"" OFFICE "\"><sheets><sheet name=\"One\" sheetId=\"1\" r:id=\"r1\"/>"
     "<sheet name=\"Two\" sheetId=\"2\" r:id=\"r4\"/></sheets></workbook>"},
    {"xl/_rels/workbook.xml.rels",
     RELATIONS(RELATION("r1", "worksheet", "worksheets/sheet1.xml") RELATION(
         "r2", "sharedStrings", "sharedStrings.xml") RELATION("r3", "styles", "styles.xml")
                   RELATION("r4", "worksheet", "worksheets/sheet2.xml"))},
    {"xl/worksheets/_rels/sheet1.xml.rels",
     RELATIONS(RELATION("r1", "comments", "../comments1.xml")
                   RELATION("r2", "drawing", "../drawings/drawing1.xml")
                       RELATION("r3", "table", "../tables/table1.xml"))},
    {"xl/sharedStrings.xml",
     "<sst><si><t>shared</t></si><si><r><t>rich</t></r><rPh><t>x</t></rPh></si></sst>"},
    {"xl/styles.xml",
     "<styleSheet><numFmts><numFmt numFmtId=\"164\" formatCode=\"yyyy\\-mm\\-dd\"/>"
     "<numFmt numFmtId=\"165\" "
     "formatCode=\"#,##0.00;[Red]-#,##0.00;&quot;none&quot;;@\"/></numFmts>"
     "<cellXfs><xf numFmtId=\"0\"/><xf numFmtId=\"14\"/><xf numFmtId=\"164\"/><xf "
     "numFmtId=\"165\"/>"
     "<xf numFmtId=\"12\"/><xf numFmtId=\"48\"/></cellXfs></styleSheet>"},
};

const std::vector<Part> kPptx{
    {"[Content_Types].xml", "<Types/>"},
    {"_rels/.rels", RELATIONS(RELATION("r1", "officeDocument", "ppt/presentation.xml"))},
    {"ppt/presentation.xml", "<p:presentation xmlns:p=\"p\" xmlns:r=\"" OFFICE "\"><p:sldIdLst>"
                             "<p:sldId id=\"256\" r:id=\"r1\"/></p:sldIdLst></p:presentation>"},
    {"ppt/_rels/presentation.xml.rels", RELATIONS(RELATION("r1", "slide", "slides/slide1.xml"))},
    {"ppt/slides/_rels/slide1.xml.rels",
     RELATIONS(RELATION("r1", "notesSlide", "../notesSlides/notesSlide1.xml")
                   RELATION("r2", "chart", "../charts/chart1.xml")
                       RELATION("r3", "comments", "../comments/comment1.xml")
                           RELATION("r4", "diagramData", "../diagrams/data1.xml"))},
};

const std::vector<Part> kOpenDocument{
    {"mimetype", "application/vnd.oasis.opendocument.text"},
    {"META-INF/manifest.xml", "<manifest/>"},
};

const std::vector<Part> kEpub{
    {"mimetype", "application/epub+zip"},
    {"META-INF/container.xml", "<container><rootfiles><rootfile full-path=\"OEBPS/content.opf\"/>"
                               "</rootfiles></container>"},
    {"OEBPS/content.opf",
     "<package "
     "xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><metadata><dc:title>T</dc:title></metadata>"
     "<manifest><item id=\"a\" href=\"a.xhtml\" media-type=\"application/xhtml+xml\"/>"
     "<item id=\"n\" href=\"toc.ncx\" media-type=\"application/x-dtbncx+xml\"/></manifest>"
     "<spine toc=\"n\"><itemref idref=\"a\"/></spine></package>"},
};

const std::vector<Part> kXlsb{
    {"[Content_Types].xml", "<Types/>"},
    {"_rels/.rels", RELATIONS(RELATION("r1", "officeDocument", "xl/workbook.bin"))},
    {"xl/_rels/workbook.bin.rels",
     RELATIONS(RELATION("rId1", "worksheet", "worksheets/sheet1.bin") RELATION(
         "rId2", "sharedStrings", "sharedStrings.bin") RELATION("rId3", "styles", "styles.bin"))},
    {"xl/worksheets/_rels/sheet1.bin.rels",
     RELATIONS(RELATION("rId1", "comments", "../comments1.bin"))},
    // One sheet, named "A", that the relationship "rId1" leads to.
    {"xl/workbook.bin",
     {"\x83\x01\x00\x8F\x01\x00\x9C\x01\x1A\x00\x00\x00\x00\x01\x00\x00\x00"
      "\x04\x00\x00\x00r\x00I\x00"
      "d\x00"
      "1\x00\x01\x00\x00\x00"
      "A\x00\x90\x01\x00\x84\x01\x00",
      41}},
};

const std::vector<Part> kXps{
    {"[Content_Types].xml", "<Types/>"},
    {"_rels/.rels", "<Relationships xmlns=\"" PACKAGE "\"><Relationship Id=\"r1\" "
                    "Type=\"http://schemas.microsoft.com/xps/2005/06/fixedrepresentation\" "
                    "Target=\"/FixedDocSeq.fdseq\"/></Relationships>"},
    {"FixedDocSeq.fdseq", "<FixedDocumentSequence><DocumentReference "
                          "Source=\"/Documents/1/FixedDoc.fdoc\"/></FixedDocumentSequence>"},
    {"Documents/1/FixedDoc.fdoc",
     "<FixedDocument><PageContent Source=\"Pages/1.fpage\"/></FixedDocument>"},
};

const std::vector<Part> kNothing;

struct Form {
    Kind kind;
    bool compound;
    std::string_view mainPart;
    const std::vector<Part>& others;
};

const std::array kForms{
    Form{Kind::Docx, false, "word/document.xml", kDocx},
    Form{Kind::Xlsx, false, "xl/worksheets/sheet1.xml", kXlsx},
    Form{Kind::Pptx, false, "ppt/slides/slide1.xml", kPptx},
    Form{Kind::OpenDocument, false, "content.xml", kOpenDocument},
    Form{Kind::Epub, false, "OEBPS/a.xhtml", kEpub},
    Form{Kind::Xlsb, false, "xl/worksheets/sheet1.bin", kXlsb},
    Form{Kind::Xps, false, "Documents/1/Pages/1.fpage", kXps},
    Form{Kind::Doc, true, "WordDocument", kNothing},
    Form{Kind::Xls, true, "Workbook", kNothing},
    Form{Kind::Ppt, true, "PowerPoint Document", kNothing},
    Form{Kind::Msg, true, "__properties_version1.0", kNothing},
};

bool IsPacked(std::string_view input) {
    return input.starts_with("PK") || input.starts_with("\xD0\xCF\x11\xE0");
}

} // namespace

std::string DocumentOf(Kind kind, std::string_view input) {
    const auto form = std::find_if(kForms.begin(), kForms.end(),
                                   [&](const Form& each) { return each.kind == kind; });
    if (form == kForms.end() || IsPacked(input))
        return std::string(input);
    std::vector<Part> parts = CutParts(input, form->mainPart);
    AddMissing(parts, form->others);
    return form->compound ? PackCompound(parts) : PackZip(parts);
}

std::string NameOf(Kind kind) {
    switch (kind) {
    case Kind::PlainText:
        return "a.txt";
    case Kind::OpenDocument:
        return "a.odt";
    case Kind::Mail:
        return "a.eml";
    case Kind::WordPerfect:
        return "a.wpd";
    case Kind::Media:
        return "a.jpg";
    case Kind::Archive:
        return "a.7z";
    case Kind::Compressed:
        return "a.txt.gz";
    default:
        return std::string("a.") + engine::KindName(kind);
    }
}

} // namespace fuzz
