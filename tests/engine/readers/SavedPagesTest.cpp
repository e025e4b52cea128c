// Saved web pages, compiled help, FictionBook and XPS.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/engine/readers/MemberRecorder.h"
#include "tests/engine/readers/Packages.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

using namespace std::string_literals;

// ---- Saved web pages

const std::string kWebArchive =
    "From: <Saved by Blink>\r\nSnapshot-Content-Location: http://example.com/\r\n"
    "Subject: =?utf-8?Q?Seite?=\r\nDate: Sat, 24 Mar 2007 23:00:00 +0200\r\n"
    "MIME-Version: 1.0\r\nContent-Type: multipart/related; type=\"text/html\";\r\n"
    "\tboundary=\"b\"\r\n\r\n--b\r\nContent-Type: text/css\r\n\r\np { color: red }\r\n"
    "--b\r\nContent-Type: text/html; charset=windows-1251\r\nContent-ID: <frame>\r\n\r\n"
    "<title>Frame</title><p>\xCF\xF0\r\n--b\r\nContent-Type: text/html\r\n"
    "Content-Transfer-Encoding: quoted-printable\r\nContent-ID: <root>\r\n\r\n"
    "<html><head><meta charset=3Dutf-8><title>Der =C3=9Cberblick</title></head>"
    "<body><h1>Gr=C3=BC=C3=9Fe</h1><img src=3D\"cid:pic\" alt=3DBild></body></html>\r\n"
    "--b\r\nContent-Type: image/png\r\nContent-ID: <pic>\r\nContent-Transfer-Encoding: base64\r\n"
    "\r\niVBORw0KGgo=\r\n--b--\r\n";

TEST(MhtReader, PagesInOrder) {
    RecordingSink sink = ReadWith(ReadMht, kWebArchive, true);
    EXPECT_EQ(sink.text, "[p]Пр[/p][h1]Grüße[/h1][p]Bild[/p]");
    ASSERT_EQ(sink.pictures.size(), 1U);
    EXPECT_EQ(sink.pictures[0].first, "image/png");
    EXPECT_EQ(sink.fields.at("title"), "Frame") << "the first page is the root";
    std::string started = kWebArchive;
    started.replace(started.find("type=\"text/html\""), 16, "start=\"<root>\"");
    sink = ReadWith(ReadMht, started);
    EXPECT_EQ(sink.text, "[h1]Grüße[/h1][p]Bild[/p][p]Пр[/p]");
    EXPECT_EQ(sink.fields.at("title"), "Der Überblick");
    EXPECT_THROW((void)ReadWith(ReadMht, "MIME-Version: 1.0\r\nContent-Type: image/png\r\n\r\nx"),
                 ReadError);
    for (std::size_t length = 0; length < started.size(); length += 7) {
        try {
            (void)ReadWith(ReadMht, started.substr(0, length));
        } catch (const ReadError&) {
        }
    }
}

TEST(MhtReader, MailStaysMail) {
    const std::string related = "MIME-Version: 1.0\nContent-Type: multipart/related; boundary=b\n";
    const std::string part = "\n--b\nContent-Type: text/html\nContent-Location: file:///C:/a.htm\n"
                             "\n<p>x\n--b--\n";
    EXPECT_EQ(DetectKind({kWebArchive, "x"}), Kind::Mht);
    EXPECT_EQ(DetectKind({related + part, "x.doc"}), Kind::Mht) << "as word processors save it";
    EXPECT_EQ(DetectKind({related + "From: a@b\nTo: c@d\nSubject: x\n" + part, "x"}), Kind::Mail);
    EXPECT_EQ(DetectKind({related + "From: a@b\nSubject: x\nDate: x\n" + part, "x.mht"}),
              Kind::Mail);
    EXPECT_EQ(DetectKind({related + "Subject: x\n\n--b\n\n<p>\n--b--\n", "x.mhtml"}), Kind::Mht);
}

// ---- Compiled help

TEST(ChmReader, TopicsInTheOrderOfTheContents) {
    const std::string bytes = ReadTestFile("help/help.chm");
    EXPECT_EQ(DetectKind({bytes, "x"}), Kind::Chm);
    const RecordingSink sink = ReadWith(ReadChm, bytes);
    EXPECT_EQ(sink.text,
              "[h1]Глава первая[/h1][page1][h2]Второй раздел[/h2][p]Вторая, в UTF-8: größer[/p]"
              "[/page1][page2][h2]First & last[/h2][h2]Первая страница[/h2][p]Текст без кодировки."
              "[/p][/page2][page3][h1]Third[/h1][table][tr][td]one[/td][td]two[/td][/tr][/table]"
              "[/page3][page4][p]Nobody lists me[/p][/page4]");
    EXPECT_EQ(sink.fields.at("title"), "Справка");
    EXPECT_TRUE(sink.problems.empty());
}

TEST(ChmReader, HostileInputEnds) {
    const std::string whole = ReadTestFile("help/help.chm");
    const auto read = [](const std::string& bytes) {
        try {
            (void)ReadWith(ReadChm, bytes);
        } catch (const ReadError&) {
        }
    };
    for (std::size_t length = 0; length < whole.size(); length += 61)
        read(whole.substr(0, length));
    std::uint32_t state = 7;
    for (int round = 0; round < 400; ++round) {
        std::string flipped = whole;
        for (int i = 0; i < 1 + round % 8; ++i) {
            state = state * 1664525 + 1013904223;
            // The header and the directory are where lengths and chains stand.
            const std::size_t span = round % 2 == 0 ? 0x200 : flipped.size();
            flipped[(state >> 8) % span] = static_cast<char>(state >> 24);
        }
        read(flipped);
    }
}

// ---- FictionBook

TEST(Fb2Reader, BookAndNotes) {
    const std::string book =
        "<?xml version='1.0' encoding='windows-1251'?><FictionBook "
        "xmlns='http://www.gribuser.ru/xml/fictionbook/2.0' xmlns:l='http://www.w3.org/1999/xlink'>"
        "<description><title-info><author><first-name>\xC8\xE2\xE0\xED</first-name>"
        "<last-name>\xCF.</last-name></author><book-title>Book</book-title><annotation><p>One</p>"
        "<p>two</p></annotation><keywords>a, b</keywords></title-info><document-info><author>"
        "<nickname>maker</nickname></author></document-info><publish-info><publisher>House"
        "</publisher></publish-info></description><body><title><p>Part</p><p>one</p></title>"
        "<epigraph><p>Said</p><text-author>Who</text-author></epigraph><section><title><p>Ch</p>"
        "</title><p>Text<a l:href='#n1' type='note'>[1]</a>.</p><poem><title><p>Song</p></title>"
        "<stanza><v>la</v><v>lu</v></stanza></poem><table><tr><th>h</th><td>d</td></tr></table>"
        "<section><subtitle>Sub</subtitle><p><image l:href='#i' alt='Sea'/>end</p></section>"
        "</section></body><body name='notes'><title><p>Notes</p></title><section id='n1'><title>"
        "<p>1</p></title><p>Note</p></section></body><binary id='i'>AAAA</binary></FictionBook>";
    EXPECT_EQ(DetectKind({book, "x"}), Kind::Fb2);
    const RecordingSink sink = ReadWith(ReadFb2, book);
    EXPECT_EQ(sink.text,
              "[h1]Part[br]one[/h1][quote][p]Said[/p][p]Who[/p][/quote][h2]Ch[/h2][p]Text[1].[/p]"
              "[h2]Song[/h2][p]la[br]lu[/p][table][tr][td]h[/td][td]d[/td][/tr][/table][h4]Sub[/h4]"
              "[p]Sea end[/p][p]Notes[/p][note][p]1[/p][p]Note[/p][/note]");
    EXPECT_EQ(sink.fields.at("author"), "Иван П.");
    EXPECT_EQ(sink.fields.at("title"), "Book");
    EXPECT_EQ(sink.fields.at("comments"), "One two");
    EXPECT_EQ(sink.fields.at("keywords"), "a, b");
    EXPECT_EQ(sink.fields.at("publisher"), "House");
    for (std::size_t length = 0; length < book.size(); length += 11) {
        try {
            (void)ReadWith(ReadFb2, book.substr(0, length));
        } catch (const ReadError&) {
        }
    }
}

// ---- XPS

std::string Glyphs(double x, double y, const std::string& text) {
    return "<Glyphs FontUri='/f.ttf' FontRenderingEmSize='16' OriginX='" + std::to_string(x) +
           "' OriginY='" + std::to_string(y) + "' Fill='#ff000000' UnicodeString='" + text + "'/>";
}

std::string MakeXps(bool inPieces) {
    const std::string space = " xmlns='http://schemas.microsoft.com/xps/2005/06'";
    const auto page = [&](const std::string& glyphs) {
        return "<FixedPage Width='800' Height='1000' xml:lang='de'" + space + ">" + glyphs +
               "</FixedPage>";
    };
    const std::string first =
        page(Glyphs(50, 60, "Größe") + Glyphs(300, 60, "rechts") +
             "<Canvas RenderTransform='1,0,0,1,0,200'>" + Glyphs(50, 60, "{}{x}") + "</Canvas>");
    Parts parts{
        {"[Content_Types].xml",
         "<Types xmlns='http://schemas.openxmlformats.org/package/2006/content-types'><Default "
         "Extension='fdseq' ContentType='application/vnd.ms-package.xps-"
         "fixeddocumentsequence+xml'/></Types>"},
        {"_rels/.rels",
         "<Relationships xmlns='http://schemas.openxmlformats.org/package/2006/relationships'>"
         "<Relationship Id='a' Type='http://schemas.microsoft.com/xps/2005/06/fixedrepresentation'"
         " Target='/s.fdseq'/><Relationship Id='b' Type='http://schemas.openxmlformats.org/package/"
         "2006/relationships/metadata/core-properties' Target='/core.xml'/></Relationships>"},
        {"core.xml",
         "<c xmlns:dc='http://purl.org/dc/elements/1.1/'><dc:title>Titel</dc:title></c>"},
        {"s.fdseq", "<FixedDocumentSequence" + space +
                        "><DocumentReference Source='/d.fdoc'/>"
                        "</FixedDocumentSequence>"},
        {"d.fdoc", "<FixedDocument" + space +
                       "><PageContent Source='/2.fpage'/><PageContent "
                       "Source='/1.fpage'/></FixedDocument>"},
        {"1.fpage", page(Glyphs(50, 60, "Ende"))}};
    if (inPieces) {
        parts.emplace_back("2.fpage/[0].piece", first.substr(0, 100));
        parts.emplace_back("2.fpage/[1].last.piece", first.substr(100));
    } else {
        parts.emplace_back("2.fpage", first);
    }
    return MakeZip(parts);
}

TEST(XpsReader, PagesAndProperties) {
    for (const bool inPieces : {false, true}) {
        const std::string bytes = MakeXps(inPieces);
        EXPECT_EQ(DetectKind({bytes, "x.zip"}), Kind::Xps);
        const RecordingSink sink = ReadWith(ReadXps, bytes);
        EXPECT_EQ(sink.text,
                  "[page1][p]Größe rechts[/p][p]{x}[/p][/page1][page2][p]Ende[/p][/page2]");
        EXPECT_EQ(sink.fields.at("title"), "Titel");
        EXPECT_EQ(sink.problems.size(), 1U) << "the font is missing";
    }
}

TEST(XpsReader, HostileInputEnds) {
    const std::string whole = MakeXps(false);
    const auto read = [](const std::string& bytes) {
        try {
            (void)ReadWith(ReadXps, bytes);
        } catch (const ReadError&) {
        }
    };
    for (std::size_t length = 0; length < whole.size(); length += 53)
        read(whole.substr(0, length));
    std::uint32_t state = 3;
    for (int round = 0; round < 200; ++round) {
        std::string flipped = whole;
        state = state * 1664525 + 1013904223;
        flipped[(state >> 8) % flipped.size()] = static_cast<char>(state >> 24);
        read(flipped);
    }
    EXPECT_THROW((void)ReadWith(ReadXps, MakeZip({{"a.fdseq", "x"}})), ReadError);
}

} // namespace
} // namespace engine
