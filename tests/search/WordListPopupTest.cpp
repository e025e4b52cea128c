// The word list under the search box, driven by keys and the mouse.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/WordListPopup.h"
#include "tests/search/SearchFixture.h"

#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class WordListPopupTest : public SearchTest {
  protected:
    WordListPopupTest() {
        Write(u"a.txt"_s, "waffle wall walnut walrus wand w1 w2 w3 w4 w5 w6 w7 w8 w9 zebra zone");
        Index();
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(&box);
        layout->addWidget(&other);
        layout->addStretch();
        window.resize(400, 300);
        window.show();
        box.setFocus();
        QApplication::setActiveWindow(&window);
    }
    QStringList Words() const {
        QStringList words;
        for (int row = 0; row < list.topLevelItemCount(); ++row) {
            words << list.topLevelItem(row)->text(0) + u':' + list.topLevelItem(row)->text(1);
        }
        return words;
    }

    QWidget window;
    QLineEdit box;
    QLineEdit other;
    WordListPopup list{box};
};

TEST_F(WordListPopupTest, ComesAtThreeCharactersAndGoesBelow) {
    QTest::keyClicks(&box, u"wa"_s);
    EXPECT_FALSE(list.isVisible());
    QTest::keyClicks(&box, u"l"_s);
    ASSERT_TRUE(list.isVisible());
    EXPECT_EQ(Words().size(), 11);
    EXPECT_TRUE(Words().contains(u"walnut:1"_s));
    EXPECT_TRUE(box.hasFocus());
    EXPECT_TRUE(window.rect().contains(list.geometry()));
    EXPECT_EQ(list.geometry().top(), box.geometry().bottom() + 1);
    QTest::keyClick(&box, Qt::Key_Backspace);
    EXPECT_FALSE(list.isVisible());
    QTest::keyClicks(&box, u"l "_s);
    EXPECT_FALSE(list.isVisible()); // no last word
}

TEST_F(WordListPopupTest, DoubleClickReplacesTheLastWord) {
    QTest::keyClicks(&box, u"zone and wal"_s);
    ASSERT_TRUE(list.isVisible());
    const auto found = list.findItems(u"walrus"_s, Qt::MatchExactly);
    ASSERT_EQ(found.size(), 1);
    const QPoint place = list.visualItemRect(found.first()).center();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, place);
    EXPECT_EQ(box.text(), u"zone and walrus"_s);
    EXPECT_EQ(box.cursorPosition(), 15);
    EXPECT_TRUE(box.hasFocus());
    EXPECT_FALSE(list.isVisible());
}

TEST_F(WordListPopupTest, KeysWalkChooseAndLeave) {
    QTest::keyClicks(&box, u"zeb"_s);
    ASSERT_TRUE(list.isVisible());
    QTest::keyClick(&box, Qt::Key_Down);
    EXPECT_TRUE(list.hasFocus());
    QTest::keyClick(&list, Qt::Key_Escape);
    EXPECT_FALSE(list.isVisible());
    EXPECT_TRUE(box.hasFocus());
    EXPECT_EQ(box.text(), u"zeb"_s);

    QTest::keyClicks(&box, u"r"_s);
    QTest::keyClick(&box, Qt::Key_Down);
    while (list.currentItem()->text(0) != u"zebra") {
        QTest::keyClick(&list, Qt::Key_Down);
    }
    QTest::keyClick(&list, Qt::Key_Return);
    EXPECT_EQ(box.text(), u"zebra"_s);

    QTest::keyClicks(&box, u"x"_s);
    ASSERT_TRUE(list.isVisible());
    QTest::keyClick(&box, Qt::Key_Return); // begins the search
    EXPECT_FALSE(list.isVisible());
    QTest::keyClicks(&box, u"y"_s);
    ASSERT_TRUE(list.isVisible());
    other.setFocus(Qt::TabFocusReason);
    EXPECT_FALSE(list.isVisible());
}

TEST_F(WordListPopupTest, ControlSpaceOffersTheOperators) {
    box.setText(u" red "_s);
    QPoint place;
    QObject::connect(&list, &WordListPopup::AutoCompleteRequested,
                     [&](const QPoint& asked) { place = asked; });
    QTest::keyClick(&box, Qt::Key_Space, Qt::ControlModifier);
    EXPECT_EQ(place, box.mapToGlobal(QPoint(0, box.height())));
    EXPECT_EQ(box.text(), u" red "_s);
    QTimer::singleShot(0, [] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_TRUE(menu);
        ASSERT_EQ(menu->actions().size(), 7);
        menu->actions()[5]->trigger();
        menu->close();
    });
    ShowOperatorsMenu(box, place);
    EXPECT_EQ(box.text(), u"red and not "_s);
    EXPECT_EQ(box.cursorPosition(), 12);
}

} // namespace
} // namespace velmora
