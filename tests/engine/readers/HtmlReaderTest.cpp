// Text of HTML: words are neither glued together nor torn apart, whatever the tags.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/engine/readers/Packages.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

struct HtmlCase {
    const char* name;
    const char* html;
    const char* text;
};

class HtmlText : public testing::TestWithParam<HtmlCase> {};

TEST_P(HtmlText, ReadsAs) {
    EXPECT_EQ(ReadWith(ReadHtml, GetParam().html).text, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, HtmlText,
    testing::Values(
        HtmlCase{"blocks", "<html><body><h2>Head</h2><p>One</p><div>Two</div>Three</body></html>",
                 "[h2]Head[/h2][p]One[/p][p]Two[/p][p]Three[/p]"},
        HtmlCase{"wordsSplitByTags", "<p>un<b>believ</b><a href='x'>able</a> <i>t</i>ale</p>",
                 "[p]unbelievable tale[/p]"},
        HtmlCase{"blanksCollapse", "<p>\n  a  \n\t<b> b</b>  c\n</p>", "[p]a b c[/p]"},
        HtmlCase{"breaks", "<p><br>a<br><br/>b<br></p>c</br>d", "[p]a[br][br]b[/p][p]c[br]d[/p]"},
        HtmlCase{"softBreaks", "<p>long<wbr>word so&shy;ft</p>",
                 "[p]longword so\xC2\xAD"
                 "ft[/p]"},
        HtmlCase{"references",
                 "<p>&eacute;&#233;&#xE9; AT&T &lt;b&gt; &amp;amp; caf&eacute "
                 "&lstrok;&#150;&nosuch;</p>",
                 "[p]ééé AT&T <b> &amp; café ł–&nosuch;[/p]"},
        HtmlCase{"notShown",
                 "<style>p{}</style><script>if (a<b) document.write('</p>')</script>"
                 "<noscript>No</noscript><template>No</template><!-- no > no -->yes<!DOCTYPE x>",
                 "[p]yes[/p]"},
        HtmlCase{"picturesSpeak", "<p>a<img src=x alt='red car'>b</p>", "[p]a red car b[/p]"},
        HtmlCase{"preformatted", "<pre>\n  a\n   b &lt;c&gt;<b>d</b>\n</pre>e",
                 "[pre]  a\n   b <c>d\n[/pre][p]e[/p]"},
        HtmlCase{"listing", "<pre><div>one</div><div>two</div></pre>", "[pre]one[br]two[/pre]"},
        HtmlCase{"openLists", "<ul><li>a<li>b<ol><li>c</ol><li>d</ul>e",
                 "[ul][li]a[/li][li]b[ol][li]c[/li][/ol][/li][li]d[/li][/ul][p]e[/p]"},
        HtmlCase{"openTables", "<table><tr><td>a<td>b<tr><td><table><td>c</table>d</table>e",
                 "[table][tr][td]a[/td][td]b[/td][/tr]"
                 "[tr][td][table][tr][td]c[/td][/tr][/table]d[/td][/tr][/table][p]e[/p]"},
        HtmlCase{"boxesInCells", "<table><tr><td><div>a</div><div>b</div></td></tr></table>",
                 "[table][tr][td]a[br]b[/td][/tr][/table]"},
        HtmlCase{"quote", "<blockquote>a<p>b</blockquote>c",
                 "[quote][p]a[/p][p]b[/p][/quote][p]c[/p]"},
        HtmlCase{"strayEnds", "</td></ul><p>a</b></div>b</p></html>c", "[p]a[/p][p]b[/p][p]c[/p]"},
        HtmlCase{"quotesInTags", "<a title='a > b' x=\">\">in</a> <p class=it's>out</p>",
                 "[p]in[/p][p]out[/p]"},
        HtmlCase{"notTags", "<p>1 < 2 and a<3, <4></p>", "[p]1 < 2 and a<3, <4>[/p]"},
        HtmlCase{"openAtEnd", "<p>a<b>b<!-- never closed <i>c</i> <a href=\"x", "[p]abc[/p]"},
        HtmlCase{"neverClosedTitle", "<title>x<p>body", "[p]x[/p][p]body[/p]"},
        HtmlCase{"xhtml", "<title/><script src='x'/><p>a<![CDATA[<b>]]></p>", "[p]a<b>[/p]"},
        HtmlCase{"cellWithoutTable", "<td>a</td><li>b</li>",
                 "[table][tr][td]a[/td][td][ul][li]b[/li][/ul][/td][/tr][/table]"}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST(HtmlReader, Fields) {
    const RecordingSink sink = ReadWith(
        ReadHtml, "<head><title> A &amp;\n B </title><META NAME=Author CONTENT='Ann Ö'>"
                  "<meta name=keywords content='x, y'><meta name=viewport content=no></head>text");
    EXPECT_EQ(sink.fields, (std::map<std::string, std::string>{
                               {"title", "A & B"}, {"author", "Ann Ö"}, {"keywords", "x, y"}}));
    EXPECT_EQ(sink.text, "[p]text[/p]");
}

TEST(HtmlReader, Charsets) {
    const auto words = [](const std::string& html) { return ReadWith(ReadHtml, html).Words(); };
    EXPECT_EQ(words("<meta charset=iso-8859-1><p>\x80 \xE9"), "€ é");
    EXPECT_EQ(
        words("<meta http-equiv=Content-Type content='text/html; charset=koi8-r'>\xF0\xD2\xC9"),
        "При");
    EXPECT_EQ(words("<?xml version='1.0' encoding='shift_jis'?><html>\x93\xFA\x96\x7B"), "日本");
    EXPECT_EQ(words("<meta charset=windows-1252><p>schön"), "schön") << "valid UTF-8 wins";
    EXPECT_EQ(words("\xEF\xBB\xBF<meta charset=koi8-r><p>a"), "a");
    EXPECT_EQ(words(std::string("\xFF\xFE<\0p\0>\0\xE9\0", 10)), "é");
}

TEST(HtmlReader, PicturesInTheTextItself) {
    const std::string html = "<p><img alt='dot' src='data:image/png;base64,iVBORw0KGgo='>"
                             "<img alt=far src='http://example.com/x.png'>";
    const RecordingSink sink = ReadWith(ReadHtml, html, true);
    ASSERT_EQ(sink.pictures.size(), 1U);
    EXPECT_EQ(sink.pictures[0], (std::pair<std::string, std::string>("image/png", "dot")));
    EXPECT_EQ(sink.Words(), "dot far");
    EXPECT_EQ(ReadWith(ReadHtml, html).Words(), "dot far")
        << "words count the same without pictures";
}

TEST(HtmlReader, NestingIsBounded) {
    std::string html;
    for (int i = 0; i < 100'000; ++i)
        html += "<blockquote><ul><li><table><tr><td>";
    html += "deep";
    for (int i = 0; i < 100'000; ++i)
        html += "</div></ul></blockquote>";
    const RecordingSink sink = ReadWith(ReadHtml, html);
    EXPECT_EQ(sink.Words(), "deep");
    EXPECT_LT(sink.text.size(), 10'000U);
}

} // namespace
} // namespace engine
