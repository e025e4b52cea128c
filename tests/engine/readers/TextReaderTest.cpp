// Plain text and XML: charsets, binary data, malformed documents.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/engine/readers/Packages.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace engine {
namespace {

using namespace std::string_literals;

struct TextCase {
    const char* name;
    std::string bytes;
    const char* text;
};

class PlainText : public testing::TestWithParam<TextCase> {};

TEST_P(PlainText, DecodesAs) {
    EXPECT_EQ(ReadWith(ReadPlainText, GetParam().bytes).text,
              "[pre]" + std::string(GetParam().text) + "[/pre]");
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PlainText,
    testing::Values(
        TextCase{"ascii", "a\nb\tc\r\n", "a\nb\tc\r\n"}, TextCase{"utf8", "für 日本", "für 日本"},
        TextCase{"utf8Mark",
                 "\xEF\xBB\xBF"
                 "für",
                 "für"},
        TextCase{"utf8CutShort", "Ãçé, naïve, fünf, élève \xE2\x82",
                 "Ãçé, naïve, fünf, élève \xEF\xBF\xBD\xEF\xBF\xBD"},
        TextCase{"utf8CutAtOnce", "für 5 \xE2\x82", "für 5 \xEF\xBF\xBD\xEF\xBF\xBD"},
        TextCase{"utf16leMark",
                 "\xFF\xFE"
                 "f\0\xFC\0r\0"s,
                 "für"},
        TextCase{"utf16beMark", "\xFE\xFF\0f\0\xFC\0r"s, "für"},
        TextCase{"utf16leBare", "f\0\xFC\0r\0 \0S\0i\0e\0"s, "für Sie"},
        TextCase{"utf16beBare", "\0f\0\xFC\0r\0 \0S\0i\0e"s, "für Sie"},
        TextCase{"utf16beCjkBare", "\x65\xE5\x67\x2C\0\n\x8A\x9E"s, "日本\n語"},
        TextCase{"utf32leBare", "f\0\0\0\xFC\0\0\0r\0\0\0"s, "für"},
        TextCase{"utf32beMark", "\0\0\xFE\xFF\0\0\0f"s, "f"},
        TextCase{"shortWestern",
                 "F\xFCr Gr\xF6\xDF"
                 "e: 5 \x80",
                 "Für Größe: 5 €"},
        TextCase{"oneWord", "caf\xE9", "café"},
        TextCase{"shiftJis",
                 "\x93\xFA\x96\x7B\x8C\xEA\x82\xC5\x8F\x91\x82\xA9\x82\xEA\x82\xBD\x95\xB6\x8F\x91"
                 "\x82\xC5\x82\xB7\x81\x42",
                 "日本語で書かれた文書です。"},
        TextCase{"koi8",
                 "\xF7\xD3\xC5 \xD3\xDE\xC1\xD3\xD4\xCC\xC9\xD7\xD9\xC5 \xD3\xC5\xCD\xD8\xC9 "
                 "\xD0\xCF\xC8\xCF\xD6\xC9 \xC4\xD2\xD5\xC7 \xCE\xC1 \xC4\xD2\xD5\xC7\xC1",
                 "Все счастливые семьи похожи друг на друга"},
        TextCase{"iso2022jp", "\x1B$BF|K\\\x1B(B!", "日本!"}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(PlainTextReader, BinaryIsNoText) {
    std::string binary;
    for (int i = 0; i < 4096; ++i)
        binary += static_cast<char>(i * 167 % 251);
    std::string late(200'000, 'x'); // text at first, binary later on
    late += std::string(400'000, '\0');
    for (const std::string& bytes : {binary, late,
                                     "\x7F"
                                     "ELF\2\1\1\0\0\0\0"s}) {
        RecordingSink sink;
        try {
            ReadPlainText({bytes, "x.txt"}, sink);
            ADD_FAILURE() << "was read";
        } catch (const ReadError& error) {
            EXPECT_EQ(error.state, ReadState::Unknown);
        }
        EXPECT_TRUE(sink.text.empty());
    }
}

TEST(PlainTextReader, LargeTextComesInWholeCharacters) {
    std::string bytes;
    while (bytes.size() < 3'000'000)
        bytes += "aé日𝄞";
    class Pieces final : public DocumentSink {
      public:
        std::size_t total = 0, largest = 0;
        bool whole = true;
        void Field(std::string_view, std::string_view) override {}
        void Text(std::string_view piece) override {
            total += piece.size();
            largest = std::max(largest, piece.size());
            whole = whole && (piece.front() & 0xC0) != 0x80;
        }
        void Open(Block, int) override {}
        void Close(Block) override {}
        void Break() override {}
        void Incomplete(std::string_view) override {}
    } pieces;
    ReadPlainText({bytes, {}}, pieces);
    EXPECT_EQ(pieces.total, bytes.size());
    EXPECT_LE(pieces.largest, 1'048'576U);
    EXPECT_TRUE(pieces.whole);
}

TEST(PlainTextReader, JapaneseTable) {
    EXPECT_EQ(ReadWith(ReadPlainText, LoadOffice("test_mskanji.csv")).Words(),
              "名前,年齢,住所 佐藤太郎,30,東京 三木英子,25,大阪 髙橋淳,35,名古屋");
}

TEST(XmlReader, TextAttributesAndEntities) {
    const RecordingSink sink = ReadWith(
        ReadXml,
        "<?xml version='1.0' encoding='ISO-8859-1'?>\n"
        "<!DOCTYPE d [<!ENTITY maker 'Ann &amp; Co'><!ENTITY bad SYSTEM 'file:///etc/passwd'>]>\n"
        "<d>\n <name>caf\xE9</name>\n <n a='1' title='A &lt; &eacute;'>&maker;&bad; &hellip;</n>\n"
        " <p>un<b>der</b>score</p><q1>x</q1><q2>y</q2>\n</d>");
    EXPECT_EQ(sink.text, "[p]café[/p][p]A < é Ann & Co …[/p][p]underscore x y[/p]");
    EXPECT_TRUE(sink.problems.empty());
}

TEST(XmlReader, Svg) {
    EXPECT_EQ(
        ReadWith(
            ReadXml,
            "<svg xmlns='http://www.w3.org/2000/svg' title='no'><title>Map</title><style>x</style>"
            "<text name='no'>Hel<tspan>lo</tspan><tspan x='1'>World</tspan></text></svg>")
            .Words(),
        "Map Hello World");
}

TEST(XmlReader, MalformedKeepsWhatThereIs) {
    const RecordingSink sink = ReadWith(ReadXml, "<a>\n<b>one &amp; two</c>\n three &amp; <d>four");
    EXPECT_EQ(sink.Words(), "one & two three & four");
    ASSERT_EQ(sink.problems.size(), 1U);
    EXPECT_EQ(sink.problems[0], "the document is malformed at line 2");
}

TEST(XmlReader, EntitiesDoNotMultiply) {
    std::string bomb = "<!DOCTYPE b [<!ENTITY a0 'ha'>";
    for (int i = 1; i < 30; ++i) {
        const std::string last = "&a" + std::to_string(i - 1) + ";";
        bomb += "<!ENTITY a" + std::to_string(i) + " '" + last + last + last + "'>";
    }
    bomb += "]><b t='&a29;'>&a29;</b>";
    EXPECT_LT(ReadWith(ReadXml, bomb).text.size(), 10'000'000U);
    std::string deep;
    for (int i = 0; i < 100'000; ++i)
        deep += "<x>";
    const RecordingSink sink = ReadWith(ReadXml, deep + "end");
    ASSERT_FALSE(sink.problems.empty());
    EXPECT_EQ(sink.problems[0], "the document is nested too deeply");
}

// A sink that ends the reading throws through the parser's C code.
TEST(XmlReader, SinkMayStop) {
    class Stopper final : public DocumentSink {
      public:
        void Field(std::string_view, std::string_view) override {}
        void Text(std::string_view) override { throw StopReading(); }
        void Open(Block, int) override {}
        void Close(Block) override {}
        void Break() override {}
        void Incomplete(std::string_view) override {}
    } stopper;
    std::string xml = "<a>";
    for (int i = 0; i < 50'000; ++i)
        xml += "<b>word</b>\n";
    EXPECT_THROW(ReadXml({xml, {}}, stopper), StopReading);
}

} // namespace
} // namespace engine
