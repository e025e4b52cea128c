// The lesser windows, driven through their controls as a person would.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/CommonFunctions.h"
#include "core/Messages.h"
#include "core/Settings.h"
#include "core/windows/Captions.h"
#include "core/windows/FrmAttesa.h"
#include "core/windows/FrmFTMessage.h"
#include "core/windows/FrmReportErr.h"
#include "core/windows/FrmSplash.h"
#include "core/windows/WindowDialogue.h"
#include "core/windows/frmQuickStart.h"
#include "tests/core/Accessible.h"
#include "tests/core/Clipping.h"
#include "tests/core/Place.h"

#include <QAction>
#include <QCheckBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTest>
#include <QToolBar>
#include <QTreeWidget>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using testing::IsEmpty;

namespace velmora {
namespace {

class WindowsTest : public testing::Test {
  protected:
    WindowsTest() { ThePlace().Clear(); }

    // Does something to the modal window that opens next, once it is there.
    static void WhenOpen(std::function<void(QWidget&)> act) {
        QTimer::singleShot(0, [act = std::move(act)] {
            QWidget* window = QApplication::activeModalWidget();
            ASSERT_TRUE(window);
            ASSERT_TRUE(QTest::qWaitForWindowActive(window));
            act(*window);
        });
    }
    static void Click(QWidget& window, const char* name) {
        auto* button = window.findChild<QAbstractButton*>(QLatin1StringView(name));
        ASSERT_TRUE(button) << name;
        QTest::mouseClick(button, Qt::LeftButton);
    }
    static QString TextOf(const QWidget& window, const char* name) {
        return window.findChild<QWidget*>(QLatin1StringView(name))->property("text").toString();
    }

    static QString FocusName() {
        const QWidget* widget = QApplication::focusWidget();
        return widget ? widget->objectName() : QString();
    }

    ScopedGlobals program;
    WindowDialogue dialogue;
    WindowReporter reporter;
    ScopedDialogue dialogueInForce{dialogue};
    ScopedReporter reporterInForce{reporter};
};

TEST_F(WindowsTest, CaptionReferencesBecomeTextsAndWordsStay) {
    program->gLocaleId = 1031;
    QWidget form;
    form.setWindowTitle(u"_R3"_s);
    QPushButton button(u"_R1001"_s, &form);
    button.setToolTip(u"_R1"_s);
    QPushButton plain(u"_Run"_s, &form);
    QPushButton word(u"R1001"_s, &form);
    QPushButton shortest(u"_R"_s, &form);
    QLabel label(u"_R106"_s, &form);
    label.setAlignment(Qt::AlignRight);
    QGroupBox group(u"_R74"_s, &form);
    QCheckBox inGroup(u"_R350"_s, &group);
    QLineEdit edit(u"_R1001"_s, &form);
    edit.setPlaceholderText(u"_R133"_s);
    QAction action(u"_R2"_s, &form);
    QTabWidget tabs(&form);
    tabs.addTab(new QWidget, u"_R100"_s);
    QTreeWidget tree(&form);
    tree.setHeaderLabels({u"_R1052"_s, u"Plain"_s});
    QObject elsewhere;
    QToolBar bar(&form);
    auto* onBar = new QAction(u"_R141"_s, &elsewhere);
    bar.addAction(onBar);

    AssignHBCaption(&form);

    EXPECT_EQ(form.windowTitle(), GetMessage(3).remove(u'&')); // no access keys in a title
    EXPECT_EQ(button.text(), u"Abbrechen"_s);
    EXPECT_EQ(button.toolTip(), u"Datei"_s);
    EXPECT_EQ(plain.text(), u"_Run"_s);
    EXPECT_EQ(word.text(), u"R1001"_s);
    EXPECT_EQ(shortest.text(), u"_R"_s);
    EXPECT_EQ(label.text(), GetMessage(106));
    EXPECT_EQ(label.alignment() & Qt::AlignHorizontal_Mask, Qt::AlignRight);
    EXPECT_EQ(group.title(), GetMessage(74));
    EXPECT_EQ(inGroup.text(), GetMessage(350));
    EXPECT_EQ(edit.text(), u"_R1001"_s); // a person's text
    EXPECT_EQ(edit.placeholderText(), GetMessage(133));
    EXPECT_EQ(action.text(), u"&Hilfe"_s);
    EXPECT_EQ(onBar->text(), GetMessage(141));
    EXPECT_EQ(tabs.tabText(0), GetMessage(100));
    EXPECT_EQ(tree.headerItem()->text(0), GetMessage(1052));
    EXPECT_EQ(tree.headerItem()->text(1), u"Plain"_s);
}

TEST_F(WindowsTest, ReportWindowAnswersByItsButtonsAndKeys) {
    struct Case {
        const char* name;
        std::function<void(QWidget&)> act;
        bool retry;
    };
    for (const auto& [name, act, retry] : {
             Case{"retry", [](QWidget& w) { Click(w, "cmdRetry"); }, true},
             Case{"cancel", [](QWidget& w) { Click(w, "cmdCancel"); }, false},
             Case{"enter", [](QWidget& w) { QTest::keyClick(&w, Qt::Key_Return); }, true},
             Case{"escape", [](QWidget& w) { QTest::keyClick(&w, Qt::Key_Escape); }, false},
             Case{"close", [](QWidget& w) { w.close(); }, false},
         }) {
        WhenOpen(act);
        EXPECT_EQ(ReportError(u"text"_s), retry) << name;
    }
}

TEST_F(WindowsTest, ReportWindowShowsTheReportAndTheGuardGoesOn) {
    dialogue.SetPointer(Pointer::Hourglass);
    WhenOpen([&](QWidget& window) {
        EXPECT_EQ(window.windowTitle(), u"Error"_s);
        EXPECT_EQ(TextOf(window, "lblInfoError"), u"Unexpected error"_s);
        EXPECT_EQ(TextOf(window, "lblInfoExplainError"), GetMessage(266));
        EXPECT_FALSE(window.findChild<QLabel*>(u"imgError"_s)->pixmap().isNull());
        const auto* text = window.findChild<QPlainTextEdit*>(u"txtError"_s);
        EXPECT_TRUE(text->isReadOnly());
        EXPECT_TRUE(text->toPlainText().startsWith(u"Unexpected error\none\ntwo (n.5)\n"_s));
        EXPECT_EQ(dialogue.CurrentPointer(), Pointer::Default);
        EXPECT_EQ(FocusName(), u"cmdRetry"_s);
        QStringList order;
        for (int step = 0; step < 3; ++step) {
            QTest::keyClick(&window, Qt::Key_Tab);
            order << FocusName();
        }
        EXPECT_EQ(order, QStringList({u"cmdCancel"_s, u"cmdSendError"_s, u"txtError"_s}));
        Click(window, "cmdRetry");
    });
    bool failed = false;
    EXPECT_EQ(Guard("M", "P",
                    [&] {
                        if (!failed) {
                            failed = true;
                            throw Error(5, u"one\r\ntwo"_s);
                        }
                        return 7;
                    }),
              7);
    EXPECT_EQ(dialogue.CurrentPointer(), Pointer::Hourglass);
    dialogue.SetPointer(Pointer::Default);
}

TEST_F(WindowsTest, SendingAReportKeepsTheWindowAndTheLineEnds) {
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", ThePlace().Path("bin").toUtf8()); // no mail client
    program->mainCaption = [] { return u"Velmora 1.0"_s; };
    FrmReportErr window;
    window.SetReport(u"one\r\ntwo"_s);
    window.show();
    Click(window, "cmdSendError");
    qputenv("PATH", path);
    EXPECT_TRUE(window.isVisible());
    const QByteArray mail = BytesOf(platform::ToMachine(GetTmpPath() + u"temp.eml"_s));
    EXPECT_TRUE(mail.contains("Subject: Velmora - Automatic error notification\r\n"));
    EXPECT_TRUE(mail.endsWith("\r\n\r\nVelmora 1.0\r\none\r\ntwo\r\n")) << mail.toStdString();
}

TEST_F(WindowsTest, BoxesTellAndAskInTheLanguage) {
    program->gLocaleId = 1040;
    WhenOpen([](QWidget& window) {
        const auto& box = dynamic_cast<QMessageBox&>(window);
        EXPECT_EQ(box.text(), u"<b>a & b.txt</b>"_s);
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        EXPECT_EQ(box.windowTitle(), u"Titolo"_s);
        EXPECT_EQ(box.icon(), QMessageBox::Critical);
        EXPECT_EQ(TextOf(window, "cmdOk"), GetMessage(1000));
        QTest::keyClick(&window, Qt::Key_Escape);
    });
    Tell(u"<b>a & b.txt</b>"_s, u"Titolo"_s, Icon::Critical);

    const auto answerTo = [](Icon icon, std::function<void(QWidget&)> act) {
        WhenOpen(std::move(act));
        return Ask(u"?"_s, u"T"_s, icon);
    };
    const auto enter = [](QWidget& w) { QTest::keyClick(&w, Qt::Key_Return); };
    const auto escape = [](QWidget& w) { QTest::keyClick(&w, Qt::Key_Escape); };
    EXPECT_EQ(answerTo(Icon::Question, [](QWidget& w) { Click(w, "cmdYes"); }), Answer::Yes);
    EXPECT_EQ(answerTo(Icon::Question, [](QWidget& w) { Click(w, "cmdNo"); }), Answer::No);
    EXPECT_EQ(answerTo(Icon::Question, enter), Answer::Yes);
    EXPECT_EQ(answerTo(Icon::Exclamation, enter), Answer::No);
    EXPECT_EQ(answerTo(Icon::Question, escape), Answer::No);
    EXPECT_EQ(answerTo(Icon::Question,
                       [](QWidget& w) {
                           EXPECT_EQ(TextOf(w, "cmdYes"), u"&Sì"_s);
                           w.close();
                       }),
              Answer::No);
}

TEST_F(WindowsTest, FolderChooserSpeaksLogicalPaths) {
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QDir().mkpath(ThePlace().Path("home", u"Docs"_s));
    const QString home = ThePlace().Logical("home");
    WhenOpen([](QWidget& window) {
        auto& chooser = dynamic_cast<QFileDialog&>(window);
        EXPECT_EQ(chooser.windowTitle(), u"Select archive folder"_s);
        EXPECT_EQ(chooser.directory().path(), ThePlace().Path("home"));
        auto* name = window.findChild<QLineEdit*>();
        name->setText(u"Docs"_s);
        QTest::keyClick(name, Qt::Key_Return);
    });
    EXPECT_EQ(BrowseForFolder(GetMessage(317), home), home + u"\\Docs"_s);
    WhenOpen([](QWidget& window) { QTest::keyClick(&window, Qt::Key_Escape); });
    EXPECT_EQ(BrowseForFolder(GetMessage(317), home), QString());
}

TEST_F(WindowsTest, HintIsRememberedWhenTicked) {
    WhenOpen([](QWidget& window) {
        EXPECT_EQ(window.windowTitle(), u"OCR text"_s);
        EXPECT_EQ(TextOf(window, "lblMessage"), GetMessage(2002));
        EXPECT_TRUE(window.findChild<QLabel*>(u"imgPicture"_s)->isVisible());
        EXPECT_FALSE(window.findChild<QLabel*>(u"imgPicture"_s)->pixmap().isNull());
        Click(window, "cmdOk");
    });
    ShowFTMessage(107, 2002, 2003);
    EXPECT_EQ(GetSetting(u"FTMessages"_s, u"2002"_s), QString());

    WhenOpen([](QWidget& window) {
        Click(window, "chkDontShow");
        QTest::keyClick(&window, Qt::Key_Escape);
    });
    ShowFTMessage(107, 2002, 2003);
    EXPECT_EQ(GetSetting(u"FTMessages"_s, u"2002"_s), u"1"_s);
    ShowFTMessage(107, 2002, 2003); // would block if it opened

    FrmFTMessage unknown;
    unknown.SetMessage(1, u"text"_s, u"title"_s);
    unknown.show();
    EXPECT_FALSE(unknown.findChild<QLabel*>(u"imgPicture"_s)->isVisible());
}

TEST_F(WindowsTest, FirstStepsNameTheCommandsAndRememberTheTick) {
    {
        frmQuickStart window;
        window.show();
        EXPECT_TRUE(TextOf(window, "lblText1").contains(u"\"Indexed folders management\""_s));
        EXPECT_TRUE(TextOf(window, "lblText2").contains(GetMessage(10)));
        EXPECT_TRUE(TextOf(window, "lblText3").contains(GetMessage(1057)));
        EXPECT_TRUE(TextOf(window, "lblText4").contains(GetMessage(94)));
        Click(window, "cmdClose");
        EXPECT_EQ(GetSetting(u"FTMessages"_s, u"QS"_s), QString());
    }
    frmQuickStart window;
    window.show();
    Click(window, "chkDontShow");
    EXPECT_TRUE(window.findChild<QCheckBox*>(u"chkDontShow"_s)->isChecked());
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_EQ(NumericValue(GetSetting(u"FTMessages"_s, u"QS"_s)), 1);
}

TEST_F(WindowsTest, SplashGoesByItselfOrOnAClickTheAboutBoxStays) {
    FrmSplash byTimer(FrmSplash::Use::Start);
    auto* timer = byTimer.findChild<QTimer*>(u"tmrClose"_s);
    ASSERT_TRUE(timer);
    EXPECT_LE(timer->interval(), 500);
    timer->setInterval(0);
    EXPECT_EQ(byTimer.exec(), QDialog::Accepted);

    FrmSplash byClick(FrmSplash::Use::Start);
    byClick.show();
    QTest::mouseClick(byClick.findChild<QLabel*>(u"lblName"_s), Qt::LeftButton);
    EXPECT_FALSE(byClick.isVisible());

    FrmSplash about(FrmSplash::Use::AboutBox);
    about.show();
    EXPECT_FALSE(about.findChild<QTimer*>(u"tmrClose"_s)->isActive());
    EXPECT_TRUE(TextOf(about, "lblVersion").contains(u"" VELMORA_VERSION ""_s));
    QTest::mouseClick(&about, Qt::LeftButton);
    EXPECT_TRUE(about.isVisible());
    Click(about, "cmdClose");
    EXPECT_FALSE(about.isVisible());
}

TEST_F(WindowsTest, WaitWindowMovesAndCannotBeClosedByAKey) {
    FrmAttesa window;
    window.SetText(u"Searching"_s);
    window.show();
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(TextOf(window, "lblWait"), u"Searching"_s);
    auto* animation = window.findChild<QWidget*>(u"aniWait"_s);
    const QImage before = animation->grab().toImage();
    auto* tick = animation->findChild<QTimer*>();
    tick->setInterval(0);
    for (int round = 0; round < 5; ++round) {
        QApplication::processEvents();
    }
    EXPECT_NE(animation->grab().toImage(), before);
    window.hide();
    EXPECT_FALSE(tick->isActive());
}

TEST_F(WindowsTest, NothingIsCutOffOrNamelessInAnyLanguage) {
    const auto check = [](QWidget& window) {
        window.show();
        QApplication::processEvents();
        EXPECT_THAT(ClippedTexts(window), IsEmpty());
        EXPECT_THAT(NamelessControls(window), IsEmpty());
    };
    for (const qint32 locale : {0, 1040, 1031, 1034, 1036}) {
        program->gLocaleId = locale;
        SCOPED_TRACE(locale);
        FrmReportErr report;
        check(report);
        FrmFTMessage hint;
        hint.SetMessage(106, GetMessage(2000), GetMessage(2001));
        check(hint);
        FrmSplash splash(FrmSplash::Use::Start);
        check(splash);
        FrmAttesa wait;
        check(wait);
        frmQuickStart steps;
        check(steps);
    }
}

} // namespace
} // namespace velmora
