// What the libraries for old word processors and spreadsheets read.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/engine/readers/OldOffice.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

using namespace std::string_literals;

std::string WordPerfect(const std::string& text) {
    return Binary().Raw("\xFFWPC").U32(16).U8(1).U8(10).U8(0).U8(1).U32(0).Raw(text).bytes;
}

std::string Lotus() {
    const auto record = [](unsigned type, const std::string& content) {
        return Binary().U16(type).U16(content.size()).Raw(content).bytes;
    };
    const auto label = [&](unsigned column, unsigned row, const std::string& text) {
        return record(15, Binary().U8(0xFF).U16(column).U16(row).Raw(text).U8(0).bytes);
    };
    // 1234.5, as money, and a quarter, as a percentage.
    const std::string amount = "\0\0\0\0\0\x4A\x93\x40"s, quarter = "\0\0\0\0\0\0\xD0\x3F"s;
    return record(0, Binary().U16(0x0404).bytes) +
           record(6, Binary().U16(0).U16(0).U16(3).U16(3).bytes) +
           label(0, 0, "'Umsatz f\x81r M\x84rz") +
           record(14, Binary().U8(0x82).U16(1).U16(0).Raw(amount).bytes) +
           record(14, Binary().U8(0x32).U16(2).U16(1).Raw(quarter).bytes) + record(1, "");
}

// A text of one page with the tables of formats that must follow it.
std::string Write(const std::string& text) {
    constexpr std::size_t kPage = 128;
    const std::size_t end = kPage + text.size(), formats = (end + kPage - 1) / kPage;
    Binary file;
    file.U16(0xBE31).U16(0).U16(0xAB00).To(14).U32(end).U16(formats + 1);
    for (int i = 0; i < 5; ++i)
        file.U16(formats + 2);
    file.To(96).U16(formats + 2).To(kPage).Raw(text);
    for (std::size_t i = 0; i < 2; ++i)
        file.To((formats + i) * kPage)
            .U32(kPage)
            .U32(end)
            .U16(0xFFFF)
            .To((formats + i + 1) * kPage - 1)
            .U8(1);
    return file.bytes;
}

TEST(WordPerfectReader, TextsAndSheets) {
    const std::string letter = WordPerfect("Dear\x0D"
                                           "Anna,\x0Ahello.\x0A");
    EXPECT_EQ(DetectKind({letter, "letter"}), Kind::WordPerfect);
    EXPECT_EQ(ReadOld(Kind::WordPerfect, letter).sink.text, "[p]Dear Anna,[/p][p]hello.[/p]");

    const std::string sheet = Lotus();
    EXPECT_EQ(DetectKind({sheet, "sales"}), Kind::WordPerfect);
    EXPECT_EQ(ReadOld(Kind::WordPerfect, sheet).sink.text,
              "[page1][h1]Sheet1[/h1][table][tr][td]Umsatz für März[/td][td]1234.50[/td][/tr]"
              "[tr][td][/td][td][/td][td]25.00%[/td][/tr][/table][/page1]");

    const std::string note = Write("Caff\xE8 alla citt\xE0\r\n\x80 5\r\n");
    EXPECT_EQ(DetectKind({note, "note"}), Kind::WordPerfect);
    EXPECT_EQ(ReadOld(Kind::WordPerfect, note).sink.text, "[p]Caffè alla città[/p][p]€ 5[/p]");
}

TEST(WordPerfectReader, OrdinaryFilesAreNotTaken) {
    const std::string text = "Just a text.\nWith two lines.\n";
    for (const char* name : {"a.wpd", "a.wps", "a.wk1", "a.wri", "a.wp", "a.123", "a.txt", ""})
        EXPECT_EQ(DetectKind({text, name}), Kind::PlainText) << name;
    EXPECT_EQ(DetectKind({"Caf\xE9, the text of an old editor. Na\xEFve.\r\n"s, "a.wps"}),
              Kind::PlainText);
    EXPECT_EQ(DetectKind({std::string(500, '\0'), "a.wpd"}), Kind::Unknown);
}

TEST(WordPerfectReader, AnEarlyEndPassesThroughTheLibraries) {
    class OneWord final : public DocumentSink {
      public:
        int texts = 0;
        void Field(std::string_view, std::string_view) override {}
        void Text(std::string_view) override {
            ++texts;
            throw StopReading();
        }
        void Open(Block, int) override {}
        void Close(Block) override {}
        void Break() override {}
        void Incomplete(std::string_view) override {}
    };
    for (const std::string& bytes : {WordPerfect("one line\x0A"
                                                 "and two\x0A"),
                                     Lotus(), Write("a\r\nb\r\n")}) {
        OneWord sink;
        EXPECT_THROW(ReadWordPerfect({bytes, "x"}, sink), StopReading);
        EXPECT_EQ(sink.texts, 1);
    }
}

TEST(WordPerfectReader, SurvivesDamage) {
    EXPECT_GT(ReadDamagedCopies(Kind::WordPerfect, WordPerfect(std::string(400, 'a'))), 50);
    EXPECT_GT(ReadDamagedCopies(Kind::WordPerfect, Lotus(), "a.wk1"), 20);
    EXPECT_GT(ReadDamagedCopies(Kind::WordPerfect, Write("One\r\nTwo\r\n"), "a.wri"), 20);
}

} // namespace
} // namespace engine
