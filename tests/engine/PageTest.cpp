// Pages with marked hits: from the file, or from the stored text when the file is another one now.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "EngineFixture.h"

#include "engine/FileConverter.h"

#include <QRegularExpression>

namespace engine_test {
namespace {

class Page : public EngineFixture {
  protected:
    [[nodiscard]] engine::ConvertedPage Convert(const engine::SearchItem& item) const {
        engine::FileConverter converter;
        converter.IndexPath = IndexPath();
        converter.WorkerProgram = WorkerProgram();
        converter.InputFile = item.FileName;
        converter.Spelling = item.Spelling;
        converter.Hits = item.Hits;
        converter.BeforeHit = QStringLiteral("<b id=hit%%ThisHit%%>");
        converter.AfterHit = QStringLiteral("</b>");
        converter.Footer = QStringLiteral("<hr>end");
        converter.StoredTextNote = QStringLiteral("Note: %1");
        return converter.Execute();
    }
    // The marked words, in order; checks that their anchors count from 1.
    static std::string Marked(const QString& html) {
        static const QRegularExpression hit(QStringLiteral("<b id=hit(\\d+)>(.*?)</b>"));
        std::string words;
        int expected = 1;
        for (auto each = hit.globalMatch(html); each.hasNext();) {
            const auto match = each.next();
            EXPECT_EQ(match.captured(1).toInt(), expected++);
            words += match.captured(2).toStdString() + " ";
        }
        return words;
    }
};

TEST_F(Page, MarksTheVeryWordsOfTheRequest) {
    Write(QStringLiteral("a.html"),
          "<title>The Title</title><h1>Heading &amp; more</h1><p>Caf\xC3\xA9, na<b>ï</b>ve <i>d</i>oor"
          "<ul><li>one door<li>two</ul><table><tr><td>cell door</td></tr></table>"
          "<script>door()</script><img src=\"http://x.example/door.png\" onerror=\"door()\" alt=\"a door\">"
          "<a href=\"javascript:door()\">click <em>do</em>or</a></p><pre>x &lt;door&gt;\n y</pre>");
    ASSERT_TRUE(Update().problems.empty());
    const engine::SearchResults results = Search("door or cafe or naive or title contains (title)");
    ASSERT_EQ(results.items.size(), 1U);
    const engine::ConvertedPage page = Convert(results.items.front());
    ASSERT_EQ(page.origin, engine::PageOrigin::Document) << page.reason.toStdString();
    EXPECT_EQ(Marked(page.html), "Title Caf\xC3\xA9 naïve door door door door door door ");
    for (const char* part : {"<h1>Heading &amp; more</h1>", "<li>", "<td>", "<pre>x &lt;", "<hr>end"})
        EXPECT_TRUE(page.html.contains(QString::fromUtf8(part))) << part << "\n" << page.html.toStdString();
    for (const char* part : {"script", "http:", "onerror", "javascript"})
        EXPECT_FALSE(page.html.contains(QString::fromLatin1(part))) << part;
}

TEST_F(Page, TakesTheStoredTextWhenTheFileIsAnother) {
    const QString path = Write(QStringLiteral("a.txt"), "first line\n\nsecond <line> here");
    Update();
    const engine::SearchItem item = Search("line").items.front();
    EXPECT_EQ(Marked(Convert(item).html), "line line ");
    Write(QStringLiteral("a.txt"), "something else entirely, longer than before");
    engine::ConvertedPage page = Convert(item);
    EXPECT_EQ(page.origin, engine::PageOrigin::StoredText);
    EXPECT_EQ(Marked(page.html), "line line ");
    EXPECT_TRUE(page.html.contains(QStringLiteral("Note: the file has changed since it was indexed")));
    EXPECT_TRUE(page.html.contains(QStringLiteral("&lt;<b")));
    QFile::remove(path);
    page = Convert(item);
    EXPECT_EQ(page.origin, engine::PageOrigin::StoredText);
    EXPECT_TRUE(page.html.contains(QStringLiteral("Note: No such file")));
    EXPECT_EQ(
        engine::StoredDocumentText(IndexPath(), {}, item.FileName, item.Spelling).trimmed().toStdString(),
        "first line\n\nsecond <line> here");
}

// A long text: read in slices, stored in chunks, rendered in pieces, one numbering throughout.
TEST_F(Page, LongTextsKeepTheirNumbers) {
    QByteArray text;
    for (int i = 0; i < 200'000; ++i)
        text += (i % 1000 == 999 ? "needle" : "w" + QByteArray::number(i)) + (i % 13 == 0 ? "\n" : " ");
    Write(QStringLiteral("long.txt"), text);
    Write(QStringLiteral("long.html"), "<p>" + text.replace("w5 ", "<i>w</i>5 "));
    ASSERT_TRUE(Update().problems.empty());
    const engine::SearchResults results = Search("needle");
    ASSERT_EQ(results.items.size(), 2U);
    for (const engine::SearchItem& item : results.items) {
        ASSERT_EQ(item.Hits.size(), 200U);
        for (std::size_t i = 0; i < 200; ++i)
            ASSERT_EQ(item.Hits[i], (i + 1) * 1000);
        const engine::ConvertedPage page = Convert(item);
        EXPECT_EQ(page.origin, engine::PageOrigin::Document);
        EXPECT_EQ(Marked(page.html), QString(QStringLiteral("needle ")).repeated(200).toStdString());
    }
}

TEST_F(Page, RecognisedTextKeepsTheNumbersOfItsWords) {
    Write(QStringLiteral("iftext.ocr"), "e-mail - \"Quoted,\" 3.14 last");
    Write(QStringLiteral("plain.txt"), "e-mail - \"Quoted,\" 3.14 last");
    Update();
    const auto hits = [&](const char* request) { return Search(request).items; };
    for (const auto& [request, ocr, plain] :
         {std::tuple{"last", 5U, 6U}, std::tuple{"quoted", 3U, 3U}, std::tuple{"mail", 1U, 2U}})
        for (const engine::SearchItem& item : hits(request))
            EXPECT_EQ(item.Hits, std::vector<std::uint32_t>{
                                     item.DisplayName.endsWith(QStringLiteral("ocr")) ? ocr : plain})
                << request << " in " << item.DisplayName.toStdString();
    EXPECT_EQ(hits("last").size(), 2U);
    // It leaves with just the words it came with.
    QFile::remove(Docs() + QStringLiteral("/iftext.ocr"));
    Update();
    EXPECT_EQ(Names("email or last"), "plain.txt");
}

} // namespace
} // namespace engine_test
