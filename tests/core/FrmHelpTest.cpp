// The help window and its key, driven as a person would.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Settings.h"
#include "core/windows/HelpKey.h"
#include "core/windows/frmQuickStart.h"
#include "tests/core/Accessible.h"
#include "tests/core/Clipping.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeWidget>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using testing::IsEmpty;

namespace velmora {
namespace {

const QString kPages = QStringLiteral(VELMORA_SOURCE_DIR "/docs/help");

// Drives one help window by its controls.
class HelpDriver {
  public:
    explicit HelpDriver(FrmHelp& help) : window(help) {}

    template <class Control> Control& Get(const char* name) {
        return *window.findChild<Control*>(QLatin1StringView(name));
    }
    QTextBrowser& Page() { return Get<QTextBrowser>("txtPage"); }
    QString Title() { return Page().document()->firstBlock().text(); }
    void Click(const char* button) { QTest::mouseClick(&Get<QPushButton>(button), Qt::LeftButton); }
    // Clicks the text of a link where it stands on the page.
    bool ClickLink(const QString& text) {
        QTextBrowser& page = Page();
        for (QTextCursor found = page.document()->find(text); !found.isNull();
             found = page.document()->find(text, found)) {
            if (found.charFormat().isAnchor()) {
                page.setTextCursor(QTextCursor(page.document()->findBlock(found.position())));
                page.ensureCursorVisible();
                const QPoint place = page.cursorRect(found).center() - QPoint(4, 0);
                QTest::mouseClick(page.viewport(), Qt::LeftButton, {}, place);
                return true;
            }
        }
        return false;
    }
    bool ClickTopic(const QString& title) {
        auto& tree = Get<QTreeWidget>("lvwContents");
        const auto items = tree.findItems(title, Qt::MatchExactly | Qt::MatchRecursive);
        if (items.isEmpty()) {
            return false;
        }
        tree.scrollToItem(items.first());
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {},
                          tree.visualItemRect(items.first()).center());
        return true;
    }

    FrmHelp& window;
};

class FrmHelpTest : public testing::Test {
  protected:
    FrmHelpTest() {
        ThePlace().Clear();
        QApplication::instance()->installEventFilter(&helpKey);
    }
    static FrmHelp* Shown() {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (auto* help = qobject_cast<FrmHelp*>(window)) {
                return help;
            }
        }
        return nullptr;
    }

    ScopedGlobals program;
    ScriptedReporter reporter;
    ScriptedDialogue dialogue;
    HelpKey helpKey{kPages};
};

TEST_F(FrmHelpTest, KeyShowsThePageOfTheWindowBesideAModalOne) {
    frmQuickStart window;
    QTimer::singleShot(0, [&] {
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F1, Qt::ShiftModifier);
        EXPECT_FALSE(Shown()); // What's This
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_F1);
        ASSERT_TRUE(Shown());
        EXPECT_EQ(Shown()->CurrentPage(), u"frmQuickStart"_s);
        EXPECT_FALSE(Shown()->isModal());
        ASSERT_TRUE(QTest::qWaitForWindowActive(Shown()));
        // It can be used although the other window is modal.
        HelpDriver driver(*Shown());
        EXPECT_TRUE(driver.ClickLink(u"The main window"_s));
        EXPECT_EQ(Shown()->CurrentPage(), u"FrmMain"_s);
        // One at a time, and never the help of the help by accident.
        QTest::keyClick(&window, Qt::Key_F1);
        EXPECT_EQ(Shown()->CurrentPage(), u"frmQuickStart"_s);
        EXPECT_EQ(window.findChildren<FrmHelp*>().size(), 1);
        QTest::keyClick(Shown(), Qt::Key_F1);
        EXPECT_EQ(Shown()->CurrentPage(), u"FrmHelp"_s);
        QTest::keyClick(Shown(), Qt::Key_Escape);
        EXPECT_FALSE(Shown() && Shown()->isVisible());
        EXPECT_TRUE(window.isVisible());
        window.close();
    });
    window.exec();
}

TEST_F(FrmHelpTest, KeyIsLeftToWhoeverWantsIt) {
    class Taker : public QLineEdit {
      public:
        using QLineEdit::QLineEdit;

      protected:
        void keyPressEvent(QKeyEvent* event) override { event->accept(); }
    };
    QWidget window;
    Taker taker(&window);
    QLineEdit other(&window);
    window.show();
    QTest::keyClick(&taker, Qt::Key_F1);
    EXPECT_FALSE(Shown());
    QMenu menu(&window);
    menu.popup({});
    QTest::keyClick(&menu, Qt::Key_F1);
    EXPECT_FALSE(Shown());
    menu.close();
    QTest::keyClick(&other, Qt::Key_F1);
    ASSERT_TRUE(Shown());
    EXPECT_EQ(Shown()->CurrentPage(), u"index"_s); // a window without a page
    delete Shown();
    SendHelpKey(other);
    EXPECT_TRUE(Shown());
}

TEST_F(FrmHelpTest, WindowsWithoutAPageShowThatOfTheirOwner) {
    frmQuickStart owner;
    QDialog box(&owner);
    EXPECT_EQ(HelpPagesOf(box), QStringList({u"QDialog"_s, u"frmQuickStart"_s}));
    EXPECT_EQ(helpKey.ShowHelpOf(box).CurrentPage(), u"frmQuickStart"_s);
    // The window that asks takes the help over.
    EXPECT_EQ(Shown()->parentWidget(), &box);
    helpKey.ShowHelpOf(owner);
    EXPECT_EQ(Shown()->parentWidget(), &owner);
    EXPECT_TRUE(box.findChildren<FrmHelp*>().isEmpty());
}

TEST_F(FrmHelpTest, ContentsLinksBackAndForward) {
    FrmHelp window(Help(kPages, Language::English));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    HelpDriver driver(window);
    window.ShowPage(u"search-language"_s);
    EXPECT_EQ(driver.Title(), u"The search language"_s);
    EXPECT_EQ(window.windowTitle(), u"The search language - Help"_s);
    EXPECT_FALSE(driver.Get<QPushButton>("cmdBack").isEnabled());
    EXPECT_EQ(driver.Get<QTreeWidget>("lvwContents").currentItem()->text(0),
              u"The search language"_s);
    driver.Page().verticalScrollBar()->setValue(200);
    ASSERT_TRUE(driver.ClickTopic(u"Keys"_s));
    EXPECT_EQ(driver.Title(), u"Keys"_s);
    ASSERT_TRUE(driver.ClickTopic(u"Windows"_s)); // a heading leads nowhere
    EXPECT_EQ(driver.Title(), u"Keys"_s);
    driver.Click("cmdBack");
    EXPECT_EQ(driver.Title(), u"The search language"_s);
    EXPECT_EQ(driver.Page().verticalScrollBar()->value(), 200);
    QTest::keyClick(&window, Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(driver.Title(), u"Keys"_s);
    EXPECT_FALSE(driver.Get<QPushButton>("cmdForward").isEnabled());
    QTest::keyClick(&window, Qt::Key_Left, Qt::AltModifier);
    ASSERT_TRUE(driver.ClickLink(u"search builder"_s));
    EXPECT_EQ(driver.Title(), u"Search builder"_s);
    EXPECT_FALSE(driver.Get<QPushButton>("cmdForward").isEnabled()); // given up
}

TEST_F(FrmHelpTest, SearchListsPagesAndMarksTheWords) {
    FrmHelp window(Help(kPages, Language::Italian));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    window.ShowPage(u"index"_s);
    HelpDriver driver(window);
    auto& search = driver.Get<QLineEdit>("txtSearch");
    QTest::keyClick(&window, Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(search.hasFocus());
    QTest::keyClicks(&search, u"parentesi"_s);
    auto& hits = driver.Get<QListWidget>("lvwHits");
    ASSERT_GE(hits.count(), 1);
    EXPECT_EQ(driver.Get<QStackedWidget>("stkLeft").currentWidget(), &hits);
    QTest::mouseClick(hits.viewport(), Qt::LeftButton, {},
                      hits.visualItemRect(hits.item(0)).center());
    EXPECT_EQ(window.CurrentPage(), u"search-language"_s);
    ASSERT_FALSE(driver.Page().extraSelections().isEmpty());
    const QTextCursor mark = driver.Page().extraSelections().first().cursor;
    EXPECT_EQ(mark.selectedText().toLower(), u"parentesi"_s);
    EXPECT_TRUE(driver.Page().viewport()->rect().intersects(driver.Page().cursorRect(mark)));

    search.clear();
    EXPECT_TRUE(driver.Page().extraSelections().isEmpty());
    EXPECT_TRUE(driver.Get<QTreeWidget>("lvwContents").isVisible());
    QTest::keyClicks(&search, u"zzzz"_s);
    EXPECT_TRUE(driver.Get<QWidget>("lblNoHits").isVisible());
    QTest::keyClick(&search, Qt::Key_Return); // goes nowhere, closes nothing
    EXPECT_EQ(window.CurrentPage(), u"search-language"_s);
    EXPECT_TRUE(window.isVisible());
}

TEST_F(FrmHelpTest, AddressesOutsideAreOpenedByTheDesktopOnAClickOnly) {
    const QByteArray path = qgetenv("PATH");
    const QString opened = ThePlace().Path("home", u"opened"_s);
    const QString opener = ThePlace().Path("bin", u"xdg-open"_s);
    WriteFile(opener, "#!/bin/sh\necho \"$1\" > '" + opened.toUtf8() + "'\n");
    QFile::setPermissions(opener, QFile::ReadOwner | QFile::ExeOwner);
    qputenv("PATH", ThePlace().Path("bin").toUtf8() + ":" + path);
    const QString pages = ThePlace().Path("home", u"help"_s);
    WriteFile(pages + u"/en/index.md"_s,
              "# T\n\n[web](https://example.org/a?b=c)\n\n[other](file:///etc/passwd)\n");
    FrmHelp window(Help(pages, Language::English));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    window.ShowPage(u"index"_s);
    HelpDriver driver(window);
    ASSERT_TRUE(driver.ClickLink(u"other"_s));
    ASSERT_EQ(dialogue.told.size(), 1);
    EXPECT_TRUE(dialogue.told.first().contains(u"file:///etc/passwd"_s));
    EXPECT_FALSE(QFile::exists(opened));
    ASSERT_TRUE(driver.ClickLink(u"web"_s));
    EXPECT_TRUE(QTest::qWaitFor([&] { return BytesOf(opened) == "https://example.org/a?b=c\n"; }));
    EXPECT_EQ(window.CurrentPage(), u"index"_s);
    qputenv("PATH", path);
}

TEST_F(FrmHelpTest, SizeIsRememberedAndMissingPagesAreTold) {
    {
        FrmHelp window(Help({}, Language::English));
        window.resize(700, 420);
        window.ShowPage({});
        EXPECT_EQ(window.findChild<QTextBrowser*>()->toPlainText(), GetMessage(3657));
    }
    EXPECT_EQ(FrmHelp(Help(kPages, Language::English)).size(), QSize(700, 420));
}

TEST_F(FrmHelpTest, EveryControlIsNamedAndNothingIsCutOff) {
    for (const Language language : {Language::Italian, Language::English, Language::German,
                                    Language::Spanish, Language::French}) {
        program->gLocaleId = LocaleIdOf(language);
        FrmHelp window(Help(kPages, language));
        window.setAttribute(Qt::WA_DeleteOnClose, false);
        window.ShowPage(u"index"_s);
        window.show();
        EXPECT_THAT(ClippedTexts(window), IsEmpty());
        EXPECT_THAT(NamelessControls(window), IsEmpty());
        window.findChild<QLineEdit*>(u"txtSearch"_s)->setText(u"index"_s);
        EXPECT_THAT(NamelessControls(window), IsEmpty());
        const auto& words = *window.findChild<QTextBrowser*>();
        EXPECT_LE(words.document()->idealWidth(),
                  words.viewport()->width()); // no sideways scrolling
    }
}

} // namespace
} // namespace velmora
