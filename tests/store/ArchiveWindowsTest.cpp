// The archive windows, driven through their controls.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Messages.h"
#include "core/Settings.h"
#include "store/StoreError.h"
#include "store/windows/FrmArchiveManagement.h"
#include "store/windows/FrmArchiveSelection.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class ArchiveWindowsTest : public testing::Test {
  protected:
    ArchiveWindowsTest() { ThePlace().Clear(); }

    template <class Widget> static Widget& Control(QWidget& window, const char* name) {
        auto* control = window.findChild<Widget*>(QLatin1StringView(name));
        EXPECT_TRUE(control) << name;
        return *control;
    }
    static void Click(QWidget& window, const char* name) {
        QTest::mouseClick(&Control<QPushButton>(window, name), Qt::LeftButton);
    }
    static QString MakeArchive(const QString& name) {
        const QString folder = ThePlace().Path("home", name);
        WriteFile(folder + u"/db.mdb"_s, "here");
        return platform::ToLogical(folder);
    }

    ScopedGlobals program;
    ScriptedReporter reporter;
    ScriptedDialogue dialogue;
};

TEST_F(ArchiveWindowsTest, TheSelectionOffersTheDefaultFirstAndTheLastChoiceAtOnce) {
    const QString path = MakeArchive(u"arch"_s);
    ASSERT_TRUE(SaveArchives({{u"\\nowhere"_s, u"gone"_s}, {path, u"Büro"_s}}));
    {
        FrmArchiveSelection window;
        window.show();
        auto& list = Control<QComboBox>(window, "cboArchives");
        ASSERT_EQ(list.count(), 3);
        EXPECT_EQ(window.windowTitle(), GetMessage(326));
        EXPECT_EQ(list.itemText(0), GetMessage(kDefaultArchive));
        EXPECT_EQ(list.itemText(2), u"Büro (%1)"_s.arg(platform::ToMachine(path)));
        EXPECT_EQ(window.ArchivePaths, QStringList({u""_s, u"\\nowhere"_s, path}));
        EXPECT_EQ(list.currentIndex(), 0);
        // One that is not there keeps the window open.
        list.setCurrentIndex(1);
        EXPECT_EQ(list.toolTip(), u"gone (/nowhere)"_s);
        Click(window, "cmdok");
        EXPECT_EQ(dialogue.told, QStringList{u"Error|Archive not reachable!|4"_s});
        EXPECT_TRUE(window.isVisible());
        EXPECT_EQ(GetSetting(u"Archives"_s, u"LastSelected"_s), QString());
        QTest::keyClick(&list, Qt::Key_Down);
        QTest::keyClick(&window, Qt::Key_Return);
        EXPECT_FALSE(window.isVisible());
        EXPECT_FALSE(window.Cancelled);
        EXPECT_EQ(window.ArchivePath, path);
        EXPECT_EQ(GetSetting(u"Archives"_s, u"LastSelected"_s), u"2"_s);
    }
    FrmArchiveSelection again;
    EXPECT_EQ(Control<QComboBox>(again, "cboArchives").currentIndex(), 2);
    Control<QComboBox>(again, "cboArchives").setCurrentIndex(0);
    again.show();
    Click(again, "cmdok");
    EXPECT_EQ(again.ArchivePath, QString());
    EXPECT_FALSE(again.Cancelled);
}

TEST_F(ArchiveWindowsTest, EveryWayOutButOneCancelsTheSelection) {
    const std::function<void(FrmArchiveSelection&)> ways[] = {
        [](auto& window) { Click(window, "cmdAnnulla"); },
        [](auto& window) { QTest::keyClick(&window, Qt::Key_Escape); },
        [](auto& window) { window.close(); },
    };
    for (const auto& way : ways) {
        FrmArchiveSelection window;
        window.show();
        way(window);
        EXPECT_TRUE(window.Cancelled);
        EXPECT_FALSE(window.isVisible());
    }
}

TEST_F(ArchiveWindowsTest, AnEntryIsTypedSavedAndListed) {
    const QString path = MakeArchive(u"arch"_s);
    FrmArchiveManagement window;
    window.show();
    const auto locked = [&] {
        int enabled = 0;
        for (const char* name :
             {"txtArchivePath", "txtArchiveDescription", "cmdBrowse", "cmdSalva", "cmdAnnulla"}) {
            enabled += Control<QWidget>(window, name).isEnabled();
        }
        EXPECT_TRUE(enabled == 0 || enabled == 5);
        EXPECT_EQ(Control<QPushButton>(window, "cmdNewArchive").isEnabled(), enabled == 0);
        return enabled == 0;
    };
    auto& list = Control<QTreeWidget>(window, "lvwArchives");
    auto& pathBox = Control<QLineEdit>(window, "txtArchivePath");
    auto& nameBox = Control<QLineEdit>(window, "txtArchiveDescription");
    EXPECT_TRUE(locked());
    EXPECT_EQ(list.headerItem()->text(0), GetMessage(320));
    EXPECT_FALSE(Control<QLabel>(window, "lblWaring98").isVisible());

    Click(window, "cmdNewArchive");
    EXPECT_FALSE(locked());
    EXPECT_EQ(window.focusWidget(), &nameBox);
    QTest::keyClicks(&nameBox, u"Buero"_s);
    dialogue.folder = path;
    Click(window, "cmdBrowse");
    EXPECT_EQ(pathBox.text(), platform::ToMachine(path));
    // Given up: by Escape, which does not close the window then.
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_TRUE(window.isVisible() && locked());
    EXPECT_TRUE(pathBox.text().isEmpty() && nameBox.text().isEmpty());

    Click(window, "cmdNewArchive");
    QTest::keyClicks(&pathBox, platform::ToMachine(path));
    QTest::keyClick(&pathBox, Qt::Key_Return); // without a description
    EXPECT_EQ(dialogue.told.constLast(), u"Missing data|Please specify archive description|4"_s);
    EXPECT_EQ(window.focusWidget(), &nameBox);
    EXPECT_EQ(pathBox.text(), platform::ToMachine(path)) << "what was typed stays";
    QTest::keyClicks(&nameBox, u"Buero"_s);
    QTest::keyClick(&nameBox, Qt::Key_Return);
    EXPECT_TRUE(locked());
    ASSERT_EQ(list.topLevelItemCount(), 1);
    EXPECT_EQ(list.topLevelItem(0)->text(0), platform::ToMachine(path));
    EXPECT_EQ(list.topLevelItem(0)->text(1), u"Buero"_s);
    EXPECT_EQ(ReadArchives(), (QList<SharedArchive>{{path, u"Buero"_s}}));
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(ArchiveWindowsTest, AnEntryGoesByMenuKeyAndButton) {
    ASSERT_TRUE(SaveArchives({{u"\\a"_s, u"A"_s}, {u"\\b"_s, u"B"_s}, {u"\\c"_s, u"C"_s}}));
    FrmArchiveManagement window;
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    auto& list = Control<QTreeWidget>(window, "lvwArchives");
    EXPECT_FALSE(Control<QPushButton>(window, "cmdDelete").isEnabled());
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_Delete); // nothing is selected
    EXPECT_TRUE(dialogue.told.isEmpty());
    dialogue.answers = {Answer::No, Answer::Yes, Answer::Yes, Answer::Yes};
    const auto names = [&] {
        QString text;
        for (const SharedArchive& archive : ReadArchives()) {
            text += archive.description;
        }
        EXPECT_EQ(list.topLevelItemCount(), text.size());
        return text;
    };
    list.setCurrentItem(list.topLevelItem(1));
    Click(window, "cmdDelete");
    EXPECT_EQ(names(), u"ABC"_s);
    Click(window, "cmdDelete");
    EXPECT_EQ(names(), u"AC"_s);
    list.setCurrentItem(list.topLevelItem(1));
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_Delete);
    EXPECT_EQ(names(), u"A"_s);
    list.setCurrentItem(list.topLevelItem(0));
    const QPoint place = list.visualItemRect(list.topLevelItem(0)).center();
    QContextMenuEvent pressed(QContextMenuEvent::Mouse, place, list.viewport()->mapToGlobal(place));
    QApplication::sendEvent(list.viewport(), &pressed);
    auto& menu = Control<QMenu>(window, "mnuArchive");
    ASSERT_TRUE(menu.isVisible());
    QTest::keyClick(&menu, Qt::Key_Down);
    QTest::keyClick(&menu, Qt::Key_Return);
    EXPECT_EQ(names(), QString());
    EXPECT_EQ(dialogue.told.size(), 4);
}

} // namespace
} // namespace velmora
