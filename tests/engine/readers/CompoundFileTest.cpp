// Compound files, their properties, and which reader they go to.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CompoundFile.h"
#include "engine/readers/OleProperties.h"
#include "tests/engine/readers/OldOffice.h"

#include <gtest/gtest.h>

#include <set>

namespace engine {
namespace {

using namespace std::string_literals;

std::string Long(char fill) {
    std::string content(20'000, fill);
    content += "end";
    return content;
}

void Set(std::string& bytes, std::size_t at, std::uint32_t value) {
    bytes.replace(at, 4, Binary().U32(value).bytes);
}

TEST(CompoundFile, StreamsOfBothSizes) {
    const std::string bytes = MakeCompound(
        {{"Short", "few"}, {"Long", Long('a')}, {"Folder/Inner/Deep", Long('b')}, {"Empty", ""}});
    const CompoundFile file(bytes);
    EXPECT_EQ(file.Stream("Short"), "few");
    EXPECT_EQ(file.Stream("LONG"), Long('a')); // names are compared without case
    EXPECT_EQ(file.Stream("folder/inner/Deep"), Long('b'));
    EXPECT_EQ(file.Stream("Long", 5), "aaaaa");
    EXPECT_EQ(file.Stream("Empty"), "");
    EXPECT_EQ(file.Stream("Folder"), std::nullopt);
    EXPECT_EQ(file.Stream("Shor"), std::nullopt);
    EXPECT_FALSE(file.Has("Short/Deep"));
    std::set<std::string> names;
    for (const CompoundFile::Entry& entry : file.List())
        names.insert(entry.name + (entry.storage ? "/" : ""));
    EXPECT_EQ(names, (std::set<std::string>{"Short", "Long", "Folder/", "Empty"}));
    EXPECT_TRUE(file.List("nowhere").empty());
}

TEST(CompoundFile, DamagedFilesGiveWhatIsLeft) {
    const std::string bytes = MakeCompound({{"Short", "few"}, {"Long", Long('a')}});
    EXPECT_THROW(CompoundFile("short"), ReadError);
    EXPECT_THROW(CompoundFile(bytes.substr(0, 512)), ReadError);
    // The end is missing: the stream is cut, never filled with something else.
    for (std::size_t size = 512; size < bytes.size(); size += 100) {
        const std::string cut = bytes.substr(0, size);
        try {
            const auto stream = CompoundFile(cut).Stream("Long");
            EXPECT_TRUE(!stream || Long('a').starts_with(*stream));
        } catch (const ReadError&) {
            // its directory was in the end
        }
    }
    // Rings: every sector of the table points to itself.
    std::string ring = bytes;
    const auto low = static_cast<unsigned char>(ring[0x4C]);
    const std::size_t table = (std::size_t{low} + 1) * 512;
    for (std::uint32_t i = 0; i < 128; ++i)
        Set(ring, table + i * 4, i);
    try {
        const CompoundFile file(ring);
        for (const CompoundFile::Entry& entry : file.List())
            EXPECT_LE(file.Stream(entry.name).value_or("").size(), ring.size());
    } catch (const ReadError&) {
        // as good
    }
}

TEST(CompoundFile, SharedSectorsAreNoBomb) {
    // Two thousand names, then each made to be the one long stream.
    Streams streams{{"x", std::string(1'000'000, 'x')}};
    for (int i = 0; i < 2000; ++i)
        streams.emplace_back("n" + std::to_string(i), "");
    std::string bytes = MakeCompound(streams);
    std::size_t entry = bytes.find("x\0\0\0"s);
    while (entry % 128 != 0) // the directory, not the end of the stream
        entry = bytes.find("x\0\0\0"s, entry + 1);
    ASSERT_LT(entry, bytes.size());
    const std::string place = bytes.substr(entry + 116, 8);
    for (std::size_t at = bytes.find("n\0"s); at != std::string::npos;
         at = bytes.find("n\0"s, at + 1))
        if (at % 128 == 0)
            bytes.replace(at + 116, 8, place);
    const CompoundFile file(bytes);
    std::size_t total = 0;
    for (const CompoundFile::Entry& each : file.List())
        total += file.Stream(each.name).value_or("").size();
    EXPECT_GT(total, 2'000'000U);
    EXPECT_LT(total, 200'000'000U);
}

TEST(CompoundFile, PropertiesInTheirCodePage) {
    // Code page 1251; title; own properties with names, a number and a yes.
    const auto text = [](const std::string& value) {
        Binary property;
        property.U32(30).U32(value.size() + 1).Raw(value).U8(0);
        return property.To((property.bytes.size() + 3) / 4 * 4).bytes;
    };
    const auto section = [](const std::vector<std::pair<unsigned, std::string>>& values) {
        Binary table, content;
        for (const auto& [number, value] : values) {
            table.U32(number).U32(8 + values.size() * 8 + content.bytes.size());
            content.Raw(value);
        }
        return Binary()
            .U32(8 + table.bytes.size() + content.bytes.size())
            .U32(values.size())
            .Raw(table.bytes)
            .Raw(content.bytes)
            .bytes;
    };
    const auto set = [](const std::string& format, const std::string& content) {
        return Binary().U16(0xFFFE).To(24).U32(1).Raw(format).U32(48).Raw(content).bytes;
    };
    const std::string page = Binary().U32(2).U32(1251).bytes;
    const std::string names = Binary()
                                  .U32(2)
                                  .U32(2)
                                  .U32(5)
                                  .Raw("\xC4\xE5\xEB\xEE\0"s)
                                  .U32(3)
                                  .U32(3)
                                  .Raw("Ok\0"s)
                                  .To(28)
                                  .bytes;
    const std::string bytes = MakeCompound(
        {{"\5SummaryInformation",
          set("\xE0\x85\x9F\xF2\xF9\x4F\x68\x10\xAB\x91\x08\x00\x2B\x27\xB3\xD9"s,
              section({{1, page}, {2, text("\xCE\xF2\xF7\xB8\xF2")}, {4, text("Anna")}}))},
         {"\5DocumentSummaryInformation",
          set("\x05\xD5\xCD\xD5\x9C\x2E\x1B\x10\x93\x97\x08\x00\x2B\x2C\xF9\xAE"s,
              section({{0, names},
                       {1, page},
                       {2, Binary().U32(3).U32(4711).bytes},
                       {3, Binary().U32(11).U32(0xFFFF).bytes}}))}});
    RecordingSink sink;
    ReadOleProperties(CompoundFile(bytes), sink);
    EXPECT_EQ(
        sink.fields,
        (std::map<std::string, std::string>{
            {"title", "Отчёт"}, {"author", "Anna"}, {"\xD0\x94ело", "4711"}, {"ok", "true"}}));
    // Cut off and flipped properties cost properties only.
    for (std::size_t i = 0; i < bytes.size(); i += 11) {
        std::string broken = bytes;
        broken[i] = static_cast<char>(broken[i] ^ 0x55);
        try {
            ReadOleProperties(CompoundFile(broken), sink);
        } catch (const ReadError&) {
            EXPECT_LT(i, 4096U);
        }
    }
}

TEST(CompoundFile, TheStreamTellsTheKind) {
    const auto kindOf = [](const char* stream, const char* name) {
        return DetectKind({MakeCompound({{stream, "x"}}), name});
    };
    EXPECT_EQ(kindOf("WordDocument", "a.xls"), Kind::Doc);
    EXPECT_EQ(kindOf("Book", "a"), Kind::Xls);
    EXPECT_EQ(kindOf("Workbook", "a.doc"), Kind::Xls);
    EXPECT_EQ(kindOf("PowerPoint Document", "a"), Kind::Ppt);
    EXPECT_EQ(kindOf("__properties_version1.0", "a"), Kind::Msg);
    EXPECT_EQ(kindOf("EncryptedPackage", "a.xlsx"), Kind::Xlsx);
    EXPECT_EQ(kindOf("VisioDocument", "a.vsd"), Kind::Unknown);
    EXPECT_EQ(DetectKind({"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1 cut"s, "a.ppt"}), Kind::Ppt);
}

} // namespace
} // namespace engine
