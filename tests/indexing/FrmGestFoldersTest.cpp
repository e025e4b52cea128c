// The window of the indexed folders, driven through its controls.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/windows/FrmGestFolders.h"
#include "core/MessageIds.h"
#include "core/Messages.h"
#include "indexing/MessageIds.h"
#include "indexing/windows/LocalTree.h"
#include "tests/indexing/IndexingFixture.h"

#include <QDropEvent>
#include <QMimeData>
#include <QPushButton>
#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class FrmGestFoldersTest : public IndexingTest {
  protected:
    template <class Widget> static Widget& Control(QWidget& window, const char* name) {
        auto* control = window.findChild<Widget*>(QLatin1StringView(name));
        EXPECT_TRUE(control) << name;
        return *control;
    }
    static void Click(QWidget& window, const char* name) {
        QTest::mouseClick(&Control<QPushButton>(window, name), Qt::LeftButton);
    }
    static void Show(QWidget& window) {
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    static QTreeWidgetItem* Child(QTreeWidgetItem* item, const QString& text) {
        for (int i = 0; i < item->childCount(); ++i) {
            if (item->child(i)->text(0) == text) {
                return item->child(i);
            }
        }
        return nullptr;
    }
    // What a drag from the pane carries; nothing when the drag does not begin.
    static std::unique_ptr<QMimeData> Drag(FolderPane& pane) {
        return std::unique_ptr<QMimeData>(
            pane.model()->mimeData(pane.selectionModel()->selectedIndexes()));
    }
    static bool Drop(FolderPane& pane, const QMimeData& dragged) {
        const QPoint place = pane.viewport()->rect().center();
        QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, {});
        QApplication::sendEvent(pane.viewport(), &enter);
        QDropEvent drop(place, Qt::CopyAction | Qt::MoveAction, &dragged, Qt::LeftButton, {});
        if (enter.isAccepted()) {
            QApplication::sendEvent(pane.viewport(), &drop);
            EXPECT_EQ(drop.dropAction(), Qt::CopyAction) << "nobody takes the folder away";
        }
        QApplication::processEvents();
        return enter.isAccepted();
    }
    static QStringList Listed() {
        QStringList rows;
        for (const IndexedFolder& folder : ListIndexedFolders()) {
            rows << folder.iconId + u' ' + folder.description;
        }
        return rows;
    }
};

TEST_F(FrmGestFoldersTest, ClosingTheFolderListRunsWhatChanged) {
    AddRow(LogicalDocs());
    WriteFile(Docs(u"a.txt"_s), "heron");
    const QString other = ThePlace().Path("home", u"Other"_s);
    WriteFile(other + u"/b.txt"_s, "heron");
    RunFull();
    FrmGestFolders window;
    window.show();
    dialogue.folder = platform::ToLogical(other);
    dialogue.answers = {Answer::Yes};
    QTest::mouseClick(&Control<QPushButton>(window, "cmdAddNewFolder"), Qt::LeftButton);
    auto& list = Control<QTreeWidget>(window, "lvwIndexedFolders");
    ASSERT_EQ(list.topLevelItemCount(), 2);
    EXPECT_EQ(list.topLevelItem(1)->text(1), other);
    EXPECT_FALSE(Control<QPushButton>(window, "cmdLeft").isEnabled());
    list.setCurrentItem(list.topLevelItem(0));
    QTest::mouseClick(&Control<QPushButton>(window, "cmdLeft"), Qt::LeftButton);
    EXPECT_EQ(list.topLevelItemCount(), 1);
    EXPECT_EQ(Found(u"heron"_s), QStringList{u"a.txt"_s});
    QTest::mouseClick(&Control<QPushButton>(window, "cmdClose"), Qt::LeftButton);
    EXPECT_EQ(Found(u"heron"_s), QStringList{u"b.txt"_s});
    EXPECT_TRUE(window.Summary.startsWith(GetMessage(144)));
    EXPECT_FALSE(window.isVisible());
}

TEST_F(FrmGestFoldersTest, TheTreeOpensStepByStepAndGivesItsFoldersAway) {
    QDir().mkpath(ThePlace().Path("home", u"Documents/2024/Über"_s));
    QDir().mkpath(ThePlace().Path("home", u"Documents/.hidden"_s));
    FrmGestFolders window;
    Show(window);
    auto& tree = Control<LocalTree>(window, "treLocalResource");
    auto& list = Control<FolderPane>(window, "lvwIndexedFolders");
    ASSERT_EQ(tree.topLevelItemCount(), 3);
    QTreeWidgetItem* documents = tree.topLevelItem(1);
    QTreeWidgetItem* computer = tree.topLevelItem(2);
    EXPECT_EQ(documents->text(0), GetMessage(92));
    EXPECT_EQ(computer->text(0), GetMessage(244));
    EXPECT_TRUE(Child(computer, GetMessage(kFileSystem) + u" (/)"_s));
    tree.setCurrentItem(computer);
    EXPECT_FALSE(Control<QPushButton>(window, "cmdRight").isEnabled());
    EXPECT_FALSE(Drag(tree));

    documents->setExpanded(true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return Child(documents, u"2024"_s) != nullptr; }));
    EXPECT_EQ(documents->childCount(), 1);
    QTreeWidgetItem* year = Child(documents, u"2024"_s);
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, tree.visualItemRect(year).center());
    ASSERT_TRUE(QTest::qWaitFor([&] { return Child(year, u"Über"_s) != nullptr; }));

    // By dragging, from the tree and from a file manager; back the same way.
    tree.setCurrentItem(Child(year, u"Über"_s));
    EXPECT_TRUE(Drop(list, *Drag(tree)));
    EXPECT_FALSE(Drop(tree, *Drag(tree)));
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(Docs()), QUrl(u"https://x.example/y"_s)});
    EXPECT_FALSE(Drop(tree, files));
    EXPECT_TRUE(Drop(list, files));
    EXPECT_EQ(Listed(), QStringList({u"FLDCL Über"_s, u"FLDCL Docs"_s}));
    list.setCurrentItem(list.topLevelItem(0));
    EXPECT_FALSE(Drop(list, *Drag(list)));
    dialogue.answers = {Answer::Yes, Answer::No, Answer::Yes};
    EXPECT_TRUE(Drop(tree, *Drag(list)));
    EXPECT_EQ(Listed(), QStringList{u"FLDCL Docs"_s});
    // By keys and a double click.
    tree.setFocus();
    QTest::keyClick(&tree, Qt::Key_Insert);
    EXPECT_EQ(Listed().size(), 2);
    list.setCurrentItem(list.topLevelItem(0));
    list.setFocus();
    dialogue.told.clear();
    QTest::keyClick(&list, Qt::Key_Delete); // answered No
    EXPECT_EQ(dialogue.told.size(), 1);
    EXPECT_EQ(Listed().size(), 2);
    const QPoint first = list.visualItemRect(list.topLevelItem(0)).topLeft() + QPoint(30, 5);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, first);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, first);
    EXPECT_EQ(dialogue.told.size(), 2);
    EXPECT_EQ(Listed(), QStringList{u"FLDCL Über"_s});
    // Special folders keep their names and icons.
    tree.setCurrentItem(documents);
    dialogue.answers = {Answer::Yes}; // it stands above the one in the list
    Click(window, "cmdRight");
    EXPECT_EQ(Listed(), QStringList{u"DOCS "_s + GetMessage(92)});
    EXPECT_EQ(list.topLevelItem(0)->text(1), ThePlace().Path("home", u"Documents"_s));
    dialogue.answers = {Answer::Yes};
    list.setCurrentItem(list.topLevelItem(0));
    Click(window, "cmdLeft");
    Click(window, "cmdClose");
    EXPECT_TRUE(window.Summary.isEmpty()) << "what came has gone again: no run";
}

// A server that does not answer costs its own node, for as long as it takes.
TEST_F(FrmGestFoldersTest, AFolderThatDoesNotAnswerHoldsNobodyUp) {
    std::promise<void> answered;
    std::shared_future<void> answer = answered.get_future().share();
    LocalTree tree;
    tree.SetReader(
        [answer](const QString& path) {
            if (path.endsWith(u"silent")) {
                answer.wait();
            }
            return ReadSubfolders(path);
        },
        std::chrono::milliseconds(60));
    tree.resize(300, 300);
    tree.show();
    const auto node = [&](const QString& path) {
        auto* item = new QTreeWidgetItem(&tree, {path});
        item->setData(0, FolderPane::kPathRole, path);
        return item;
    };
    QDir().mkpath(Docs(u"inside"_s));
    QTreeWidgetItem* silent = node(u"/silent"_s);
    QTreeWidgetItem* gone = node(Docs(u"gone"_s));
    QTreeWidgetItem* good = node(Docs());
    for (QTreeWidgetItem* item : {silent, gone, good}) {
        tree.NodeClick(item);
        ASSERT_EQ(item->childCount(), 1);
        EXPECT_EQ(item->child(0)->text(0), GetMessage(kPleaseWait));
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return Child(good, u"inside"_s) != nullptr; }));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return Child(silent, GetMessage(kFolderSilent)) && Child(gone, GetMessage(329)); }));
    answered.set_value();
    tree.NodeClick(silent); // asked again
    EXPECT_TRUE(QTest::qWaitFor([&] { return Child(silent, GetMessage(329)) != nullptr; }));
}

} // namespace
} // namespace velmora
