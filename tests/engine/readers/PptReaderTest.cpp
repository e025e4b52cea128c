// PPT: whole, locked, and damaged.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CompoundFile.h"
#include "tests/engine/readers/OldOffice.h"

#include <gtest/gtest.h>

#include <zlib.h>

namespace engine {
namespace {

constexpr const char* kReport =
    "[page1][p]Titel der ersten Folie[/p][p]Erster Punkt mit Ümläuten[/p]"
    "[p]Unterpunkt Žižkov[/p][p]Fußzeile der Folien[/p][note]Kommentar zur Folie[/note]"
    "[note][p]Notiz des Sprechers eins[/p][/note][/page1]"
    "[page2][p]Versteckte Folie[/p][p]Freier Textkasten Кириллица[br]zweite Zeile[/p]"
    "[p]Text in Gruppe[/p][p]Rechteck in Gruppe[/p][/page2]"
    "[page3][p]Tabelle auf Folie[/p][table][tr][td][p]Kopf A[/p][/td][td][p]Kopf B[/p][/td][/tr]"
    "[tr][td][p]Wert 1[/p][/td][td][p]Wert 2[/p][/td][/tr][/table][/page3]";

// A presentation of objects with the numbers 1, 2, …; the first one is the document.
std::string Presentation(const std::vector<std::string>& objects) {
    Binary document, directory, user;
    directory.U32(1 | objects.size() << 20);
    for (const std::string& object : objects) {
        directory.U32(document.bytes.size());
        document.Raw(object);
    }
    const std::size_t directoryAt = document.bytes.size();
    document.Raw(Record(0x1772, directory.bytes));
    const std::size_t editAt = document.bytes.size();
    Binary edit;
    edit.U32(0).U32(0).U32(0).U32(directoryAt).U32(1).To(28);
    document.Raw(Record(0x0FF5, edit.bytes));
    user.U32(0x14).U32(0xE391C05F).U32(editAt).To(20);
    return MakeCompound(
        {{"PowerPoint Document", document.bytes}, {"Current User", Record(0x0FF6, user.bytes)}});
}

std::string SlidePlace(unsigned object) {
    return Record(0x03F3, Binary().U32(object).U32(0).U32(0).U32(256).U32(0).bytes);
}

std::string Text(unsigned type, std::u16string_view text) {
    return Record(0x0F9F, Binary().U32(type).bytes) + Record(0x0FA0, Wide(text));
}

// A slide whose shapes have these text boxes.
std::string Slide(const std::vector<std::string>& boxes) {
    std::string shapes;
    for (const std::string& box : boxes)
        shapes += Record(0xF004, Record(0xF00D, box), true);
    return Record(0x03EE, Record(0x040C, Record(0xF002, Record(0xF003, shapes, true), true), true),
                  true);
}

TEST(PptReader, SlidesNotesCommentsAndTables) {
    const std::string bytes = ReadTestFile("legacy/report.ppt");
    EXPECT_EQ(DetectKind({bytes, "x.doc"}), Kind::Ppt);
    const RecordingSink sink = ReadOld(Kind::Ppt, bytes).sink;
    EXPECT_EQ(sink.text, kReport);
    EXPECT_EQ(sink.fields.at("title"), "Jahresbericht");
    EXPECT_TRUE(sink.problems.empty());
    EXPECT_EQ(ReadOld(Kind::Ppt, ReadTestFile("legacy/plain.ppt")).sink.text,
              "[page1][h1]Lorem ipsum[/h1][/page1]");
}

TEST(PptReader, TextsOfTheSlideListAndFields) {
    const std::string list = SlidePlace(2) + Text(0, u"The title") + Text(1, u"One\rTwo") +
                             SlidePlace(3) + Text(6, u"Orphan");
    const std::string document = Record(0x03E8, Record(0x0FF0, list, true), true);
    const std::string reference = Record(0x0F9E, Binary().U32(1).bytes);
    const std::string numbered = Record(0x0F9F, Binary().U32(4).bytes) +
                                 Record(0x0FA8, "Page * of 5 * 2") +
                                 Record(0x0FD8, Binary().U32(5).bytes);
    const RecordingSink sink =
        ReadOld(Kind::Ppt, Presentation({document, Slide({reference, numbered})})).sink;
    EXPECT_EQ(sink.text, "[page1][p]One[/p][p]Two[/p][p]Page  of 5 * 2[/p][h1]The title[/h1]"
                         "[/page1][page2][h1]Orphan[/h1][/page2]");
    EXPECT_EQ(sink.problems, std::vector<std::string>{"slide 2 is missing"});
}

TEST(PptReader, LostListOfSlides) {
    const std::string bytes = ReadTestFile("legacy/report.ppt");
    const CompoundFile whole(bytes);
    const RecordingSink sink =
        ReadOld(Kind::Ppt,
                MakeCompound({{"PowerPoint Document", *whole.Stream("PowerPoint Document")}}))
            .sink;
    for (const char* words : {"Titel der ersten Folie", "Notiz des Sprechers eins",
                              "Versteckte Folie", "Wert 2", "Kommentar zur Folie"})
        EXPECT_NE(sink.text.find(words), std::string::npos) << words;
    EXPECT_EQ(sink.problems, std::vector<std::string>{"the list of the slides is damaged"});
}

TEST(PptReader, SlidesThatShareTheirBytesAreNoBomb) {
    std::string list;
    for (int i = 0; i < 500; ++i)
        list += SlidePlace(2);
    const std::u16string text(50'000, u'x');
    const RecordingSink sink =
        ReadOld(Kind::Ppt, Presentation({Record(0x03E8, Record(0x0FF0, list, true), true),
                                         Slide({Text(4, text)})}))
            .sink;
    EXPECT_GT(sink.text.size(), text.size());
    EXPECT_LT(sink.text.size(), text.size() * 2);
    EXPECT_EQ(sink.problems.size(), 1U);
}

TEST(PptReader, PasswordsAndOlderFormats) {
    const auto stateOf = [](const std::string& bytes) {
        try {
            ReadOld(Kind::Ppt, bytes);
        } catch (const ReadError& error) {
            return error.state;
        }
        return ReadState::Read;
    };
    EXPECT_EQ(stateOf(ReadTestFile("legacy/rc4cryptoapi_password.ppt")), ReadState::Encrypted);
    EXPECT_EQ(stateOf(MakeCompound({{"EncryptedPackage", "x"}})), ReadState::Encrypted);
    EXPECT_EQ(stateOf(MakeCompound({{"PP40", "x"}})), ReadState::Unknown);
}

TEST(PptReader, EmbeddedWorkbookIsAnAttachment) {
    const std::string object = MakeCompound({{"Workbook", std::string("\x09\x08\x10\x00", 4)}});
    uLongf size = compressBound(object.size());
    std::string packed(size, '\0');
    ASSERT_EQ(compress(reinterpret_cast<Bytef*>(packed.data()), &size,
                       reinterpret_cast<const Bytef*>(object.data()), object.size()),
              Z_OK);
    packed.resize(size);
    const std::string head =
        Record(0x0FC3, Binary().U32(1).U32(0).U32(1).U32(0).U32(2).U32(0).bytes);
    const std::string list = Record(0x0409, Record(0x0FCC, head, true), true);
    const OldReading reading =
        ReadOld(Kind::Ppt,
                Presentation({Record(0x03E8, list + Record(0x0FF0, SlidePlace(3), true), true),
                              Record(0x1011, Binary().U32(object.size()).bytes + packed, false, 1),
                              Slide({Text(4, u"Slide")})}));
    EXPECT_EQ(reading.sink.text, "[page1][p]Slide[/p][/page1]");
    ASSERT_EQ(reading.members.Paths(), std::vector<std::string>{"object 1.xls"});
    EXPECT_TRUE(CompoundFile(reading.members.members[0].content).Has("Workbook"));
}

TEST(PptReader, SurvivesDamage) {
    EXPECT_GT(ReadDamagedCopies(Kind::Ppt, ReadTestFile("legacy/report.ppt")), 150);
}

} // namespace
} // namespace engine
