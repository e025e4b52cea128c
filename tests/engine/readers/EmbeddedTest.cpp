// What office documents hold besides their own text: embedded files, objects, charts, drawings;
// and documents that are one XML file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/engine/readers/OldOffice.h"
#include "tests/engine/readers/Packages.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

using namespace std::string_literals;

std::string Link(const std::string& id, const std::string& type, const std::string& target) {
    return "<Relationship Id='" + id +
           "' Type='http://schemas.openxmlformats.org/officeDocument/2006/relationships/" + type +
           "' Target='" + target + "'/>";
}

std::string Links(const std::string& links) {
    return "<Relationships>" + links + "</Relationships>";
}

// A file packed as an object: size, mark, label, origin, marks, copy, content, Unicode names.
std::string Native(const std::string& content) {
    Binary native;
    native.U32(0)
        .U16(2)
        .Raw("Gr\xF6\xDF"
             "e.txt\0C:\\x\\Gr.txt\0"s)
        .U16(0)
        .U16(3)
        .U32(4)
        .Raw("C:\\\0"s);
    native.U32(content.size()).Raw(content);
    for (const std::u16string& text : {u"C:\\x"s, u"Größe.txt"s, u"C:\\y"s})
        native.U32(text.size()).Raw(Wide(text));
    return native.bytes;
}

TEST(EmbeddedDocuments, OfOfficePackages) {
    const std::string chart =
        "<c:chartSpace xmlns:c='c' xmlns:a='a'><c:title><a:p><a:r><a:t>Turnover</a:t></a:r></a:p>"
        "</c:title><c:cat><c:strCache><c:pt><c:v>East</c:v></c:pt></c:strCache></c:cat>"
        "<c:val><c:numCache><c:pt><c:v>4.3</c:v></c:pt></c:numCache></c:val></c:chartSpace>";
    const Parts parts{
        {"_rels/.rels", Links(Link("r", "officeDocument", "word/document.xml"))},
        {"word/document.xml",
         "<w:document "
         "xmlns:w='w'><w:body><w:p><w:r><w:t>text</w:t></w:r></w:p></w:body></w:document>"},
        {"word/_rels/document.xml.rels", Links(Link("c", "chart", "charts/chart1.xml") +
                                               Link("p", "package", "embeddings/Plan.docx"))},
        {"word/charts/chart1.xml", chart},
        {"word/charts/_rels/chart1.xml.rels",
         Links(Link("d", "package", "../embeddings/Numbers.xlsx") +
               Link("u", "chartUserShapes", "../drawings/drawing1.xml"))},
        {"word/drawings/drawing1.xml",
         "<c:userShapes xmlns:c='c' "
         "xmlns:a='a'><a:p><a:r><a:t>arrow</a:t></a:r></a:p></c:userShapes>"},
        {"word/embeddings/Numbers.xlsx", "the chart's own"},
        {"word/embeddings/Plan.docx", "a document"},
        {"word/embeddings/oleObject1.bin", MakeCompound({{"\1Ole10Native", Native("packed")}})},
        {"word/embeddings/oleObject2.bin", MakeCompound({{"WordDocument", "x"}, {"1Table", "y"}})},
        {"word/embeddings/oleObject3.bin", MakeCompound({{"Equation Native", "x"}})},
        {"word/embeddings/oleObject4.bin", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 damaged"}};
    MemberRecorder members;
    const RecordingSink sink = ReadWith(ReadDocx, MakeZip(parts), false, &members);
    EXPECT_EQ(sink.text, "[p]text[/p][p]Turnover[/p][p]East[/p][p]arrow[/p]");
    EXPECT_EQ(members.Paths(),
              (std::vector<std::string>{"Plan.docx", "Größe.txt", "object 3.doc"}));
    EXPECT_EQ(members.At("Größe.txt").content, "packed");
    EXPECT_EQ(DetectKind({members.members[2].content, "x"}), Kind::Doc);
    EXPECT_EQ(sink.problems, std::vector<std::string>{"an embedded document is damaged"});
}

TEST(EmbeddedDocuments, WhatStandsOnASheet) {
    const Parts parts{
        {"_rels/.rels", Links(Link("r", "officeDocument", "xl/workbook.xml"))},
        {"xl/workbook.xml", "<workbook xmlns:r='http://x/relationships'><sheets><sheet name='S' "
                            "r:id='a'/></sheets></workbook>"},
        {"xl/_rels/workbook.xml.rels", Links(Link("a", "worksheet", "worksheets/sheet1.xml"))},
        {"xl/worksheets/sheet1.xml", "<worksheet/>"},
        {"xl/worksheets/_rels/sheet1.xml.rels",
         Links(Link("c", "comments", "../comments1.xml") +
               Link("t", "threadedComment", "../threadedComments/t1.xml") +
               Link("d", "drawing", "../drawings/drawing1.xml"))},
        {"xl/comments1.xml",
         "<comments><authors><author>Ann</author><author>tc={12}</author></authors><commentList>"
         "<comment authorId='0'><text><r><t>old</t></r></text></comment>"
         "<comment authorId='1'><text><t>[Threaded comment] Update. Comment: "
         "new</t></text></comment></commentList></comments>"},
        {"xl/threadedComments/t1.xml", "<ThreadedComments><threadedComment><text>new</text></"
                                       "threadedComment><threadedComment><text>reply</text></"
                                       "threadedComment></ThreadedComments>"},
        {"xl/drawings/drawing1.xml",
         "<xdr:wsDr xmlns:xdr='x' xmlns:a='a'><xdr:pic><xdr:cNvPr descr='a tree'/></xdr:pic>"
         "<xdr:sp><xdr:cNvPr name='Box "
         "1'/><a:p><a:r><a:t>boxed</a:t></a:r></a:p></xdr:sp></xdr:wsDr>"},
        {"xl/drawings/_rels/drawing1.xml.rels",
         Links(Link("g", "diagramData", "../diagrams/data1.xml"))},
        {"xl/diagrams/data1.xml",
         "<dgm:dataModel xmlns:dgm='d' "
         "xmlns:a='a'><dgm:t><a:p><a:r><a:t>step</a:t></a:r></a:p></dgm:t></dgm:dataModel>"},
        {"xl/embeddings/Inner.xlsx", "a workbook"}};
    MemberRecorder members;
    EXPECT_EQ(ReadWith(ReadXlsx, MakeZip(parts), false, &members).text,
              "[page1][h1]S[/h1][note]old[/note][note]new[/note][note]reply[/note]"
              "[p]a tree[/p][p]boxed[/p][p]step[/p][/page1]");
    EXPECT_EQ(members.Paths(), std::vector<std::string>{"Inner.xlsx"});
}

TEST(EmbeddedDocuments, ObjectsOfOpenDocument) {
    const std::string spaces = " xmlns:office='urn:oasis:names:tc:opendocument:xmlns:office:1.0' "
                               "xmlns:text='urn:oasis:names:tc:opendocument:xmlns:text:1.0' "
                               "xmlns:table='urn:oasis:names:tc:opendocument:xmlns:table:1.0' "
                               "xmlns:draw='urn:oasis:names:tc:opendocument:xmlns:drawing:1.0' "
                               "xmlns:chart='urn:oasis:names:tc:opendocument:xmlns:chart:1.0'";
    const auto content = [&](const std::string& body) {
        return "<office:document-content" + spaces + "><office:body>" + body +
               "</office:body></office:document-content>";
    };
    const Parts parts{
        {"mimetype", "application/vnd.oasis.opendocument.text"},
        {"content.xml", content("<office:text><text:p>before<draw:frame><draw:object/></"
                                "draw:frame></text:p></office:text>")},
        {"Object 1/content.xml",
         "<math xmlns='http://www.w3.org/1998/Math/MathML'><semantics><mrow><mi>E</mi><mo>=</mo>"
         "<msup><mi>mc</mi><mn>2</mn></msup></mrow><annotation>E = "
         "mc^2</annotation></semantics></math>"},
        {"Object 2/content.xml", content("<office:chart><chart:chart><chart:title><text:p>Turnover<"
                                         "/text:p></chart:title></chart:chart></office:chart>")},
        {"Object 3/content.xml",
         content("<office:spreadsheet><table:table "
                 "table:name='Inner'><table:table-row><table:table-cell><text:p>cell</text:p></"
                 "table:table-cell></table:table-row></table:table></office:spreadsheet>")},
        {"Object 4", MakeCompound({{"\1Ole10Native", Native("packed")}})}};
    MemberRecorder members;
    EXPECT_EQ(ReadWith(ReadOpenDocument, MakeZip(parts), false, &members).text,
              "[p]before[/p][p]E = mc 2[/p][p]Turnover[/p][h1]Inner[/h1][table][tr][td][p]cell[/p]"
              "[/td][/tr][/table]");
    EXPECT_EQ(members.Paths(), std::vector<std::string>{"Größe.txt"});
}

TEST(OfficeXml, TextsOf2003AndFlatPackages) {
    const std::string body =
        "<w:body><w:p><w:pPr><w:pStyle w:val='Heading2'/></w:pPr><w:r><w:t>Head</w:t></w:r></w:p>"
        "<w:p><w:r><w:t>a</w:t><w:tab/><w:t>b</w:t><w:br/><w:t>c</w:t></w:r>"
        "<w:r><w:instrText>PAGE</w:instrText><w:pict><w:binData>AAAA</w:binData></w:pict></w:r>"
        "<aml:annotation "
        "w:type='Word.Deletion'><aml:content><w:r><w:t>gone</w:t></w:r></aml:content></"
        "aml:annotation>"
        "<aml:annotation "
        "w:type='Word.Comment'><aml:content><w:p><w:r><w:t>why</w:t></w:r></w:p></aml:content></"
        "aml:annotation>"
        "<w:r><w:t>d</w:t></w:r></w:p>"
        "<w:tbl><w:tr><w:tc><w:p><w:r><w:t>cell</w:t></w:r></w:p></w:tc></w:tr></w:tbl></w:body>";
    const std::string text = "[h2]Head[/h2][p]a\tb[br]cd[/p][note][p]why[/p][/note]"
                             "[table][tr][td][p]cell[/p][/td][/tr][/table]";
    const RecordingSink word = ReadWith(
        ReadXml, "<w:wordDocument xmlns:w='http://schemas.microsoft.com/office/word/2003/wordml' "
                 "xmlns:aml='a' xmlns:o='o'>"
                 "<o:DocumentProperties><o:Title>Plan</o:Title><o:Author>Ann</o:Author><o:Pages>7</"
                 "o:Pages></o:DocumentProperties>"
                 "<w:fonts><w:defaultFonts/></w:fonts><w:styles><w:style><w:name "
                 "w:val='x'/></w:style></w:styles>" +
                     body + "</w:wordDocument>");
    EXPECT_EQ(word.text, text);
    EXPECT_EQ(word.fields,
              (std::map<std::string, std::string>{{"title", "Plan"}, {"author", "Ann"}}));
    EXPECT_EQ(
        ReadWith(ReadXml,
                 "<pkg:package xmlns:pkg='http://schemas.microsoft.com/office/2006/xmlPackage' "
                 "xmlns:w='w' xmlns:aml='a'>"
                 "<pkg:part pkg:name='/word/styles.xml' "
                 "pkg:contentType='application/x.styles+xml'><pkg:xmlData><w:p><w:t>no</w:t></"
                 "w:p></pkg:xmlData></pkg:part>"
                 "<pkg:part pkg:name='/word/document.xml' "
                 "pkg:contentType='application/x.document.main+xml'><pkg:xmlData><w:document>" +
                     body + "</w:document></pkg:xmlData></pkg:part></pkg:package>")
            .text,
        text);
}

TEST(OfficeXml, SpreadsheetsOf2003) {
    EXPECT_EQ(
        ReadWith(
            ReadXml,
            "<Workbook xmlns='urn:schemas-microsoft-com:office:spreadsheet' "
            "xmlns:ss='urn:schemas-microsoft-com:office:spreadsheet' xmlns:x='x'>"
            "<Styles><Style ss:ID='s1'><NumberFormat ss:Format='Percent'/></Style></Styles>"
            "<Worksheet ss:Name='Plan'><Table><Row><Cell ss:MergeAcross='1'><Data "
            "ss:Type='String'>a</Data>"
            "<Comment ss:Author='Ann'><ss:Data><B>note</B></ss:Data></Comment></Cell><Cell><Data "
            "ss:Type='Boolean'>1</Data></Cell>"
            "<Cell ss:Index='5' ss:StyleID='s1'><Data ss:Type='Number'>0.256</Data></Cell></Row>"
            "<Row><Cell><Data "
            "ss:Type='DateTime'>2024-02-29T18:30:00.000</Data></Cell></Row></Table>"
            "<WorksheetOptions><PageSetup><Header "
            "x:Data='&amp;CTop'/></PageSetup></WorksheetOptions></Worksheet></Workbook>")
            .text,
        "[page1][h1]Plan[/h1][table][tr][td]a[/td][td][/td][td]TRUE[/td][td][/td][td]25.60%[/td][/"
        "tr]"
        "[tr][td]2024-02-29 18:30[/td][/tr][/table][p]Top[/p][note]note[/note][/page1]");
}

} // namespace
} // namespace engine
