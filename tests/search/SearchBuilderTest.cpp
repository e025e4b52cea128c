// The search builder: its requests, and its window driven through its controls.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/SearchBuilder.h"
#include "core/Messages.h"
#include "search/windows/FrmSearchBuilder.h"
#include "tests/core/Accessible.h"
#include "tests/core/Clipping.h"
#include "tests/core/Accessible.h"
#include "tests/core/Clipping.h"
#include "tests/search/SearchFixture.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class SearchBuilderTest : public SearchTest {};

TEST_F(SearchBuilderTest, BoxesBecomeARequest) {
    EXPECT_EQ(BuildRequest({u" red  car "_s, {}, {}, u"blue"_s, 2}),
              u"(%%red and %%car) and not blue"_s);
    EXPECT_EQ(BuildRequest({{}, u"red car"_s, {}, {}, 0}), u"red or car"_s);
    EXPECT_EQ(BuildRequest({{}, {}, u"red car"_s, u"a  b"_s, 1}),
              u"(%red %car) and not a and not b"_s);
    EXPECT_EQ(BuildRequest({u" "_s, {}, {}, u"blue"_s, 0}), QString());
    EXPECT_EQ(BuildRequest({{}, {}, u"bread AND butter"_s, {}, 1}), u"%bread \"AND\" %butter"_s);
}

TEST_F(SearchBuilderTest, TheThreeBoxesExcludeEachOther) {
    QLineEdit target;
    target.setText(u"old"_s);
    FrmSearchBuilder form(target, nullptr);
    form.show();
    EXPECT_THAT(ClippedTexts(form), testing::IsEmpty());
    EXPECT_THAT(NamelessControls(form), testing::IsEmpty());
    const auto box = [&](int index) {
        return form.findChild<QLineEdit*>(u"txtSearch_%1"_s.arg(index));
    };
    auto* ok = form.findChild<QPushButton*>(u"cmdok"_s);
    // The words that are not wanted make no request by themselves.
    QTest::keyClicks(box(3), u"blue"_s);
    QTest::mouseClick(ok, Qt::LeftButton);
    EXPECT_EQ(dialogue.told, QStringList{GetMessage(184) + u'|' + GetMessage(270) + u"|4"_s});
    EXPECT_TRUE(form.isVisible());

    QTest::keyClicks(box(1), u"red car"_s);
    EXPECT_FALSE(box(0)->isEnabled());
    EXPECT_FALSE(box(2)->isEnabled());
    EXPECT_TRUE(box(3)->isEnabled());
    box(1)->clear();
    EXPECT_TRUE(box(0)->isEnabled());
    EXPECT_TRUE(box(2)->isEnabled());
    QTest::keyClicks(box(2), u"red car"_s);
    auto* fuzzy = form.findChild<QSpinBox*>(u"txtFuzzy"_s);
    for (int press = 0; press < 7; ++press) {
        QTest::keyClick(fuzzy, Qt::Key_Up);
    }
    EXPECT_EQ(fuzzy->value(), kMostFuzziness);
    fuzzy->setValue(1);
    QTest::keyClick(box(2), Qt::Key_Return);
    EXPECT_EQ(form.result(), QDialog::Accepted);
    EXPECT_EQ(target.text(), u"(%red %car) and not blue"_s);
}

TEST_F(SearchBuilderTest, NothingIsCutOffOrNamelessInAnyLanguage) {
    for (const qint32 locale : {0, 1040, 1031, 1034, 1036}) {
        program->gLocaleId = locale;
        QLineEdit target;
        FrmSearchBuilder form(target, nullptr);
        form.show();
        EXPECT_THAT(ClippedTexts(form), testing::IsEmpty()) << locale;
        EXPECT_THAT(NamelessControls(form), testing::IsEmpty()) << locale;
    }
}

} // namespace
} // namespace velmora
