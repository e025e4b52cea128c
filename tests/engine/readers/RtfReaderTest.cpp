// RTF: text and its charsets, blocks, asides, fields, HTML inside, hostile input.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/engine/readers/MemberRecorder.h"
#include "tests/engine/readers/Packages.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

using namespace std::string_literals;

// Reads what stands inside the document's group, behind a usual header.
RecordingSink ReadRtfBody(const std::string& body) {
    return ReadWith(ReadRtf,
                    "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fcharset0 Times;}"
                    "{\\f1\\fcharset128 MS Mincho;}{\\f2\\fcharset2 Symbol;}"
                    "{\\f3\\fcharset2 Wingdings;}{\\f4\\fcharset204 Arial;}{\\f5 Arial CE;}"
                    "{\\f6\\fcharset134 SimSun;}{\\f7\\fcharset129 Batang;}{\\f8\\fcharset136 "
                    "MingLiU;}}" +
                        body + "}");
}

struct RtfCase {
    const char* name;
    std::string body;
    std::string text;
};

void PrintTo(const RtfCase& rtfCase, std::ostream* out) {
    *out << rtfCase.name;
}

class RtfText : public testing::TestWithParam<RtfCase> {};

TEST_P(RtfText, Is) {
    const RecordingSink sink = ReadRtfBody(GetParam().body);
    EXPECT_EQ(sink.text, GetParam().text);
    EXPECT_TRUE(sink.problems.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Characters, RtfText,
    testing::Values(
        RtfCase{"western",
                "caf\\'e9 \x93"
                "a\x94 \\'80",
                "[p]café “a” €[/p]"},
        RtfCase{"fonts", "\\f4 \\'cf\\f5\\'b3 {\\f0\\'b3}\\'b3", "[p]Пł ³ł[/p]"},
        RtfCase{"plainGoesBack", "\\f4\\'cf\\plain\\'cf", "[p]ПÏ[/p]"},
        RtfCase{"hexPairs", "\\f1\\'93\\'fa\\'96\\'7b \\'83A", "[p]日本 ア[/p]"},
        RtfCase{"rawPairs", "\\f1 \x93\xFA\x96{\x83\\ x", "[p]日本ソ x[/p]"},
        RtfCase{"pairsInOther", "\\f6\\'c4\\'e3\\'ba\\'c3 \\f7\\'c7\\'d1\\f8\\'a7A",
                "[p]你好 한你[/p]"},
        RtfCase{"brokenPair", "\\f1\\'93\\f0 x", "[p]\xEF\xBF\xBDx[/p]"},
        RtfCase{"lineEndsAreNone", "a\r\nb\nc\\\nd\\\r\ne", "[p]abc[/p][p]d[/p][p]e[/p]"},
        RtfCase{"unicode", "\\u233?\\u-10179?\\u-8704?\\u128512?\\uc0\\u233 x", "[p]é😀😀éx[/p]"},
        RtfCase{"fallbacks", "\\uc2\\u26085\\'93\\'fa.\\uc1\\u233\\emdash\\u233\\par x{\\u233}?",
                "[p]日.éé[/p][p]xé?[/p]"},
        RtfCase{"symbols", "\\f2 ab\\'b7\\u-3913?\\f0 |\\f3 J\\u-4022?\\f0 |", "[p]αβ••|  |[/p]"},
        RtfCase{"named", "a\\tab b\\emdash\\endash\\bullet\\lquote\\rquote\\ldblquote\\rdblquote",
                "[p]a\tb—–•‘’“”[/p]"},
        RtfCase{"escaped", "\\{\\}\\\\ a\\~b\\_c\\-d", "[p]{}\\ a\u00A0b\u2011c\u00ADd[/p]"},
        RtfCase{"twoForms", "{\\upr{old {x}}{\\*\\ud{\\u1055?}}} end", "[p]П end[/p]"}),
    [](const auto& tested) { return std::string(tested.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Blocks, RtfText,
    testing::Values(
        RtfCase{"headings",
                "{\\stylesheet{\\s1 heading 1;}{\\s2\\sbasedon1 Mine;}{\\s3 \\'dcberschrift 3;}"
                "{\\*\\cs4 heading 4;}}\\pard\\s1 A\\par\\pard\\s2 B\\par\\pard\\s3 C\\par"
                "\\pard\\outlinelevel1 D\\par\\pard\\s4 E\\par\\s1\\outlinelevel9 F",
                "[h1]A[/h1][h1]B[/h1][h3]C[/h3][h2]D[/h2][p]E[/p][p]F[/p]"},
        RtfCase{"lists",
                "{\\listtext 1.\\tab}\\ls1 one\\par{\\listtext a)\\tab}\\ilvl1 sub\\par\\pard "
                "{\\listtext\\f2\\'b7\\tab}\\ls2 dot\\par more\\par\\pard{\\listtext Art. 5\\tab}"
                "\\ls3 law\\par\\pard{\\pntext 1.\\tab}{\\*\\pn\\pndec{\\pntxta .}}old\\par",
                "[ol][li][p]one[/p][ol][li][p]sub[/p][/li][/ol][/li][/ol][ul][li][p]dot[/p][p]more"
                "[/p][/li][/ul][ul][li][p]Art. 5\tlaw[/p][/li][/ul][ol][li][p]old[/p][/li][/ol]"},
        RtfCase{"table",
                "x\\par\\trowd\\cellx1\\cellx2\\pard\\intbl a\\cell b\\par c\\cell\\row"
                "\\trowd\\cellx1\\intbl\\cell d\\cell\\row\\pard y",
                "[p]x[/p][table][tr][td][p]a[/p][/td][td][p]b[/p][p]c[/p][/td][/tr][tr][td][/td]"
                "[td][p]d[/p][/td][/tr][/table][p]y[/p]"},
        RtfCase{"nestedTable",
                "\\intbl\\itap1 a\\par\\itap2 b\\nestcell c\\nestcell{\\*\\nesttableprops\\trowd"
                "\\nestrow}{\\nonesttables x}\\itap1 d\\cell\\row",
                "[table][tr][td][p]a[/p][table][tr][td][p]b[/p][/td][td][p]c[/p][/td][/tr][/table]"
                "[p]d[/p][/td][/tr][/table]"},
        RtfCase{"rowsWithoutIntbl", "\\trowd\\cellx1\\pard a\\cell b\\cell\\row\\pard c",
                "[table][tr][td][p]a[/p][/td][td][p]b[/p][/td][/tr][/table][p]c[/p]"},
        RtfCase{"lines", "a\\line b\\page c", "[p]a[br]b[br]c[/p]"},
        RtfCase{
            "notes",
            "one{\\footnote\\pard F{\\i o}ot\\par two} two{\\*\\annotation Said {\\*\\atnref 1}it"
            "}{\\*\\atnauthor Ann} three",
            "[p]one two three[/p][note][p]Foot[/p][p]two[/p][/note][note][p]Said it[/p][/note]"},
        RtfCase{"textBox",
                "a{\\shp{\\*\\shpinst{\\sp{\\sn wzDescription}{\\sv A car}}{\\sp{\\sn pib}{\\sv x}}"
                "{\\shptxt\\pard In\\par}}{\\shprslt old}}b",
                "[p]a A car b[/p][p]In[/p]"},
        RtfCase{"headersOnce",
                "{\\header H\\par}a\\par{\\footer F}b{\\header H\\par}{\\headerf G}\\par",
                "[p]H[/p][p]a[/p][p]F[/p][p]b[/p][p]G[/p]"},
        RtfCase{
            "fieldsAndDeleted",
            "{\\field{\\*\\fldinst HYPERLINK \"http://x\"}{\\fldrslt{\\ul link}}} {\\deleted no}"
            "{\\v hid}den {\\*\\bkmkstart b}{\\xe x}{\\*\\strange{y}}end",
            "[p]link hidden end[/p]"},
        RtfCase{"pictures",
                "a{\\pict{\\*\\picprop{\\sp{\\sn wzDescription}{\\sv Sea}}}\\pngblip 00ff\r\n11}"
                "{\\nonshppict{\\pict\\wmetafile8 00}}{\\object{\\*\\objdata 00{}ff}{\\result b}}"
                "\\bin4 }}{{c",
                "[p]a Sea bc[/p]"},
        RtfCase{"math", "{\\mmath{\\*\\moMath{\\mr x=1}{\\md{\\mdPr{\\mbegChr [}}y}}}",
                "[p]x=1y[/p]"}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(RtfReader, RealDocuments) {
    const RecordingSink word = ReadWith(ReadRtf, ReadTestFile("rtf/testTextConversion.rtf"));
    EXPECT_TRUE(word.text.starts_with("[h1]First Heading[/h1][p]Lorem ipsum dolor sit amet,"));
    EXPECT_TRUE(word.text.ends_with("[tr][td][p]Jjj[/p][/td][td][p]Kkk[/p][/td][td][p]Lll[/p][/td]"
                                    "[/tr][/table]"));
    EXPECT_EQ(word.fields.at("author"), "Jon Iles");
    EXPECT_EQ(ReadWith(ReadRtf, ReadTestFile("rtf/testUpr.rtf")).text,
              "[p]TEST[/p][p]End User License Agreement[/p][p]TEST[/p]");
    EXPECT_EQ(
        ReadWith(ReadRtf, ReadTestFile("rtf/testNecCharacters.rtf")).Words(),
        "BLC U=>L Splice でU/W No.2 Dancerからシワ発生。Set時に表層10㎜ほどムーニング　pallet底の"
        "Roll");
    EXPECT_EQ(ReadWith(ReadRtf, ReadTestFile("rtf/test950Encoding.rtf")).text,
              "[p]Test Text[/p][p]Copyright © 2004-2013 Test Project[/p]");
    EXPECT_EQ(ReadWith(ReadRtf, ReadTestFile("rtf/test10007Encoding.rtf")).Words(),
              "Комманда разработчиков");
    const RecordingSink fields = ReadWith(ReadRtf, ReadTestFile("rtf/properties.rtf"));
    EXPECT_EQ(fields.fields.at("title"), "Test Tika title");
    EXPECT_EQ(fields.fields.at("manager"), "My Mother");
    EXPECT_EQ(fields.fields.at("n° du document"), "1234");
}

TEST(RtfReader, PicturesAreShown) {
    const RecordingSink sink = ReadWith(
        ReadRtf, "{\\rtf1 a{\\pict\\jpegblip ffd8}{\\pict\\pngblip\\bin2 xy}{\\pict\\emfblip 00}}",
        true);
    ASSERT_EQ(sink.pictures.size(), 2U);
    EXPECT_EQ(sink.pictures[0].first, "image/jpeg");
    EXPECT_EQ(sink.pictures[1].first, "image/png");
}

// As mail programs put the HTML of a message into RTF.
TEST(RtfReader, HtmlInside) {
    const RecordingSink sink = ReadWith(
        ReadRtf,
        "{\\rtf1\\ansi\\ansicpg1251\\fromhtml1 \\deff0{\\fonttbl{\\f0\\fswiss Arial;}"
        "{\\f1\\fcharset0 Times;}}{\\colortbl\\red0;}\\uc1\\pard\\plain\\deftab360 \\f0\\fs24 "
        "{\\*\\htmltag18 <html>}{\\*\\htmltag2 \\par }{\\*\\htmltag34 <head>}"
        "{\\*\\htmltag177 <title>\\'cf\\'e8\\'f1\\'fc\\'ec\\'ee</title>}{\\*\\htmltag41 </head>}"
        "{\\*\\htmltag50 <body>}{\\*\\htmltag64 <p>}\\htmlrtf {\\htmlrtf0 \\'cf\\u1088?"
        "{\\*\\htmltag84 &amp;}\\htmlrtf &\\htmlrtf0 "
        "{\\*\\mhtmltag64 <p class=x>}{\\*\\htmltag4 <br>}\\htmlrtf \\line\\htmlrtf0 "
        "\\{a\\}{\\*\\htmltag72 </p>}\\htmlrtf\\par}\\htmlrtf0 {\\pntext *\\tab}"
        "{\\*\\htmltag64 <ul><li>}{\\f1 \\'e9}{\\*\\htmltag72 </li></ul></body></html>}}");
    EXPECT_EQ(sink.text, "[p]Пр&[br]{a}[/p][ul][li]é[/li][/ul]");
    EXPECT_EQ(sink.fields.at("title"), "Письмо");
}

TEST(RtfReader, DamageIsTold) {
    EXPECT_EQ(ReadWith(ReadRtf, "{\\rtf1 a{\\b b").problems,
              std::vector<std::string>{"the end of the file is missing"});
    EXPECT_EQ(ReadWith(ReadRtf, "{\\rtf1 a}\\par more\\par}}\r\n\0"s).Words(), "a more")
        << "a superfluous end costs nothing";
    EXPECT_EQ(ReadWith(ReadRtf, "{\\rtf1 a}\x1A\0 junk"s).Words(), "a");
    EXPECT_THROW((void)ReadWith(ReadRtf, "no rtf"), ReadError);
    std::string deep = "{\\rtf1 ";
    for (int i = 0; i < 100'000; ++i)
        deep += "{\\footnote{\\b x";
    const RecordingSink sink = ReadWith(ReadRtf, deep);
    EXPECT_EQ(sink.problems.back(), "its groups are nested too deeply");
}

// Whatever is cut off or flipped, reading ends in good order.
TEST(RtfReader, HostileInputEnds) {
    const std::string whole = ReadTestFile("rtf/properties.rtf");
    for (std::size_t length = 6; length < whole.size(); length += 997)
        (void)ReadWith(ReadRtf, whole.substr(0, length));
    std::string flipped = whole;
    std::uint32_t state = 1;
    for (int round = 0; round < 60; ++round) {
        for (int i = 0; i < 200; ++i) {
            state = state * 1664525 + 1013904223;
            flipped[6 + state % (flipped.size() - 6)] = "{}\\'\x81 0\xFF"[state >> 29];
        }
        (void)ReadWith(ReadRtf, flipped);
    }
    EXPECT_EQ(ReadWith(ReadRtf, "{\\rtf1 {\\header a{\\header b}c}d}").text, "[p]ac[/p][p]d[/p]");
    for (const char* piece :
         {"\\trowd\\itap9\\intbl x\\nestcell ", "{\\upr{", "\\u-10179 ",
          "{\\sp{\\sn pib}{\\sv{\\pict", "\\ls1\\ilvl99{\\listtext a}b\\par ", "\\bin999999999 ",
          "{\\fonttbl\\f-5\\cpg-9 a;;;;}\\f-5 \xFF", "{\\fonttbl\\'41\\'41", "}", "} "}) {
        std::string bytes = "{\\rtf1 ";
        while (bytes.size() < 100'000)
            bytes += piece;
        (void)ReadWith(ReadRtf, bytes, true);
    }
}

} // namespace
} // namespace engine
