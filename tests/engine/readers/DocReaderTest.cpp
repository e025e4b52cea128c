// DOC of all ages.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/engine/readers/OldOffice.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

using namespace std::string_literals;

using Fields = std::map<std::string, std::string>;

struct Piece {
    std::size_t characters = 0;
    std::size_t at = 0; // in the document's stream
    bool wide = false;
};

constexpr std::size_t kTextAt = 1024;

// The header of today's layout, the text behind it; length is that of the main text.
std::string Document(const std::string& text, std::size_t length, std::size_t tableSize,
                     unsigned flags = 0x0200) {
    Binary document;
    document.U16(0xA5EC).U16(0xC1).To(10).U16(flags).To(24);
    document.U32(kTextAt).U32(kTextAt + text.size()).To(76).U32(length).To(152).U16(93);
    document.To(418).U32(0).U32(tableSize).To(kTextAt).Raw(text);
    return document.bytes;
}

std::string Table(const std::vector<Piece>& pieces) {
    Binary table;
    table.U8(2).U32((pieces.size() + 1) * 4 + pieces.size() * 8).U32(0);
    std::size_t end = 0;
    for (const Piece& piece : pieces)
        table.U32(end += piece.characters);
    for (const Piece& piece : pieces)
        table.U16(0).U32(piece.wide ? piece.at : piece.at * 2 | 0x40000000).U16(0);
    return table.bytes;
}

std::string DocOf(const std::string& text, std::size_t length, const std::vector<Piece>& pieces) {
    const std::string table = Table(pieces);
    return MakeCompound(
        {{"WordDocument", Document(text, length, table.size())}, {"1Table", table}});
}

// The layout of 1991 (version 45) and that of 1993 (version 101); single bytes.
std::string OldDoc(unsigned version, unsigned language, const std::string& text) {
    Binary document;
    document.U16(version < 101 ? 0xA5DB : 0xA5DC).U16(version).To(6).U16(language).To(24);
    document.U32(kTextAt).U32(kTextAt + text.size()).To(52).U32(text.size()).To(kTextAt);
    return document.Raw(text).bytes;
}

TEST(DocReader, EverythingThatADocumentHolds) {
    const RecordingSink sink = ReadOld(Kind::Doc, ReadTestFile("legacy/workshop.doc")).sink;
    EXPECT_EQ(sink.fields, (Fields{{"title", "Gründung der Werkstatt"},
                                   {"subject", "Protokoll"},
                                   {"author", "Anna Bergström"},
                                   {"keywords", "Werkstatt, Žižkov"},
                                   {"comments", "Ein Kommentar zum Ganzen"},
                                   {"aktenzeichen", "AZ-4711"},
                                   {"seitenzahl", "12"}}));
    EXPECT_EQ(
        sink.text,
        "[p]Kopfzeile des Vereins[/p][h1]Der große Titel[/h1][h1]Erste Überschrift[/h1]"
        "[p]Ein Absatz mit einer Fußnote und einer Endnote und weiter geht es.[/p]"
        "[note][p]Text der ersten Fußnote.[/p][p]Zweiter Absatz der Fußnote.[/p][/note]"
        "[note][p]Text der Endnote.[/p][/note]"
        "[p]Hier steht ein Kommentar. Links: sichtbarer Verweis. Hidden: verborgenerText. "
        "Deleted: vornach eingefügt Ende.[/p][note][p]Das ist eine Anmerkung.[/p][/note]"
        "[p]Zeile eins[br]Zeile zwei\tTab; soft\u00ADhyphen, geschützt\u2011Bindestrich, nbsp "
        "hier. Кириллица Ελληνικά 日本語 emoji 😀.[/p][h2]Tabelle[/h2]"
        "[table][tr][td][p]A1 Zelle[/p][/td][td][p]B1 Zelle[/p][p]zweiter Absatz in B1[/p][/td]"
        "[td][/td][/tr][tr][td][p]A2[/p][/td][td][table][tr][td][p]innen1[/p][/td]"
        "[td][p]innen2[/p][/td][/tr][/table][p]nach der inneren[/p][/td][td][p]C2[/p][/td][/tr]"
        "[/table][ul][li][p]Punkt eins[/p][ul][li][p]Unterpunkt[/p][/li][/ul][/li]"
        "[li][p]Punkt zwei[/p][/li][/ul][ol][li][p]Nummer eins[/p][/li][li][p]Nummer zwei[/p][/li]"
        "[/ol][p]Vor dem Kasten nach dem Kasten.[/p][p]Text im Textkasten.[/p]"
        "[p]Absatz mit Form.[/p][p]Text in der Form[/p][p] Bild im Text.[/p]"
        "[p]Nach dem Seitenumbruch.[/p]"
        "[p]Feld: markiert, Autor Anna Bergström, Datum 5/6/24.[/p][p]Fußzeile, Seite 2[/p]");
    EXPECT_TRUE(sink.problems.empty());
}

TEST(DocReader, ForeignDocumentAndPassword) {
    const std::string bytes = ReadTestFile("legacy/test.doc");
    EXPECT_EQ(DetectKind({bytes, "test.pdf"}), Kind::Doc);
    const RecordingSink sink = ReadOld(Kind::Doc, bytes).sink;
    EXPECT_EQ(sink.Words(), "This is a sample text available in page 1 This second part of the "
                            "text is in Page 2");
    EXPECT_EQ(sink.fields.at("title"), "Test Tika title");
    EXPECT_EQ(sink.fields.at("terminé le"), "2016-07-06 22:00");
    try {
        ReadOld(Kind::Doc, ReadTestFile("legacy/rc4cryptoapi_password.doc"));
        FAIL();
    } catch (const ReadError& error) {
        EXPECT_EQ(error.state, ReadState::Encrypted);
    }
}

TEST(DocReader, PiecesFieldsAndMarks) {
    // Behind each other in the file, but not in the text; one half in single bytes.
    const std::string tail = Wide(u"Ünd \xD83D\xDE00\x1Fnd\rNext\x0B line\r");
    const std::string head = "Caf\xE9 \x13 HYPERLINK \x14shown\x15 \xF1\x02\x01\x80 ";
    EXPECT_EQ(ReadOld(Kind::Doc, DocOf(tail + head, head.size() + tail.size() / 2,
                                       {{head.size(), kTextAt + tail.size(), false},
                                        {tail.size() / 2, kTextAt, true}}))
                  .sink.text,
              "[p]Café shown ñ€ Ünd 😀\u00ADnd[/p][p]Next[br] line[/p]");
    // A field without an end hides its own paragraph at most.
    const std::string broken = "a\x13 PAGE\rb\rc\x15\r";
    EXPECT_EQ(ReadOld(Kind::Doc, DocOf(broken, broken.size(), {{broken.size(), kTextAt, false}}))
                  .sink.text,
              "[p]a[/p][p]b[/p][p]c[/p]");
}

TEST(DocReader, DamagedPieces) {
    // The table is gone: the place of the text that the header tells is still good.
    const std::string text = "Still here\r";
    const RecordingSink lost =
        ReadOld(Kind::Doc, MakeCompound({{"WordDocument", Document(text, text.size(), 100)}})).sink;
    EXPECT_EQ(lost.text, "[p]Still here[/p]");
    EXPECT_EQ(lost.problems.size(), 1U);
    // A hundred thousand pieces that are all the same bytes: no more text than the file has.
    const std::string line(30'000, 'x');
    const std::vector<Piece> same(20'000, Piece{line.size(), kTextAt, false});
    const RecordingSink bomb =
        ReadOld(Kind::Doc, DocOf(line, line.size() * same.size(), same)).sink;
    EXPECT_GT(bomb.text.size(), line.size());
    EXPECT_LT(bomb.text.size(), line.size() * 2);
    EXPECT_EQ(bomb.problems.size(), 1U);
}

TEST(DocReader, DocumentsOfOldPrograms) {
    struct Case {
        unsigned version, language;
        std::string text;
        const char* shown;
    };
    const std::vector<Case> cases{
        {45, 0x0409, "Word of 1991, \x80t\xE9\r", "[p]Word of 1991, €té[/p]"},
        {101, 0x0419, "\xCF\xF0\xE8\xE2\xE5\xF2\r", "[p]Привет[/p]"},
        {104, 0x0411, "\x93\xFA\x96{\x8C\xEA\r", "[p]日本語[/p]"},
    };
    for (const Case& each : cases) {
        const std::string bytes = OldDoc(each.version, each.language, each.text);
        EXPECT_EQ(DetectKind({bytes, "x"}), Kind::Doc);
        EXPECT_EQ(ReadOld(Kind::Doc, bytes).sink.text, each.shown);
        EXPECT_EQ(ReadOld(Kind::Doc, MakeCompound({{"WordDocument", bytes}})).sink.text,
                  each.shown);
    }
}

TEST(DocReader, EmbeddedDocumentsAreAttachments) {
    Binary native;
    native.U32(0).U16(2).Raw("minutes.txt\0C:\\x\\minutes.txt\0"s).U32(0x30000).U32(2).Raw("x\0"s);
    native.U32(5).Raw("hello");
    const std::string text = "Text\r", table = Table({{text.size(), kTextAt, false}});
    const std::string inner = "inner\r", innerTable = Table({{inner.size(), kTextAt, false}});
    const OldReading reading = ReadOld(
        Kind::Doc, MakeCompound({{"WordDocument", Document(text, text.size(), table.size())},
                                 {"1Table", table},
                                 {"ObjectPool/_1/\1Ole10Native", native.bytes},
                                 {"ObjectPool/_2/WordDocument",
                                  Document(inner, inner.size(), innerTable.size())},
                                 {"ObjectPool/_2/1Table", innerTable},
                                 {"ObjectPool/_3/Equation Native", "nothing to read"}}));
    EXPECT_EQ(reading.sink.text, "[p]Text[/p]");
    ASSERT_EQ(reading.members.members.size(), 2U);
    EXPECT_EQ(reading.members.At("minutes.txt").content, "hello");
    EXPECT_EQ(ReadOld(Kind::Doc, reading.members.At("object 2.doc").content).sink.text,
              "[p]inner[/p]");
}

TEST(DocReader, SurvivesDamage) {
    EXPECT_GT(ReadDamagedCopies(Kind::Doc, ReadTestFile("legacy/workshop.doc")), 150);
    EXPECT_GT(ReadDamagedCopies(Kind::Doc, OldDoc(101, 0x0409, std::string(3000, 'a'))), 150);
}

} // namespace
} // namespace engine
