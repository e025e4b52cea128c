// The two looks at a window that all tests of windows share find what is wrong.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/core/Accessible.h"
#include "tests/core/Clipping.h"
#include "tests/core/Place.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTreeWidget>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace velmora {
namespace {

TEST(LooksTest, WhatIsCutOffIsFoundAndNothingElse) {
    QWidget window;
    window.resize(400, 400);
    const auto place = [&](QWidget& widget, const QString& name, int width) {
        widget.setParent(&window);
        widget.setObjectName(name);
        widget.setGeometry(0, 0, width, 100);
    };
    const QString words = u"several words that need room"_s;
    QLabel wide(words), narrow(words), wrapped(words), tooLow(words),
        longWord(u"Unverwechselbarkeit"_s);
    place(wide, u"wide"_s, 390);
    place(narrow, u"narrow"_s, 40);
    wrapped.setWordWrap(true);
    place(wrapped, u"wrapped"_s, 80);
    tooLow.setWordWrap(true);
    place(tooLow, u"tooLow"_s, 60);
    tooLow.resize(60, 10);
    longWord.setWordWrap(true);
    place(longWord, u"longWord"_s, 40);
    QLabel elided(words);
    elided.setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    place(elided, u"elided"_s, 40);
    QPushButton button(words);
    place(button, u"button"_s, 40);
    QLineEdit empty;
    empty.setPlaceholderText(words);
    place(empty, u"empty"_s, 40);
    QCheckBox box(words);
    place(box, u"box"_s, 390);
    QPushButton hidden(words);
    place(hidden, u"hidden"_s, 40);
    hidden.hide();
    QLabel uncaptioned(u"_R17"_s);
    place(uncaptioned, u"uncaptioned"_s, 200);
    QTreeWidget tree;
    tree.setHeaderLabels({words, u"x"_s});
    place(tree, u"tree"_s, 390);
    tree.header()->setObjectName(u"heads"_s);
    tree.header()->resizeSection(0, 40);

    EXPECT_FALSE(ClippedTexts(window).isEmpty()); // not shown
    window.show();
    QStringList names;
    for (const QString& clipped : ClippedTexts(window)) {
        names << clipped.section(u':', 0, 0);
    }
    EXPECT_THAT(names, UnorderedElementsAre(u"narrow"_s, u"tooLow"_s, u"longWord"_s, u"button"_s,
                                            u"empty"_s, u"uncaptioned"_s, u"heads"_s));
}

TEST(LooksTest, ControlsWithoutANameAreFoundAndNothingElse) {
    QWidget window;
    QLineEdit nameless(&window), named(&window), labelled(&window), unreachable(&window);
    nameless.setObjectName(u"nameless"_s);
    named.setAccessibleName(u"Name"_s);
    QLabel label(u"&Folder"_s, &window);
    label.setBuddy(&labelled);
    unreachable.setFocusPolicy(Qt::NoFocus);
    QPushButton texted(u"OK"_s, &window), pictured(&window);
    pictured.setObjectName(u"pictured"_s);
    QTabWidget tabs(&window);
    QWidget page;
    QSpinBox inTab(&page);
    inTab.setObjectName(u"inTab"_s);
    tabs.addTab(&page, u"Tab"_s);
    window.show();
    QStringList names;
    for (const QString& control : NamelessControls(window)) {
        names << control.section(u' ', 1);
    }
    EXPECT_THAT(names, UnorderedElementsAre(u"nameless"_s, u"pictured"_s, u"inTab"_s));
}

} // namespace
} // namespace velmora
