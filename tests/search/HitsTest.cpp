// Pages with their hits, and the walk over them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/Hits.h"
#include "core/Messages.h"
#include "search/TextQuery.h"
#include "tests/search/SearchFixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class HitsTest : public SearchTest {
  protected:
    static QString Page(const engine::SearchItem& item) {
        QString html;
        GetHtmlString(item.FileName, item.HitsString(), html, item.Spelling);
        return html;
    }
    static QStringList Anchors(const QString& html) {
        static const QRegularExpression anchor(
            u"<A NAME=\"(hit\\d+)\"></A><b>([^<]*)</b> </span>"_s);
        QStringList found;
        for (auto match = anchor.globalMatch(html); match.hasNext();) {
            found << match.next().captured(1);
        }
        return found;
    }
    static QStringList Numbered(std::size_t count) {
        QStringList names;
        for (std::size_t hit = 1; hit <= count; ++hit) {
            names << u"hit%1"_s.arg(hit);
        }
        return names;
    }
};

TEST_F(HitsTest, WalkStopsAtBothEndsAndSaysSo) {
    HtmlHitWalk walk;
    const QString first = GetMessage(114) + u'|' + GetMessage(225) + u"|1"_s;
    const QString last = GetMessage(114) + u'|' + GetMessage(295) + u"|1"_s;
    EXPECT_FALSE(walk.NextHit()); // nothing to walk
    walk.Reset(2);
    EXPECT_EQ(walk.Current(), 0);
    EXPECT_FALSE(walk.PrevoiusHit());
    EXPECT_TRUE(walk.NextHit());
    EXPECT_EQ(walk.Anchor(), u"hit1"_s);
    EXPECT_FALSE(walk.PrevoiusHit());
    EXPECT_EQ(walk.Current(), 1);
    EXPECT_TRUE(walk.NextHit());
    EXPECT_FALSE(walk.NextHit());
    EXPECT_EQ(walk.Anchor(), u"hit2"_s);
    EXPECT_TRUE(walk.PrevoiusHit());
    EXPECT_EQ(walk.Current(), 1);
    EXPECT_EQ(dialogue.told, QStringList({last, first, first, last}));
}

TEST_F(HitsTest, EveryHitOfEveryDocumentHasItsAnchor) {
    const QString data = QStringLiteral(VELMORA_TEST_DATA);
    for (const char* name : {"office/test.docx", "office/test.odt", "office/test.html",
                             "office/test.epub", "office/test.xlsx", "pdf/AcroForm_TEST.pdf"}) {
        const QString file = QLatin1StringView(name);
        ASSERT_TRUE(QFile::copy(data + u'/' + file, Docs(file.section(u'/', -1))));
    }
    Write(u"mail.eml"_s,
          Mail("The hat", "the cat & the <hat>", {{"the.txt", "the end of the end"}}));
    Write(u"pack.zip"_s, Zip({{"the.txt", "the\nquick \"fox\" the"}}));
    Index();
    const engine::SearchResults results = Search(u"*"_s);
    ASSERT_GE(results.items.size(), 9U); // every word of every document
    for (const engine::SearchItem& item : results.items) {
        const QString html = Page(item);
        EXPECT_EQ(Anchors(html), Numbered(item.Hits.size())) << item.FileName.toStdString();
        EXPECT_TRUE(html.contains(u"<HR>Generato mediante Velmora Orbelia"_s));
        EXPECT_FALSE(html.contains(u"<i>"_s + GetMessage(3211).left(20))); // from the file itself
    }
}

TEST_F(HitsTest, HostilePageIsHarmless) {
    Write(u"bad.html"_s,
          "<html><head><script>steal()</script><meta http-equiv=refresh content='0;url=http://x.y'>"
          "<link rel=stylesheet href='http://x.y/a.css'><base href='http://x.y/'></head>"
          "<body onload='steal()'>walnut <img src='http://x.y/pixel.gif' onerror=steal()>"
          "<iframe src='file:///etc/passwd'></iframe><a href='javascript:steal()'>walnut</a>"
          "<svg><script>steal()</script></svg> <span style=\"background:url(http://x.y)\">x</span>"
          "&lt;script&gt;walnut&lt;/script&gt;</body></html>");
    Index();
    const engine::SearchResults results = Search(u"walnut"_s);
    ASSERT_EQ(results.items.size(), 1U);
    const QString html = Page(results.items.front());
    EXPECT_EQ(Anchors(html), Numbered(3)) << html.toStdString();
    for (const QString& bad : {u"<script"_s, u"src=\"http"_s, u"src='http"_s, u"src=http"_s,
                               u"<iframe"_s, u"<link"_s, u"<base"_s, u"href"_s, u"onload"_s,
                               u"onerror"_s, u"javascript:"_s, u"url("_s, u"refresh"_s}) {
        EXPECT_FALSE(html.contains(bad, Qt::CaseInsensitive)) << bad.toStdString();
    }
    EXPECT_TRUE(html.contains(u"&lt;script&gt;"_s)); // what was text stays text
}

TEST_F(HitsTest, StoredTextIsShownAndSaidSoInTheLanguage) {
    const QString file = Write(u"a.txt"_s, "one walnut, two walnuts\nwalnut");
    Index();
    const engine::SearchItem item = Search(u"walnut*"_s).items.front();
    program->gLocaleId = 1031;
    Write(u"a.txt"_s, "something else altogether");
    QString html = Page(item);
    EXPECT_EQ(Anchors(html), Numbered(3));
    EXPECT_TRUE(html.contains(GetMessage(3211).section(u':', 0, 0)));
    EXPECT_FALSE(html.contains(u"the file has changed"_s)); // no English in a German page
    QFile::remove(file);
    html = Page(item);
    EXPECT_EQ(Anchors(html), Numbered(3));
    EXPECT_FALSE(html.contains(u"something else"_s));
}

TEST_F(HitsTest, WithoutAnIndexTheFailureNamesItself) {
    QString html = u"old"_s;
    EXPECT_THROW(GetHtmlString(u"\\A.TXT"_s, u"1 "_s, html), Error);
    EXPECT_EQ(html, u"old"_s);
}

} // namespace
} // namespace velmora
