// PDF: the text of pages in reading order, where it stands, and what is said of bad files.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/PdfDocument.h"
#include "engine/readers/PdfXmp.h"
#include "engine/readers/Reader.h"
#include "tests/engine/readers/MemberRecorder.h"
#include "tests/engine/readers/PdfMaker.h"
#include "tests/engine/readers/RecordingSink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace engine {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

void ReadInto(const std::string& file, RecordingSink& sink) {
    MemberRecorder attachments;
    ReadPdf({file, "file.pdf"}, sink, attachments);
    EXPECT_TRUE(sink.Whole()) << sink.text;
}
RecordingSink Read(const std::string& file) {
    RecordingSink sink;
    ReadInto(file, sink);
    return sink;
}
RecordingSink ReadLines(const std::vector<std::string>& lines) {
    PdfMaker maker;
    maker.AddPage(PdfMaker::Lines(lines));
    return Read(maker.Make());
}
ReadState StateOf(const std::string& file) {
    try {
        Read(file);
    } catch (const ReadError& error) {
        return error.state;
    }
    return ReadState::Read;
}

TEST(PdfReader, PagesParagraphsAndLines) {
    PdfMaker maker;
    maker.AddPage("BT /F 10 Tf 12 TL 20 360 Td (First line) Tj T* (second line) Tj "
                  "0 -40 Td (New paragraph) Tj ET");
    maker.AddPage("BT /F 10 Tf 20 360 Td (Caf\\351) Tj 100 0 Td (Price 12) Tj ET");
    maker.AddPage("");
    const RecordingSink sink = Read(maker.Make());
    EXPECT_EQ(sink.text, "[page1][p]First line[br]second line[/p][p]New paragraph[/p][/page1]"
                         "[page2][p]Café Price 12[/p][/page2][page3][/page3]");
    EXPECT_THAT(sink.problems, IsEmpty());
}

TEST(PdfReader, JoinsBrokenWordsOnlyWhereSure) {
    // A column with one right edge: the hyphen only breaks the word.
    EXPECT_EQ(ReadLines({"this justified para-", "graph of text stands", "in a column of three",
                         "lines and then more."})
                  .Words(),
              "this justified paragraph of text stands in a column of three lines and then more.");
    // The second half stays on the upper line.
    EXPECT_THAT(ReadLines({"justified para-", "graph of text x", "and then more y"}).text,
                HasSubstr("[p]justified paragraph[br]of text x[br]"));
    // Ragged text breaks at hyphens that belong to the word.
    EXPECT_THAT(ReadLines({"it was a well-", "known place by the sea", "and"}).Words(),
                HasSubstr("well- known"));
    // Unless the word stands on the page as one.
    EXPECT_THAT(ReadLines({"a wonderful day", "was a wonder-", "ful day by the cold sea"}).Words(),
                HasSubstr("was a wonderful day by"));
    // Or, in a column, with its hyphen, or as two words.
    EXPECT_THAT(ReadLines({"self-made men are ab", "so they are all self-", "made and very proud b",
                           "of all they have done"})
                    .Words(),
                HasSubstr("self- made"));
    EXPECT_THAT(ReadLines({"the north is cold and", "the sea was the north-",
                           "sea so they said it x", "and then went home it"})
                    .Words(),
                HasSubstr("north- sea"));
    EXPECT_THAT(
        ReadLines({"nur durch diesen Ein-", "und Ausgang geht es x", "weiter in das Haus xx"})
            .Words(),
        HasSubstr("Ein- und"));
    EXPECT_THAT(
        ReadLines({"numbers such as 1990-", "and names as in Rhein-", "Main are not joined x"})
            .Words(),
        HasSubstr("1990- and names as in Rhein- Main"));
    EXPECT_THAT(ReadLines({"a soft hy\\310", "phen"}).Words(), HasSubstr("a soft hyphen"));
}

TEST(PdfReader, PropertiesComeFromInformationAndMetadata) {
    PdfMaker maker;
    maker.info = "/Title(Report \\(final\\))/Author<FEFF004C00F60077>";
    const int xmp = maker.AddStream(
        "/Type/Metadata/Subtype/XML",
        "<?xpacket?><x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
        "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
        "xmlns:dc='http://purl.org/dc/elements/1.1/' xmlns:pdf='http://ns.adobe.com/pdf/1.3/' "
        "pdf:Keywords='one; two'><dc:title><rdf:Alt><rdf:li>Not this</rdf:li></rdf:Alt></dc:title>"
        "<dc:description><rdf:Alt><rdf:li xml:lang='x-default'>About it</rdf:li><rdf:li>Dazu"
        "</rdf:li></rdf:Alt></dc:description></rdf:Description></rdf:RDF></x:xmpmeta>");
    maker.catalogExtra = "/Metadata " + std::to_string(xmp) + " 0 R";
    maker.AddPage("");
    const RecordingSink sink = Read(maker.Make());
    EXPECT_EQ(sink.fields.at("title"), "Report (final)");
    EXPECT_EQ(sink.fields.at("author"), "Löw");
    EXPECT_EQ(sink.fields.at("subject"), "About it");
    EXPECT_EQ(sink.fields.at("keywords"), "one; two");
    EXPECT_EQ(ReadXmp("<broken").title, "");
}

TEST(PdfReader, NotesFieldsAndBookmarks) {
    PdfMaker maker;
    const int drawn = maker.AddStream(
        "/Type/XObject/Subtype/Form/BBox[0 0 100 20]/Resources<</Font<</F 3 0 R>>>>",
        "BT /F 10 Tf 2 5 Td (APPROVED) Tj ET");
    const std::string stamp = std::to_string(drawn) + " 0 R";
    maker.AddPage(PdfMaker::Lines({"Page text"}),
                  "/Annots[<</Subtype/Text/Contents(A remark)/Rect[10 10 30 30]>>"
                  "<</Subtype/Popup/Contents(A remark)/Rect[0 0 9 9]>>"
                  "<</Subtype/Stamp/Rect[100 100 200 120]/AP<</N " +
                      stamp +
                      ">>>>"
                      "<</Subtype/Widget/FT/Tx/V(Typed in)/Rect[10 50 90 70]>>"
                      "<</Subtype/Widget/FT/Tx/Ff 8192/V(secret)/Rect[10 80 90 99]>>"
                      "<</Subtype/Text/F 2/Contents(hidden)/Rect[10 10 30 30]>>]");
    const int outlines = maker.Add("<<>>");
    const int second = maker.Add("<</Title(Chapter two)>>");
    const int first = maker.Add("<</Title(Chapter one)/Next " + std::to_string(second) +
                                " 0 R/First " + std::to_string(second + 1) + " 0 R>>");
    ASSERT_EQ(first, second + 1); // the first chapter is its own child: a circle
    static_cast<void>(outlines);
    maker.catalogExtra = "/Outlines<</First " + std::to_string(first) + " 0 R>>";
    EXPECT_EQ(Read(maker.Make()).text,
              "[page1][p]Page text[/p][note]A remark[/note][note]APPROVED[/note]"
              "[note]Typed in[/note][/page1][note][p]Chapter one[/p][p]Chapter two[/p][/note]");
}

TEST(PdfReader, EveryCharacterStandsSomewhere) {
    PdfMaker maker;
    maker.AddPage(PdfMaker::Lines({"one tw\\366"}),
                  "/Rotate 90/Annots[<</Subtype/Text/Contents(note)/Rect[10 20 30 40]>>]");
    const std::string file = maker.Make();
    PdfDocument pdf(file);
    const PdfPageText page = pdf.Page(0, true);
    ASSERT_EQ(page.utf8, "one twönote");
    ASSERT_EQ(page.characters.size(), 10U); // blanks stand nowhere, "ö" is one
    EXPECT_EQ(page.characters[5].offset, 6U);
    // Text at 20, 360 of an upright page stands near the upper right corner once it is turned.
    const PdfQuad& o = page.characters[0].quad;
    EXPECT_NEAR(o[3].x, 360, 10);
    EXPECT_NEAR(o[3].y, 20, 1);
    EXPECT_GT(o[2].y, o[3].y); // reads downwards
    EXPECT_NEAR(page.characters[9].quad[0].x, 20, 0.1);
    EXPECT_NEAR(page.characters[9].quad[2].y, 30, 0.1);
    const PdfPageText plain = pdf.Page(0, false);
    EXPECT_EQ(plain.utf8, page.utf8);
    EXPECT_TRUE(plain.characters.empty());
}

TEST(PdfReader, TextOutsideThePageIsNotText) {
    PdfMaker maker;
    maker.AddPage("BT /F 10 Tf 20 360 Td (inside) Tj 600 0 Td (outside) Tj ET");
    EXPECT_EQ(Read(maker.Make()).Words(), "inside");
}

TEST(PdfReader, PasswordsOfUsersAndOwners) {
    EXPECT_EQ(StateOf(ReadTestFile("pdf/aes-256.pdf")), ReadState::Encrypted);
    EXPECT_EQ(StateOf(ReadTestFile("pdf/rc4-40.pdf")), ReadState::Encrypted);
    EXPECT_THAT(Read(ReadTestFile("pdf/issue-625-identity-cmap.pdf")).text,
                HasSubstr("91-504 Łódź"));
}

TEST(PdfReader, FormsOfRealPrograms) {
    EXPECT_THAT(Read(ReadTestFile("pdf/AcroForm_TEST.pdf")).text,
                HasSubstr("[note]1[/note][note]f[/note][note]m1[/note]")); // as shown
}

// A file specification around an embedded stream.
std::string FileOf(PdfMaker& maker, const std::string& name, const std::string& content) {
    const int stream =
        maker.AddStream("/Type/EmbeddedFile/Params<</ModDate(D:20200102030405Z)>>", content);
    const std::string reference = std::to_string(stream) + " 0 R";
    return "<</Type/Filespec/F(" + name + ")/EF<</F " + reference + ">>>>";
}

TEST(PdfReader, EmbeddedFilesAreHandedOut) {
    PdfMaker maker;
    const std::string twice =
        std::to_string(maker.Add(FileOf(maker, "../data.xml", "<twice/>"))) + " 0 R";
    const std::string kid = std::to_string(maker.Add("<</Names[(a)" + twice + "(b)" +
                                                     FileOf(maker, "note.txt", "first") +
                                                     "(c)<</F(elsewhere.txt)>>]>>"));
    const std::string loop =
        std::to_string(maker.Add("<</Kids[" + kid + " 0 R " + kid + " 0 R]>>"));
    maker.catalogExtra =
        "/Names<</EmbeddedFiles<</Kids[" + loop + " 0 R " + loop + " 0 R]>>>>/AF[" + twice + "]";
    maker.AddPage(PdfMaker::Lines({"Page text"}),
                  "/Annots[<</Subtype/FileAttachment/Contents(see here)/Rect[1 1 9 9]/FS" +
                      FileOf(maker, "note.txt", "second") + ">>]");
    RecordingSink sink;
    MemberRecorder files;
    ReadPdf({maker.Make(), "file.pdf"}, sink, files);
    EXPECT_THAT(files.Paths(), ElementsAre("data.xml", "note.txt", "note (2).txt"));
    EXPECT_EQ(files.At("data.xml").content, "<twice/>");
    EXPECT_EQ(files.At("note (2).txt").content, "second");
    EXPECT_EQ(files.At("note.txt").member.modified, 1'577'934'245);
    EXPECT_THAT(sink.text, HasSubstr("[note]see here[/note]"));

    MemberRecorder none;
    none.unwanted = {"data.xml", "note.txt", "note (2).txt"};
    RecordingSink again;
    ReadPdf({maker.Make(), "file.pdf"}, again, none);
    EXPECT_THAT(none.Paths(), IsEmpty());
}

TEST(PdfReader, DamagedAndHugeFilesInsideAreTold) {
    PdfMaker maker;
    const int broken = maker.AddStream("/Filter/FlateDecode", "this is not deflated");
    std::string runs(300'000, '\0'); // every two bytes stand for 128
    for (std::size_t i = 0; i < runs.size(); i += 2)
        runs[i] = '\x81';
    std::string names = "(0)<</F(broken)/EF<</F " + std::to_string(broken) + " 0 R>>>>";
    for (int i = 1; i < 20; ++i)
        names += "(" + std::to_string(i) + ")<</F(runs)/EF<</F " +
                 std::to_string(maker.AddStream("/Filter/RunLengthDecode", runs)) + " 0 R>>>>";
    maker.catalogExtra = "/Names<</EmbeddedFiles<</Names[" + names + "]>>>>";
    maker.AddPage("");
    RecordingSink sink;
    MemberRecorder files;
    ReadPdf({maker.Make(), "file.pdf"}, sink, files);
    ASSERT_GT(files.members.size(), 2U);
    EXPECT_EQ(files.members[0].member.problem, "cannot be unpacked: broken data");
    std::size_t bytes = 0;
    for (const MemberRecorder::Kept& kept : files.members)
        bytes += kept.content.size();
    EXPECT_EQ(bytes, kMaxPdfFileBytes);
    EXPECT_TRUE(files.members.back().member.cut);
    EXPECT_THAT(sink.problems, ElementsAre("its embedded files are larger than what is unpacked"));
}

TEST(PdfReader, HiddenLayersAreText) {
    PdfMaker maker;
    const std::string layer =
        std::to_string(maker.Add("<</Type/OCG/Name(Hidden)/Usage<</View<</ViewState/OFF>>>>>>")) +
        " 0 R";
    maker.catalogExtra =
        "/OCProperties<</OCGs[" + layer + "]/D<</BaseState/OFF/OFF[" + layer + "]>>>>";
    const int form = maker.AddStream("/Type/XObject/Subtype/Form/BBox[0 0 400 400]/OC " + layer +
                                         "/Resources<</Font<</F 3 0 R>>>>",
                                     "BT /F 10 Tf 20 100 Td (form) Tj ET");
    maker.AddPage("/OC /L BDC BT /F 10 Tf 20 300 Td (layer) Tj ET EMC /X Do", "",
                  "/Properties<</L " + layer + ">>/XObject<</X " + std::to_string(form) + " 0 R>>");
    EXPECT_EQ(Read(maker.Make()).Words(), "layer form");
}

TEST(PdfReader, FormsThatStandInXmlOnly) {
    PdfMaker maker;
    const std::string packet =
        std::to_string(maker.AddStream(
            "",
            "<template "
            "xmlns='http://www.xfa.org/schema/xfa-template/2.8/'><subform><field name='n'><caption>"
            "<value><text>Your "
            "name</text></value></caption><script>hidden()</script></field></subform>"
            "</template>")) +
        " 0 R";
    const std::string data =
        std::to_string(maker.AddStream("", "<xfa:datasets "
                                           "xmlns:xfa='http://www.xfa.org/schema/xfa-data/1.0/"
                                           "'><xfa:data><form><n>Ann &amp; Lee</n>"
                                           "<empty/></form></xfa:data></xfa:datasets>")) +
        " 0 R";
    const std::string xfa = "/XFA[(template)" + packet + "(datasets)" + data + "]";
    maker.AddPage(PdfMaker::Lines({"Please wait"}));
    maker.catalogExtra = "/AcroForm<</Fields[]" + xfa + ">>";
    EXPECT_EQ(Read(maker.Make()).Words(), "Please wait Your name Ann & Lee");
    // Fields that stand on the pages have the same values.
    maker.catalogExtra = "/AcroForm<</Fields[<</T(n)>>]" + xfa + ">>";
    EXPECT_EQ(Read(maker.Make()).Words(), "Please wait");
}

TEST(PdfReader, DamagedFilesAreRepairedOrTold) {
    PdfMaker maker;
    maker.AddPage(PdfMaker::Lines({"survives"}));
    const std::string file = maker.Make();
    EXPECT_EQ(Read("leading rubbish\n" + file).Words(), "survives");
    EXPECT_EQ(Read(file.substr(0, file.find("xref\n"))).Words(), "survives");

    PdfMaker broken;
    broken.AddPage(PdfMaker::Lines({"whole"}));
    const int stream = broken.AddStream("/Filter/FlateDecode", "this is not deflated");
    std::string text = broken.Make();
    broken.AddPage("", "/Contents " + std::to_string(stream) + " 0 R");
    const RecordingSink sink = Read(broken.Make());
    EXPECT_EQ(sink.Words(), "whole");
    EXPECT_THAT(sink.problems, ElementsAre("1 of 2 pages are damaged"));
    EXPECT_THAT(Read(ReadTestFile("pdf/zen_of_python_corrupted.pdf")).text,
                HasSubstr("Namespaces are one honking great idea"));

    EXPECT_EQ(StateOf(""), ReadState::Damaged);
    EXPECT_EQ(StateOf("%PDF-1.4\nnothing"), ReadState::Damaged);
    EXPECT_EQ(StateOf(PdfMaker().Make()), ReadState::Damaged); // no pages
}

TEST(PdfReader, PicturesWithoutTextAreTold) {
    EXPECT_THAT(Read(ReadTestFile("pdf/pdf-with-jbig2.pdf")).problems,
                ElementsAre("pages are pictures without text"));
    PdfMaker maker;
    maker.AddPage("q 10 0 0 10 0 0 cm BI /W 1 /H 1 /BPC 8 /CS /G ID x EI Q");
    EXPECT_THAT(Read(maker.Make()).problems, ElementsAre("pages are pictures without text"));
    PdfMaker lines;
    lines.AddPage("0 0 m 100 100 l S");
    EXPECT_THAT(Read(lines.Make()).problems, IsEmpty());
}

// Stops in the middle, as a cap does.
class StoppingSink final : public DocumentSink {
  public:
    int pages = 0;
    void Field(std::string_view, std::string_view) override {}
    void Text(std::string_view) override {
        if (pages == 2)
            throw StopReading();
    }
    void Open(Block block, int) override { pages += block == Block::Page ? 1 : 0; }
    void Close(Block) override {}
    void Break() override {}
    void Incomplete(std::string_view) override {}
};

TEST(PdfReader, SinksMayStopTheRead) {
    PdfMaker maker;
    for (int i = 0; i < 5; ++i)
        maker.AddPage(PdfMaker::Lines({"text"}));
    StoppingSink sink;
    MemberRecorder attachments;
    EXPECT_THROW(ReadPdf({maker.Make(), "f.pdf"}, sink, attachments), StopReading);
    EXPECT_EQ(sink.pages, 2);
}

} // namespace
} // namespace engine
