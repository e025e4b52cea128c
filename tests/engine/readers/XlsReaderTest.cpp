// Old binary workbooks, XLSB, and workbooks as one XML file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/engine/readers/OldOffice.h"
#include "tests/engine/readers/Packages.h"

#include <gtest/gtest.h>

#include <bit>

namespace engine {
namespace {

using namespace std::string_literals;

// ---- Makers

std::string Rec(unsigned type, const std::string& data) {
    return Binary().U16(type).U16(static_cast<unsigned>(data.size())).Raw(data).bytes;
}

std::string Bof(unsigned kind, unsigned version = 0x0600) {
    return Rec(0x0809, Binary().U16(version).U16(kind).U32(0).U32(0).U32(0).bytes);
}
const std::string kEof = Rec(0x000A, "");

std::string Double(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    return Binary().U32(bits & 0xFFFFFFFF).U32(bits >> 32).bytes;
}

// Flags and bytes of a text of version 8, one byte for each character.
std::string Narrow(const std::string& text) {
    return "\0"s + text;
}

Binary Cell(unsigned row, unsigned column, unsigned style = 0) {
    return Binary().U16(row).U16(column).U16(style);
}

// A workbook of one sheet; the place of the sheet is put in.
std::string Book(const std::string& globals, const std::string& cells,
                 const std::string& name = "Sheet", unsigned version = 0x0600) {
    const std::string text = version == 0x0600 ? Narrow(name) : name;
    const std::string length = Binary().U8(static_cast<unsigned>(name.size())).bytes;
    const std::string before = Bof(5, version) + globals;
    const std::size_t at = before.size() + 4 + 6 + 1 + text.size() + kEof.size();
    return before + Rec(0x0085, Binary().U32(at).U16(0).Raw(length + text).bytes) + kEof +
           Bof(0x10, version) + cells + kEof;
}

std::string ReadStream(const std::string& stream, const char* name = "Workbook") {
    const OldReading reading = ReadOld(Kind::Xls, MakeCompound({{name, stream}}));
    EXPECT_TRUE(reading.sink.problems.empty()) << reading.sink.problems.front();
    return reading.sink.text;
}

// The table of a sheet that is called Sheet.
std::string Sheet(const std::string& rows, const std::string& around = {}) {
    return "[page1][h1]Sheet[/h1]" + (rows.empty() ? "" : "[table]" + rows + "[/table]") + around +
           "[/page1]";
}

// ---- Tests

TEST(XlsReader, CellsOfAllKinds) {
    const std::string globals =
        Rec(0x041E, Binary().U16(170).U16(10).Raw(Narrow("dd/mm/yyyy")).bytes) +
        Rec(0x00E0, Binary().U16(0).U16(0).To(20).bytes) +
        Rec(0x00E0, Binary().U16(0).U16(170).To(20).bytes) +
        Rec(0x00E0, Binary().U16(0).U16(10).To(20).bytes) +
        Rec(0x00FC, Binary().U32(1).U32(1).U16(6).Raw(Narrow("shared")).bytes);
    const std::string awaited = "\0\0\0\0\0\0\xFF\xFF"s;
    const std::string cells =
        Rec(0x0203, Cell(0, 0, 1).Raw(Double(45351)).bytes) +
        Rec(0x027E, Cell(0, 1).U32(12345 << 2 | 3).bytes) +
        Rec(0x00BD,
            Binary().U16(0).U16(3).U16(2).U32(25 << 2 | 3).U16(0).U32(0x3FF00000).U16(4).bytes) +
        Rec(0x0204, Cell(1, 0).U16(5).Raw(Narrow("caf\xE9s")).bytes) +
        Rec(0x00D6, Cell(1, 1).U16(2).Raw("\1"s + Wide(u"Ωя")).U16(0).bytes) +
        Rec(0x00FD, Cell(1, 2).U32(0).bytes) + Rec(0x00FD, Cell(1, 3).U32(77).bytes) +
        Rec(0x0205, Cell(2, 0).U8(1).U8(0).bytes) + Rec(0x0205, Cell(2, 1).U8(0x2A).U8(1).bytes) +
        Rec(0x0006, Cell(2, 2).Raw(Double(2.5)).To(22).bytes) +
        Rec(0x0006, Cell(2, 3).Raw(awaited).To(22).bytes) + Rec(0x04BC, "shared formula") +
        Rec(0x0207, Binary().U16(6).Raw(Narrow("result")).bytes) +
        Rec(0x0006, Cell(2, 4).Raw("\1\0\0\0\0\0\xFF\xFF"s).To(22).bytes) +
        Rec(0x0006, Cell(2, 5).Raw("\2\0\x07\0\0\0\xFF\xFF"s).To(22).bytes) +
        Rec(0x0006, Cell(2, 6).Raw("\3\0\0\0\0\0\xFF\xFF"s).To(22).bytes) +
        Rec(0x0201, Cell(3, 0).bytes);
    EXPECT_EQ(ReadStream(Book(globals, cells)),
              Sheet("[tr][td]2024-02-29[/td][td]123.45[/td][td][/td][td]25.00%[/td][td]1[/td][/tr]"
                    "[tr][td]cafés[/td][td]Ωя[/td][td]shared[/td][/tr]"
                    "[tr][td]TRUE[/td][td]#N/A[/td][td]2.5[/td][td]result[/td][td]FALSE[/td]"
                    "[td]#DIV/0![/td][/tr]"));
    const std::string since1904 = Rec(0x0022, Binary().U16(1).bytes);
    EXPECT_EQ(
        ReadStream(Book(since1904 + globals, Rec(0x0203, Cell(0, 0, 1).Raw(Double(0)).bytes))),
        Sheet("[tr][td]1904-01-01[/td][/tr]"));
}

TEST(XlsReader, SharedTextsAcrossRecords) {
    // Characters begin anew with flags behind a joint, lengths and formatting do not.
    struct Part {
        std::string bytes;
        bool characters;
        bool wide;
    };
    const std::vector<Part> parts{
        {Binary().U32(3).U32(3).bytes, false, false},
        {Binary().U16(5).U8(0x0D).U16(2).U32(6).bytes, false, false}, // wide, runs, readings
        {Wide(u"日本語のя"), true, true},
        {"runsruns"
         "readin",
         false, false},
        {Binary().U16(4).U8(0).bytes, false, false},
        {"caf\xE9", true, false},
        {Binary().U16(3).U8(1).bytes, false, false},
        {Wide(u"end"), true, true}};
    const auto bookWithJoint = [&](std::size_t joint) {
        std::string record, before;
        std::size_t at = 0;
        for (const Part& part : parts) {
            for (std::size_t i = 0; i < part.bytes.size(); ++i, ++at) {
                if (at == joint) {
                    // A character is never torn.
                    if (part.wide && i % 2 != 0)
                        return std::string();
                    before = Rec(0x00FC, record);
                    record = part.characters ? std::string(1, part.wide ? '\1' : '\0') : "";
                }
                record += part.bytes[i];
            }
        }
        const std::string table =
            before.empty() ? Rec(0x00FC, record) : before + Rec(0x003C, record);
        return Book(table, Rec(0x00FD, Cell(0, 0).U32(0).bytes) +
                               Rec(0x00FD, Cell(0, 1).U32(1).bytes) +
                               Rec(0x00FD, Cell(0, 2).U32(2).bytes));
    };
    std::size_t size = 0;
    for (const Part& part : parts)
        size += part.bytes.size();
    for (std::size_t joint = 8; joint <= size; ++joint) {
        const std::string book = bookWithJoint(joint);
        if (book.empty())
            continue;
        EXPECT_EQ(ReadStream(book), Sheet("[tr][td]日本語のя[/td][td]café[/td][td]end[/td][/tr]"))
            << "joint at " << joint;
    }
}

TEST(XlsReader, WhatStandsAroundTheCells) {
    const auto object = [](unsigned kind) {
        return Rec(0x005D, Binary().U16(0x15).U16(0x12).U16(kind).U16(1).To(26).bytes);
    };
    const auto text = [](const std::string& first, const std::string& second) {
        const auto count = static_cast<unsigned>(first.size() + second.size());
        return Rec(0x01B6, Binary().To(10).U16(count).U16(16).U32(0).bytes) +
               Rec(0x003C, Narrow(first)) + (second.empty() ? "" : Rec(0x003C, Narrow(second))) +
               Rec(0x003C, std::string(16, '\xFF'));
    };
    const std::string chart = Bof(0x20) +
                              Rec(0x100D, Binary().U16(0).U8(5).Raw(Narrow("Sales")).bytes) +
                              Rec(0x0204, Cell(0, 0).U16(4).Raw(Narrow("East")).bytes) +
                              Rec(0x0203, Cell(0, 0).Raw(Double(7)).bytes) +
                              Rec(0x0204, Cell(1, 0).U16(5).Raw(Narrow("Sales")).bytes) + kEof;
    const std::string margins =
        Rec(0x0014, Binary().U16(18).Raw(Narrow("&LTop&R&\"Arial\"&8&P")).bytes) + Rec(0x0015, "") +
        Rec(0x089C,
            Binary().To(28).U16(0).U16(0).U16(0).U16(5).U16(0).U16(5).Raw(Narrow("first")).bytes);
    const std::string cells = margins + Rec(0x0204, Cell(0, 0).U16(1).Raw(Narrow("a")).bytes) +
                              object(0x19) + text("Anna:\nlook", " here") + object(0x06) +
                              text("box", "") + object(0x05) + chart + object(0x19) +
                              text("second", "");
    EXPECT_EQ(ReadStream(Book("", cells)),
              Sheet("[tr][td]a[/td][/tr]",
                    "[p]Top[/p][p]first[/p][note]Anna:[br]look here[/note][note]second[/note]"
                    "[p]box[/p][p]Sales[/p][p]East[/p]"));
}

TEST(XlsReader, OlderVersions) {
    const std::string five =
        Book(Rec(0x0042, Binary().U16(1251).bytes),
             Rec(0x0204, Cell(0, 0).U16(3).Raw("\xEC\xE8\xF0").bytes) +
                 Rec(0x001C, Binary().U16(0).U16(0).U16(7).Raw("note on").bytes) +
                 Rec(0x001C, Binary().U16(0xFFFF).U16(0).U16(3).Raw(" it").bytes) +
                 Rec(0x0014, Binary().U8(4).Raw("&CTo").bytes),
             "Sheet", 0x0500);
    EXPECT_EQ(ReadStream(five, "Book"),
              Sheet("[tr][td]мир[/td][/tr]", "[p]To[/p][note]note on it[/note]"));

    const auto attributes = [](unsigned row, unsigned column, unsigned style, unsigned format) {
        return Binary().U16(row).U16(column).U8(style).U8(format).U8(0);
    };
    const std::string two =
        Rec(0x0009, Binary().U16(2).U16(0x10).bytes) + Rec(0x001E, "\7General"s) +
        Rec(0x001E, "\x0A"
                    "dd/mm/yyyy"s) +
        Rec(0x0003, attributes(0, 0, 0, 1).Raw(Double(45351)).bytes) +
        Rec(0x0002, attributes(0, 1, 0, 0).U16(42).bytes) +
        Rec(0x0004, attributes(1, 0, 0, 0).U8(3).Raw("old").bytes) +
        Rec(0x0006, attributes(1, 1, 0, 0).Raw("\0\0\0\0\0\0\xFF\xFF"s).To(17).bytes) +
        Rec(0x0007, "\4sums"s) + Rec(0x0005, attributes(1, 2, 0, 0).U8(1).U8(0).bytes) + kEof;
    ASSERT_EQ(DetectKind({two, "x"}), Kind::Xls);
    EXPECT_EQ(ReadOld(Kind::Xls, two).sink.text,
              "[page1][table][tr][td]2024-02-29[/td][td]42[/td][/tr]"
              "[tr][td]old[/td][td]sums[/td][td]TRUE[/td][/tr][/table][/page1]");

    const auto sheet4 = [](const std::string& name, double value) {
        return Rec(0x008F, Binary().U32(0).U8(static_cast<unsigned>(name.size())).Raw(name).bytes) +
               Rec(0x0409, Binary().U16(4).U16(0x10).U16(0).bytes) +
               Rec(0x0203, Cell(0, 0).Raw(Double(value)).bytes) + kEof;
    };
    const std::string four = Rec(0x0409, Binary().U16(4).U16(0x100).U16(0).bytes) +
                             sheet4("One", 1) + sheet4("Two", 2) + kEof;
    EXPECT_EQ(ReadOld(Kind::Xls, four).sink.text,
              "[page1][h1]One[/h1][table][tr][td]1[/td][/tr][/table][/page1]"
              "[page2][h1]Two[/h1][table][tr][td]2[/td][/tr][/table][/page2]");
    EXPECT_EQ(DetectKind({"\x09\x08\x10\0 is not the beginning of a workbook"s, "a.xls"}),
              Kind::Unknown);
}

TEST(XlsReader, RealWorkbooks) {
    const auto text = [](const char* name) {
        return ReadOld(Kind::Xls, ReadTestFile("legacy/"s + name)).sink.text;
    };
    EXPECT_NE(text("Formate.xls")
                  .find("[tr][td]Äcker[/td][td]2005-02-23[/td][/tr][tr][td]Öcker[/td]"
                        "[td]1988-05-03[/td][/tr][tr][td]Morgen[/td][td]06:34[/td][/tr]"),
              std::string::npos);
    EXPECT_NE(text("formula_test_sjmachin.xls")
                  .find("[tr][td]formula text[/td][td]ABCDEF[/td][/tr]"
                        "[tr][td]formula zero-length text[/td][/tr]"
                        "[tr][td]formula boolean[/td][td]TRUE[/td][/tr]"
                        "[tr][td]formula error[/td][td]#DIV/0![/td][/tr]"
                        "[tr][td]formula non-latin1 text[/td][td]МОСКВА Москва[/td][/tr]"),
              std::string::npos);
    const std::string four = ReadTestFile("legacy/biff4_no_format_no_window2.xls");
    EXPECT_EQ(DetectKind({four, "x"}), Kind::Xls);
    EXPECT_NE(ReadOld(Kind::Xls, four).sink.text.find("[td]DOG & CAT PRODUCTS[/td]"),
              std::string::npos);
}

TEST(XlsReader, OneWorkbookInSeveralFormats) {
    const auto read = [](const char* name) {
        const std::string bytes = ReadTestFile("legacy/"s + name);
        return ReadOld(DetectKind({bytes, name}), bytes, name).sink;
    };
    const RecordingSink xlsx = read("plan.xlsx"), xls = read("plan.xls"), xml = read("plan.xml");
    EXPECT_EQ(xlsx.text,
              "[page1][h1]Übersicht[/h1][table][tr][td]Name[/td][td]Datum[/td][/tr]"
              "[tr][td]Müller[/td][td]2024-02-29[/td][td]12.3%[/td][td]1234567.25[/td][/tr]"
              "[tr][td]zusammengesetzt[/td][td]TRUE[/td][td]#DIV/0![/td][td]#N/A[/td][/tr]"
              "[tr][td]Zeile eins[br]Zeile zwei[/td][td]Кириллица 日本語 😀[/td][/tr][/table]"
              "[p]Kopfzeile Verein[/p][p]Fuss & Ende[/p][note]Notiz zur Zelle[/note]"
              "[p]Text im Kasten[/p][/page1][page2][h1]Versteckt[/h1][table][tr][td]geheim[/td]"
              "[/tr][/table][p]Kopfzeile Verein[/p][p]Fuss & Ende[/p][/page2]");
    // The file itself holds a 0 in place of the first formula's result.
    std::string expected = xlsx.text;
    expected.replace(expected.find("zusammengesetzt"), 15, "0");
    EXPECT_EQ(xls.text, expected);
    for (const RecordingSink* sink : {&xls, &xlsx}) {
        EXPECT_EQ(sink->fields.at("title"), "Jahresplan");
        EXPECT_EQ(sink->fields.at("author"), "Anna Bergström");
    }
    // In this one the program leaves out what stands around the cells.
    EXPECT_EQ(xml.text,
              "[page1][h1]Übersicht[/h1][table][tr][td]Name[/td][td]Datum[/td][/tr]"
              "[tr][td]Müller[/td][td]2024-02-29[/td][td]12.34%[/td][td]1234567.25[/td][/tr]"
              "[tr][td]zusammengesetzt[/td][td]TRUE[/td][td]#DIV/0![/td][td]#N/A[/td][/tr]"
              "[tr][td]Zeile eins[br]Zeile zwei[/td][td]Кириллица 日本語 😀[/td][/tr][/table]"
              "[/page1][page2][h1]Versteckt[/h1][table][tr][td]geheim[/td][/tr][/table][/page2]");
    EXPECT_EQ(read("plan-locked.xls").text, xls.text) << "protected against changes only";
    for (const char* name : {"plan-secret.xls", "rc4cryptoapi_password.xls"}) {
        try {
            read(name);
            ADD_FAILURE() << name;
        } catch (const ReadError& error) {
            EXPECT_EQ(error.state, ReadState::Encrypted) << name;
        }
    }
}

TEST(XlsReader, DamagedWorkbooks) {
    const std::string whole = ReadTestFile("legacy/plan.xls");
    EXPECT_GT(ReadDamagedCopies(Kind::Xls, whole), 0);
    EXPECT_GT(ReadDamagedCopies(Kind::Xls, ReadTestFile("legacy/plan-locked.xls")), 0);
    EXPECT_GT(ReadDamagedCopies(Kind::Xls, ReadTestFile("legacy/biff4_no_format_no_window2.xls")),
              0);
    EXPECT_GT(ReadDamagedCopies(Kind::Xlsb, ReadTestFile("legacy/sample.xlsb")), 0);

    const std::string cut = Book("", Rec(0x0203, Cell(0, 0).Raw(Double(1)).bytes) +
                                         Rec(0x0204, Cell(1, 0).U16(9).Raw(Narrow("torn")).bytes));
    const OldReading reading = ReadOld(
        Kind::Xls, MakeCompound({{"Workbook", cut.substr(0, cut.size() - kEof.size() - 2)}}));
    EXPECT_EQ(reading.sink.text, Sheet("[tr][td]1[/td][/tr][tr][td]to[/td][/tr]"));
    EXPECT_EQ(reading.sink.problems,
              std::vector<std::string>{"the end of the workbook is missing"});
    EXPECT_THROW(ReadOld(Kind::Xls, MakeCompound({{"Other", "x"}})), ReadError);

    // Thousands of sheets that all begin in the same place would be read for ever.
    const std::string one = Book("", std::string(100'000, '\0'));
    std::string many = Bof(5);
    const std::size_t at = many.size() + 5000 * 13 + kEof.size();
    for (int i = 0; i < 5000; ++i)
        many += Rec(0x0085, Binary().U32(at).U16(0).Raw("\1"s + Narrow("s")).bytes);
    many += kEof + Bof(0x10) + std::string(100'000, '\0') + kEof;
    const OldReading overlapping = ReadOld(Kind::Xls, MakeCompound({{"Workbook", many}}));
    EXPECT_EQ(overlapping.sink.problems, std::vector<std::string>{"its sheets overlap"});
}

TEST(XlsReader, EmbeddedDocuments) {
    Streams streams{{"Workbook", Book("", "")},
                    {"MBD0001/Package", MakeZip({{"a.txt", "inside"}})}};
    const OldReading reading = ReadOld(Kind::Xls, MakeCompound(streams));
    ASSERT_EQ(reading.members.members.size(), 1U);
    EXPECT_EQ(DetectKind({reading.members.members[0].content, "x"}), Kind::Zip);
}

// ---- XLSB

std::string Brt(unsigned type, const std::string& data) {
    Binary record;
    if (type >= 0x80)
        record.U8((type & 0x7F) | 0x80).U8(type >> 7);
    else
        record.U8(type);
    std::size_t length = data.size();
    for (; length >= 0x80; length >>= 7)
        record.U8(static_cast<unsigned>(length & 0x7F) | 0x80);
    return record.U8(static_cast<unsigned>(length)).Raw(data).bytes;
}

std::string LongText(std::u16string_view text) {
    return Binary().U32(text.size()).Raw(Wide(text)).bytes;
}

TEST(XlsbReader, CellsAsTheyAreShown) {
    const std::string space = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
    const auto link = [&](const char* id, const char* type, const char* target) {
        return "<Relationship Id='"s + id + "' Type='" + space + "/" + type + "' Target='" +
               target + "'/>";
    };
    const auto cell = [](unsigned column, unsigned style) {
        return Binary().U32(column).U32(style);
    };
    const std::string sheet =
        Brt(145, "") + Brt(0, Binary().U32(0).To(17).bytes) + Brt(7, cell(0, 0).U32(1).bytes) +
        Brt(5, cell(2, 1).Raw(Double(45351.5)).bytes) +
        Brt(2, cell(3, 0).U32(12345 << 2 | 3).bytes) + Brt(0, Binary().U32(1).To(17).bytes) +
        Brt(8, cell(0, 0).Raw(LongText(u"sum")).U16(0).bytes) + Brt(10, cell(1, 0).U8(1).bytes) +
        Brt(3, cell(2, 0).U8(0x07).bytes) + Brt(6, cell(3, 0).Raw(LongText(u"in")).bytes) +
        Brt(62, cell(4, 0).U8(1).Raw(LongText(u"rich")).bytes) +
        Brt(6, cell(5, 0).Raw(LongText(std::u16string(300, u'x'))).bytes) + Brt(146, "") +
        Brt(479, Binary()
                     .U16(0)
                     .Raw(LongText(u"&CTop"))
                     .U32(0xFFFFFFFF)
                     .U32(0xFFFFFFFF)
                     .U32(0xFFFFFFFF)
                     .U32(0xFFFFFFFF)
                     .U32(0xFFFFFFFF)
                     .bytes);
    const Parts parts{
        {"[Content_Types].xml",
         "<Types><Override PartName='/xl/workbook.bin' ContentType="
         "'application/vnd.ms-excel.sheet.binary.macroEnabled.main'/></Types>"},
        {"_rels/.rels",
         "<Relationships>" + link("r", "officeDocument", "xl/workbook.bin") + "</Relationships>"},
        {"xl/workbook.bin",
         Brt(156, Binary().U32(1).U32(1).Raw(LongText(u"a") + LongText(u"Sheet")).bytes)},
        {"xl/_rels/workbook.bin.rels", "<Relationships>" +
                                           link("a", "worksheet", "worksheets/sheet1.bin") +
                                           link("b", "sharedStrings", "sharedStrings.bin") +
                                           link("c", "styles", "styles.bin") + "</Relationships>"},
        {"xl/worksheets/sheet1.bin", sheet},
        {"xl/worksheets/_rels/sheet1.bin.rels",
         "<Relationships>" + link("a", "comments", "../comments1.bin") + "</Relationships>"},
        {"xl/comments1.bin", Brt(637, Binary().U8(0).Raw(LongText(u"why?")).bytes)},
        {"xl/sharedStrings.bin", Brt(19, Binary().U8(0).Raw(LongText(u"no")).bytes) +
                                     Brt(19, Binary().U8(1).Raw(LongText(u"größer")).U32(0).bytes)},
        {"xl/styles.bin", Brt(44, Binary().U16(164).Raw(LongText(u"dd/mm/yyyy hh:mm")).bytes) +
                              Brt(47, Binary().U16(0).U16(9).bytes) + Brt(617, "") +
                              Brt(47, Binary().U16(0).U16(0).bytes) +
                              Brt(47, Binary().U16(0).U16(164).bytes) + Brt(618, "")}};
    const std::string bytes = MakeZip(parts);
    ASSERT_EQ(DetectKind({bytes, "x"}), Kind::Xlsb);
    EXPECT_EQ(ReadOld(Kind::Xlsb, bytes).sink.text,
              Sheet("[tr][td]größer[/td][td][/td][td]2024-02-29 12:00[/td][td]123.45[/td][/tr]"
                    "[tr][td]sum[/td][td]TRUE[/td][td]#DIV/0![/td][td]in[/td][td]rich[/td][td]" +
                        std::string(300, 'x') + "[/td][/tr]",
                    "[p]Top[/p][note]why?[/note]"));
    const std::string real = ReadTestFile("legacy/sample.xlsb");
    ASSERT_EQ(DetectKind({real, "x"}), Kind::Xlsb);
    EXPECT_EQ(ReadOld(Kind::Xlsb, real).sink.text,
              "[page1][h1]Sheet1[/h1][table][tr][td]2013-01-12[/td][/tr][/table][/page1]");
}

} // namespace
} // namespace engine
