// The result window, driven through its controls as a person would.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Messages.h"
#include "search/MessageIds.h"
#include "search/windows/PageView.h"
#include "search/windows/frmSearchResult.h"
#include "tests/core/Accessible.h"
#include "tests/core/Clipping.h"
#include "tests/search/SearchFixture.h"

#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QSplitter>
#include <QTableView>
#include <QTest>
#include <QToolBar>
#include <QToolButton>

using namespace Qt::StringLiterals;
using testing::IsEmpty;

namespace velmora {
namespace {

// One window and short names for its parts.
class Driver {
  public:
    explicit Driver(engine::SearchResults results) : window(std::move(results), {}, u"walnut"_s) {
        window.show();
    }

    QTableView& Grid() const { return *window.findChild<QTableView*>(u"grdResult"_s); }
    PageView& Page() const { return *window.findChild<PageView*>(u"web"_s); }
    QAction& Action(const char* name) const {
        return *window.findChild<QAction*>(QLatin1StringView(name));
    }
    void Click(const char* name) {
        for (const char* bar : {"tlbFilter", "tlbNavigation"}) {
            auto* tools = window.findChild<QToolBar*>(QLatin1StringView(bar));
            if (QWidget* button = tools->widgetForAction(&Action(name))) {
                ASSERT_TRUE(button->isVisible()) << name;
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        FAIL() << "no button " << name;
    }
    void ClickRow(int row) {
        const QRect place = Grid().visualRect(Grid().model()->index(row, 1));
        QTest::mouseClick(Grid().viewport(), Qt::LeftButton, {}, place.center());
    }
    void ClickHead(int column) {
        QHeaderView& head = *Grid().horizontalHeader();
        QTest::mouseClick(head.viewport(), Qt::LeftButton, {},
                          {head.sectionViewportPosition(column) + 10, head.height() / 2});
    }
    QString Cell(int row, int column) const {
        return Grid().model()->index(row, column).data().toString();
    }
    QStringList Column(int column) const {
        QStringList cells;
        for (int row = 0; row < Grid().model()->rowCount(); ++row) {
            cells << Cell(row, column);
        }
        return cells;
    }
    QString HitText() const { return window.findChild<QLabel*>(u"lblHit"_s)->text(); }
    // Waits for the page of the row that was selected.
    [[nodiscard]] bool Loaded() const {
        return QTest::qWaitFor([this] { return Action("NextHit").isEnabled(); }, 30'000);
    }
    QString MarkedText() const {
        const auto marks = Page().extraSelections();
        return marks.isEmpty() ? QString() : marks.first().cursor.selectedText();
    }

    frmSearchResult window;
};

class ResultWindowTest : public SearchTest {
  protected:
    ResultWindowTest() {
        QByteArray text;
        for (int line = 1; line <= 300; ++line) {
            text += line % 100 == 0 ? "A walnut tree\n" : "nothing here\n";
        }
        Write(u"long.txt"_s, text);
        Write(u"letter.eml"_s, Mail("Dinner", "walnut and walnut", {{"bill.txt", "walnut"}}));
        Write(u"pack.zip"_s, Zip({{"inner.txt", "walnut"}}));
        Index();
    }
};

TEST_F(ResultWindowTest, WalksTheHitsOfADocumentToItsEndAndBack) {
    Driver driver(Search(u"walnut"_s));
    EXPECT_EQ(driver.window.windowTitle(), u"Search results: 4 Document/s - Hits: 7"_s);
    EXPECT_EQ(driver.Column(1).first(), u"long.txt"_s); // most hits first
    EXPECT_EQ(driver.Grid().currentIndex().row(), 0);
    ASSERT_TRUE(driver.Loaded());
    EXPECT_EQ(driver.Page().HitCount(), 3);
    EXPECT_EQ(driver.HitText(), u"3 hits"_s);
    EXPECT_EQ(driver.MarkedText(), QString());
    const int top = driver.Page().verticalScrollBar()->value();

    driver.Click("NextHit");
    EXPECT_EQ(driver.HitText(), u"Hit 1 of 3"_s);
    EXPECT_EQ(driver.MarkedText().trimmed(), u"walnut"_s);
    const int first = driver.Page().verticalScrollBar()->value();
    EXPECT_GT(first, top);
    QTest::keyClick(&driver.window, Qt::Key_F3);
    driver.Click("NextHit");
    EXPECT_EQ(driver.HitText(), u"Hit 3 of 3"_s);
    EXPECT_TRUE(driver.Page()
                    .cursorRect(driver.Page().extraSelections().first().cursor)
                    .intersects(driver.Page().viewport()->rect()));
    driver.Click("NextHit");
    EXPECT_EQ(dialogue.told, QStringList(u"Velmora - End of search|Last hit!|1"_s));
    EXPECT_EQ(driver.HitText(), u"Hit 3 of 3"_s);

    QTest::keyClick(&driver.window, Qt::Key_F3, Qt::ShiftModifier);
    driver.Click("PrevHit");
    EXPECT_EQ(driver.Page().verticalScrollBar()->value(), first);
    driver.Click("PrevHit");
    EXPECT_EQ(dialogue.told.last(), u"Velmora - End of search|First hit!|1"_s);
    EXPECT_EQ(driver.HitText(), u"Hit 1 of 3"_s);
}

TEST_F(ResultWindowTest, AnotherDocumentBeginsAnew) {
    Driver driver(Search(u"walnut"_s));
    ASSERT_TRUE(driver.Loaded());
    EXPECT_FALSE(driver.Action("PDC").isEnabled());
    driver.Click("NextHit");
    driver.Click("NDC");
    EXPECT_EQ(driver.Grid().currentIndex().row(), 1);
    ASSERT_TRUE(driver.Loaded());
    EXPECT_EQ(driver.HitText(), u"2 hits"_s);
    EXPECT_TRUE(driver.Page().toPlainText().contains(u"Dinner"_s));
    // Quick steps: the last one counts, whatever came back in between.
    driver.ClickRow(2);
    driver.ClickRow(0);
    driver.ClickRow(3);
    driver.ClickRow(0);
    ASSERT_TRUE(driver.Loaded());
    EXPECT_EQ(driver.Page().HitCount(), 3);
    EXPECT_TRUE(driver.Page().toPlainText().contains(u"nothing here"_s));
    driver.ClickRow(3);
    EXPECT_FALSE(driver.Action("NDC").isEnabled());
    driver.Click("PDC");
    EXPECT_EQ(driver.Grid().currentIndex().row(), 2);
}

TEST_F(ResultWindowTest, FilterButtonsAreOneGroup) {
    Driver driver(Search(u"walnut"_s));
    ASSERT_TRUE(driver.Loaded());
    const auto names = [&](const char* button) {
        driver.Click(button);
        EXPECT_TRUE(driver.Action(button).isChecked());
        QStringList cells = driver.Column(1);
        cells.sort();
        return cells.join(u' ').toStdString();
    };
    EXPECT_EQ(names("ATC"), "bill.txt");
    EXPECT_FALSE(driver.Action("ALL").isChecked());
    EXPECT_EQ(driver.window.windowTitle(), u"Search results: 1 Document/s - Hits: 1"_s);
    // Nothing is shown until a row is chosen.
    EXPECT_FALSE(driver.window.findChild<QToolBar*>(u"tlbNavigation"_s)->isVisible());
    EXPECT_EQ(driver.Page().toPlainText(), QString());
    driver.ClickRow(0);
    ASSERT_TRUE(driver.Loaded());
    EXPECT_TRUE(driver.window.findChild<QToolBar*>(u"tlbNavigation"_s)->isVisible());
    EXPECT_EQ(driver.Cell(0, 3), u"Mail attachment (letter.eml)"_s);

    EXPECT_EQ(names("ZIP"), "inner.txt");
    EXPECT_EQ(names("OTH"), "letter.eml long.txt");
    EXPECT_EQ(names("EML"), "");
    const auto* more = driver.window.findChild<QLabel*>(u"lblMore"_s);
    EXPECT_EQ(more->text(), GetMessage(kNothingOfKind));
    EXPECT_TRUE(more->isVisible());
    EXPECT_FALSE(driver.Action("LOCATE").isEnabled());
    EXPECT_FALSE(driver.Action("NDC").isEnabled());
    EXPECT_EQ(names("IMG"), "");
    EXPECT_EQ(names("ALL"), "bill.txt inner.txt letter.eml long.txt");
    EXPECT_FALSE(more->isVisible());
}

TEST_F(ResultWindowTest, HeadsSort) {
    Driver driver(Search(u"walnut"_s));
    driver.ClickHead(1);
    const QStringList rising = {u"bill.txt"_s, u"inner.txt"_s, u"letter.eml"_s, u"long.txt"_s};
    EXPECT_EQ(driver.Column(1), rising);
    EXPECT_EQ(driver.Grid().currentIndex().row(), 0);
    EXPECT_EQ(driver.Grid().horizontalHeader()->sortIndicatorOrder(), Qt::AscendingOrder);
    driver.ClickHead(1);
    EXPECT_EQ(driver.Column(1), QStringList(rising.rbegin(), rising.rend()));
    driver.ClickHead(3); // does nothing
    EXPECT_EQ(driver.Grid().currentIndex().row(), 0);
    EXPECT_EQ(driver.Column(1).first(), u"long.txt"_s);
    EXPECT_EQ(driver.Grid().horizontalHeader()->sortIndicatorSection(), 1);
    driver.ClickHead(2);
    EXPECT_EQ(driver.Column(2), QStringList({u"1"_s, u"1"_s, u"2"_s, u"3"_s}));
    ASSERT_TRUE(driver.Loaded());
    EXPECT_TRUE(driver.Page().toPlainText().contains(u"walnut"_s));
}

TEST_F(ResultWindowTest, MembersAreNotOpenedButFoundInTheirFile) {
    Driver driver(Search(u"walnut"_s));
    ASSERT_TRUE(driver.Loaded());
    EXPECT_TRUE(driver.Action("EXEC").isEnabled());
    driver.Click("ZIP");
    driver.ClickRow(0);
    EXPECT_FALSE(driver.Action("EXEC").isEnabled());
    EXPECT_EQ(driver.Action("EXEC").toolTip(), GetMessage(kMemberNotOpened));
    driver.Click("LOCATE");
    EXPECT_EQ(driver.window.LocateTarget, LogicalDocs(u"pack.zip"_s));
    EXPECT_FALSE(driver.window.isVisible());

    Driver plain(Search(u"walnut"_s));
    QTest::keyClick(&plain.window, Qt::Key_Escape);
    EXPECT_FALSE(plain.window.isVisible());
    EXPECT_EQ(plain.window.LocateTarget, QString());
}

TEST_F(ResultWindowTest, DocumentThatIsGoneIsShownFromTheIndex) {
    QFile::remove(Docs(u"long.txt"_s));
    Driver driver(Search(u"walnut"_s));
    ASSERT_TRUE(driver.Loaded());
    EXPECT_EQ(driver.Cell(0, 1), u"long.txt"_s);
    EXPECT_EQ(driver.Page().HitCount(), 3);
    driver.Click("NextHit");
    EXPECT_EQ(driver.MarkedText().trimmed(), u"walnut"_s);
}

TEST_F(ResultWindowTest, FailureToShowIsReportedOnceAndTheWindowLives) {
    engine::SearchResults results = Search(u"walnut"_s);
    const QString index =
        platform::ToMachine(program->gArchivePath + u"\\indexes\\DOMAIN.ANNA\\index_a.ix"_s);
    ASSERT_TRUE(QFile::rename(index, index + u".away"_s));
    Driver driver(std::move(results));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !reporter.reports.isEmpty(); }, 30'000));
    EXPECT_EQ(reporter.reports.size(), 1);
    EXPECT_FALSE(driver.Action("NextHit").isEnabled());
    driver.Click("ZIP");
    EXPECT_EQ(driver.Column(1), QStringList(u"inner.txt"_s));
    // Retry converts anew.
    reporter.Next([&] { return QFile::rename(index + u".away"_s, index); });
    driver.ClickRow(0);
    ASSERT_TRUE(driver.Loaded());
    EXPECT_EQ(driver.Page().HitCount(), 1);
}

TEST_F(ResultWindowTest, SplitterAndSizeAreRemembered) {
    {
        Driver driver(Search(u"walnut"_s));
        driver.window.resize(900, 500);
        driver.window.findChild<QSplitter*>(u"hsplitter"_s)->setSizes({500, 380});
        driver.window.close();
    }
    Driver driver(Search(u"walnut"_s));
    EXPECT_EQ(driver.window.size(), QSize(900, 500));
    EXPECT_NEAR(driver.window.findChild<QSplitter*>(u"hsplitter"_s)->sizes().first(), 500, 4);
}

TEST_F(ResultWindowTest, MoreThanWhatIsKeptIsTold) {
    engine::SearchResults results = Search(u"walnut"_s);
    results.found = 1234;
    Driver driver(std::move(results));
    EXPECT_EQ(driver.window.findChild<QLabel*>(u"lblMore"_s)->text(),
              GetMessage(kBestOf, {u"4"_s, u"1234"_s}));
}

TEST_F(ResultWindowTest, NothingIsCutOffOrNamelessInAnyLanguage) {
    for (const qint32 locale : {0, 1040, 1031, 1034, 1036}) {
        program->gLocaleId = locale;
        SCOPED_TRACE(locale);
        Driver driver(Search(u"walnut"_s));
        ASSERT_TRUE(driver.Loaded());
        EXPECT_THAT(ClippedTexts(driver.window), IsEmpty());
        EXPECT_THAT(NamelessControls(driver.window), IsEmpty());
    }
}

TEST(PageViewTest, FetchesNothingFromOutsideThePage) {
    const QString secret = ThePlace().Path("tmp", u"secret.png"_s);
    QImage picture(4, 4, QImage::Format_RGB32);
    picture.fill(Qt::red);
    ASSERT_TRUE(picture.save(secret));
    QByteArray png;
    QBuffer buffer(&png);
    picture.save(&buffer, "PNG");
    const QUrl inPage(u"data:image/png;base64,"_s + QString::fromLatin1(png.toBase64()));
    PageView view;
    view.ShowPage(
        u"<a href=\"%1\">link</a><img src=\"%1\"><img src=\"file://%1\"><img src=\"%2\">"_s.arg(
            secret, inPage.toString()));
    view.show();
    QApplication::processEvents();
    for (const QUrl& url : {QUrl(secret), QUrl::fromLocalFile(secret), QUrl(u"http://x.y/a.png"_s),
                            QUrl(u"qrc:/a.png"_s), QUrl(u"secret.png"_s)}) {
        const QVariant answer = view.document()->resource(QTextDocument::ImageResource, url);
        EXPECT_EQ(answer.value<QImage>().size(), QSize(1, 1)) << url.toString().toStdString();
    }
    const QImage shown = view.grab().toImage();
    int red = 0;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            red += shown.pixelColor(x, y) == Qt::red ? 1 : 0;
        }
    }
    // The picture in the page, and no other.
    EXPECT_NEAR(red / shown.devicePixelRatio() / shown.devicePixelRatio(), 16, 8);
    EXPECT_FALSE(view.document()->resource(QTextDocument::ImageResource, inPage).isNull());
    view.setSource(QUrl::fromLocalFile(secret));
    EXPECT_TRUE(view.toPlainText().startsWith(u"link"_s)); // the page stays
}

TEST(PageViewTest, HitsAreWholeWordsAndOnlyNumberedAnchorsCount) {
    const auto hit = [](int number, const QString& word) {
        return u"<span style=\"background-color: #FFFF00\"><A NAME=\"hit%1\"></A><b>%2</b> </span>"_s
            .arg(number)
            .arg(word);
    };
    PageView view;
    view.ShowPage(u"<p>a "_s + hit(1, u"one"_s) + hit(2, u"two"_s) + u"<b>bold</b></p><p>"_s +
                  hit(3, u"x"_s) + u"</p><a name=\"hit7\">y</a><a name=\"hits\">z</a>"_s);
    ASSERT_EQ(view.HitCount(), 3);
    const char* words[] = {"one", "two", "x"};
    for (int number = 1; number <= 3; ++number) {
        view.ShowHit(number);
        EXPECT_EQ(view.extraSelections().first().cursor.selectedText().trimmed(),
                  QLatin1StringView(words[number - 1]));
    }
    view.ShowHit(4);
    view.ShowHit(0);
    EXPECT_EQ(view.extraSelections().first().cursor.selectedText().trimmed(), u"x"_s);
}

} // namespace
} // namespace velmora
