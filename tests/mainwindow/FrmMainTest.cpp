// The main window, driven through its controls.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FrmMain.h"
#include "core/Messages.h"
#include "core/Settings.h"
#include "indexing/windows/FrmUpdateIndex.h"
#include "search/windows/frmSearchResult.h"
#include "store/ModDb.h"
#include "tests/core/Accessible.h"
#include "tests/core/Clipping.h"
#include "tests/indexing/IndexingFixture.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class FrmMainTest : public IndexingTest {
  protected:
    FrmMainTest() {
        WriteFile(Docs(u"one.txt"_s), "the grey heron");
        WriteFile(Docs(u"Sub/two.txt"_s), "heron and kite");
    }

    template <class Widget> static Widget& Control(QWidget& window, const char* name) {
        auto* control = window.findChild<Widget*>(QLatin1StringView(name));
        EXPECT_TRUE(control) << name;
        return *control;
    }
    // Shows the window and waits until its first activation is over.
    static void Show(FrmMain& form) {
        form.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
        QCoreApplication::processEvents();
    }
    // Does something to the first modal window of that kind that opens, once; answers whether there
    // was one after `act`.
    template <class Window>
    static bool WithModal(std::function<void(Window&)> onModal, const std::function<void()>& act) {
        bool seen = false;
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            auto* window = qobject_cast<Window*>(QApplication::activeModalWidget());
            if (window && !std::exchange(seen, true)) {
                onModal(*window);
            }
        });
        watch.start(1);
        act();
        return seen;
    }
    static QString NodeText(QTreeWidget& tree, int child) {
        QTreeWidgetItem* item = tree.topLevelItem(0)->child(child);
        return item ? item->text(0) : QString();
    }
    static QStringList Names(QTreeView& list) {
        QStringList names;
        for (int row = 0; row < list.model()->rowCount(); ++row) {
            names << list.model()->index(row, 0).data().toString();
        }
        return names;
    }
};

TEST_F(FrmMainTest, AFolderAddedThroughTheListIsIndexedAndFound) {
    FrmMain form;
    Show(form);
    EXPECT_TRUE(Control<QLabel>(form, "lblNoFolders").isVisible());
    EXPECT_FALSE(Control<QPushButton>(form, "cmdRemoveFolder").isEnabled());
    dialogue.folder = LogicalDocs();
    QTest::mouseClick(&Control<QPushButton>(form, "cmdAddFirstFolder"), Qt::LeftButton);
    auto& tree = Control<QTreeWidget>(form, "treFolders");
    auto& list = Control<QTreeView>(form, "lvwFiles");
    EXPECT_EQ(NodeText(tree, 0), u"Docs"_s);
    EXPECT_EQ(Names(list), QStringList({u"Sub"_s, u"one.txt"_s}));
    EXPECT_EQ(Found(u"heron"_s).size(), 2);
    EXPECT_TRUE(form.statusBar()->currentMessage().startsWith(GetMessage(144)));

    // Typed and Enter pressed: the result window comes, and its place leads back to the list.
    auto& box = Control<QLineEdit>(form, "txtRicerca");
    box.setFocus();
    QTest::keyClicks(&box, u"kite"_s);
    QString request;
    EXPECT_TRUE(WithModal<frmSearchResult>(
        [&](frmSearchResult& window) {
            window.LocateTarget = LogicalDocs(u"Sub/two.txt"_s);
            window.accept();
        },
        [&] { QTest::keyClick(&box, Qt::Key_Return); }));
    EXPECT_EQ(tree.currentItem()->text(0), u"Sub"_s);
    EXPECT_EQ(list.currentIndex().data().toString(), u"two.txt"_s);

    // Nothing found in the other branch.
    dialogue.told.clear();
    box.setText(u"pelican"_s);
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_EQ(dialogue.told, QStringList{GetMessage(116) + u'|' + GetMessage(183) + u"|1"_s});

    // Removed again: its documents leave the index.
    tree.setCurrentItem(tree.topLevelItem(0)->child(0));
    dialogue.answers = {Answer::Yes};
    QTest::mouseClick(&Control<QPushButton>(form, "cmdRemoveFolder"), Qt::LeftButton);
    EXPECT_EQ(NodeText(tree, 0), QString());
    EXPECT_EQ(Found(u"heron"_s), QStringList());
}

TEST_F(FrmMainTest, AnEmptyRequestIsRefused) {
    FrmMain form;
    Show(form);
    for (const bool byKey : {true, false}) {
        dialogue.told.clear();
        auto& box = Control<QLineEdit>(form, "txtRicerca");
        if (byKey) {
            QTest::keyClick(&box, Qt::Key_Return);
        } else {
            QTest::mouseClick(&Control<QPushButton>(form, "SEARCH"), Qt::LeftButton);
        }
        EXPECT_EQ(dialogue.told, QStringList{GetMessage(82) + u'|' + GetMessage(277) + u"|3"_s});
        EXPECT_TRUE(box.hasFocus());
    }
    EXPECT_EQ(dialogue.CurrentPointer(), Pointer::Default);
}

TEST_F(FrmMainTest, TheSameKeyDoesTheSameFromEveryBar) {
    AddRow(LogicalDocs());
    FrmMain form;
    Show(form);
    for (const QString& key : {u"UPDATEIDX"_s, u"MNUREIDX"_s, u"MNUREBUILD"_s}) {
        auto* action = form.findChild<QAction*>(key);
        ASSERT_TRUE(action) << key.toStdString();
        EXPECT_TRUE(WithModal<FrmUpdateIndex>(
            [&](FrmUpdateIndex& window) {
                EXPECT_EQ(window.ForceRecreate, key == u"MNUREBUILD");
                EXPECT_TRUE(window.UpdateAll && window.IndexMail);
                EXPECT_EQ(window.parentWidget(), &form);
            },
            [&] { action->trigger(); }));
        EXPECT_EQ(Found(u"heron"_s).size(), 2);
    }
    form.MenuBar_ButtonClick(u"NOSUCHKEY"_s);

    // One file, chosen in the list.
    WriteFile(Docs(u"one.txt"_s), "pelican of the coast");
    WriteFile(Docs(u"new.txt"_s), "pelican");
    auto& list = Control<QTreeView>(form, "lvwFiles");
    list.setFocus();
    list.setCurrentIndex(list.model()->index(1, 0));
    form.findChild<QAction*>(u"MNUINDEXFILE"_s)->trigger();
    EXPECT_EQ(Found(u"pelican"_s), QStringList{u"one.txt"_s});
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(FrmMainTest, FoldersOpenInTheTreeAndUpLevelLeadsBack) {
    AddRow(LogicalDocs());
    FrmMain form;
    Show(form);
    auto& tree = Control<QTreeWidget>(form, "treFolders");
    auto& list = Control<QTreeView>(form, "lvwFiles");
    auto* up = form.findChild<QAction*>(u"UPLEVEL"_s);
    up->trigger(); // nothing stands above an indexed folder
    EXPECT_EQ(tree.currentItem()->text(0), u"Docs"_s);
    list.setFocus();
    list.setCurrentIndex(list.model()->index(0, 0));
    QTest::keyClick(&list, Qt::Key_Return);
    EXPECT_EQ(tree.currentItem()->text(0), u"Sub"_s);
    EXPECT_EQ(Names(list), QStringList{u"two.txt"_s});
    EXPECT_TRUE(up->isEnabled());
    up->trigger();
    EXPECT_EQ(tree.currentItem()->text(0), u"Docs"_s);

    // Folders go away behind the window's back, first the lower one, then the indexed one.
    QDir(Docs(u"Sub"_s)).removeRecursively();
    QTreeWidgetItem* docs = tree.currentItem();
    tree.setCurrentItem(docs->child(0));
    QCoreApplication::processEvents();
    EXPECT_EQ(dialogue.told, QStringList{GetMessage(116) + u'|' + GetMessage(1063) + u"|3"_s});
    EXPECT_EQ(tree.currentItem(), docs);
    EXPECT_EQ(docs->childCount(), 0);
    EXPECT_EQ(Names(list), QStringList{u"one.txt"_s});
    tree.setCurrentItem(tree.topLevelItem(0));
    QDir(Docs()).removeRecursively();
    dialogue.told.clear();
    tree.setCurrentItem(docs);
    QCoreApplication::processEvents();
    ASSERT_EQ(dialogue.told.size(), 1);
    EXPECT_TRUE(dialogue.told[0].startsWith(GetMessage(41) + u'|' + GetMessage(296)));
    EXPECT_EQ(tree.currentItem(), tree.topLevelItem(0));
}

TEST_F(FrmMainTest, FilesAreWorkedOnByKeysAndTheirRowsFollow) {
    AddRow(LogicalDocs());
    const RecordSetPtr rows = GetRsOcrFile({}, {});
    rows->AddNew();
    rows->Fields(u"spath").SetValue(platform::Capitals(LogicalDocs()));
    rows->Fields(u"sfilename").SetValue(u"ONE.TXT"_s);
    rows->Fields(u"suser").SetValue(Program().gUserKey);
    rows->UpdateBatch();
    FrmMain form;
    Show(form);
    auto& list = Control<QTreeView>(form, "lvwFiles");
    auto& tree = Control<QTreeWidget>(form, "treFolders");
    const auto choose = [&](int row) {
        list.setFocus();
        list.setCurrentIndex(list.model()->index(row, 0));
    };
    const auto names = [&](const QStringList& expected) {
        return QTest::qWaitFor([&] { return Names(list) == expected; });
    };

    choose(1);
    QTest::keyClick(&list, Qt::Key_F2);
    auto* editor = list.findChild<QLineEdit*>();
    ASSERT_TRUE(editor);
    editor->setText(u"new name.txt"_s);
    QTest::keyClick(editor, Qt::Key_Return);
    EXPECT_TRUE(names({u"Sub"_s, u"new name.txt"_s}));
    EXPECT_FALSE(GetRsOcrFile(LogicalDocs(), u"new name.txt"_s)->EOF_());
    EXPECT_TRUE(GetRsOcrFile(LogicalDocs(), u"one.txt"_s)->EOF_());

    // Cut here, pasted into the folder beside it.
    choose(1);
    QTest::keyClick(&list, Qt::Key_X, Qt::ControlModifier);
    tree.setCurrentItem(tree.currentItem()->child(0));
    EXPECT_TRUE(names({u"two.txt"_s}));
    EXPECT_TRUE(form.findChild<QAction*>(u"PASTE"_s)->isEnabled());
    QTest::keyClick(&tree, Qt::Key_Insert, Qt::ShiftModifier);
    EXPECT_TRUE(names({u"new name.txt"_s, u"two.txt"_s}));
    EXPECT_FALSE(QFile::exists(Docs(u"new name.txt"_s)));
    EXPECT_FALSE(GetRsOcrFile(LogicalDocs(u"Sub"_s), u"new name.txt"_s)->EOF_());

    // Deleted after the question; the folder in the tree stays.
    choose(0);
    dialogue.answers = {Answer::Yes, Answer::Yes};
    QTest::keyClick(&list, Qt::Key_Delete);
    EXPECT_TRUE(names({u"two.txt"_s}));
    form.MenuBar_ButtonClick(u"MNUNEWFLD"_s);
    EXPECT_TRUE(QTest::qWaitFor([&] { return list.findChild<QLineEdit*>() != nullptr; }));
    EXPECT_TRUE(QFileInfo(Docs(u"Sub/"_s + GetMessage(202))).isDir());
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(FrmMainTest, TextsFitAndControlsHaveNamesInEveryLanguage) {
    AddRow(LogicalDocs());
    SaveSetting(u"FTMessages"_s, u"QS"_s, u"1"_s); // no first steps
    for (const qint32 locale : {0, 1031, 1034, 1036, 1040}) {
        program->gLocaleId = locale;
        FrmMain form;
        Show(form);
        form.resize(form.minimumSizeHint().expandedTo(QSize(800, 500)));
        QCoreApplication::processEvents();
        EXPECT_THAT(ClippedTexts(form), testing::IsEmpty()) << locale;
        EXPECT_THAT(NamelessControls(form), testing::IsEmpty()) << locale;
        EXPECT_LE(form.minimumSizeHint().width(), 800) << locale;
    }
}

TEST_F(FrmMainTest, ASharedArchiveOffersLessAndWhatIsToComeSaysSo) {
    program->gIsDefaultArchive = false;
    FrmMain form;
    Show(form);
    EXPECT_FALSE(form.findChild<QAction*>(u"MNUARCHIVEMANAGEMENT"_s)->isVisible());
    EXPECT_FALSE(form.findChild<QAction*>(u"MNUSELMAIL"_s)->isVisible());
    const auto* schedule = form.findChild<QAction*>(u"MNUSCHEDULE"_s);
    EXPECT_TRUE(schedule->isVisible());
    EXPECT_FALSE(schedule->isEnabled());
    EXPECT_TRUE(schedule->toolTip().contains(GetMessage(3642)));
}

TEST_F(FrmMainTest, AnUnattendedRunUpdatesTheIndexAndEnds) {
    AddRow(LogicalDocs());
    program->gAutoIndexing = true;
    FrmMain form;
    form.show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !form.isVisible(); }, 20'000));
    EXPECT_EQ(Found(u"heron"_s).size(), 2);
    EXPECT_TRUE(dialogue.told.isEmpty());
}

TEST_F(FrmMainTest, TheWindowComesBackWhereItStood) {
    const QRect place(20, 30, 700, 500);
    {
        FrmMain form;
        Show(form);
        form.setGeometry(place);
        form.close();
    }
    FrmMain form;
    Show(form);
    EXPECT_EQ(form.size(), place.size());
}

} // namespace
} // namespace velmora
