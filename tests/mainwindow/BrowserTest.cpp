// The folder tree and the file list, driven through their controls on real folders.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/Browser.h"
#include "core/CommonFunctions.h"
#include "core/Messages.h"
#include "mainwindow/FolderFiles.h"
#include "mainwindow/windows/FilesModel.h"
#include "tests/mainwindow/FieldRows.h"

#include <QApplication>
#include <QDropEvent>
#include <QHeaderView>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTreeWidget>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class BrowserTest : public IndexingTest {
  protected:
    BrowserTest() {
        WriteFile(Docs(u"one.txt"_s), "the grey heron");
        WriteFile(Docs(u"Sub/two.txt"_s), "heron and kite");
        WriteFile(Docs(u"Sub/Deep/three.txt"_s), "kite");
        WriteFile(Docs(u"Empty/.hidden"_s), "x");
        AddRow(LogicalDocs());
    }
    void Show() {
        browser = std::make_unique<Browser>();
        browser->resize(1000, 500);
        browser->InitializeTreeView();
        browser->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(browser.get()));
        Settle();
    }
    // Until the list is complete and what was put off has happened.
    void Settle() {
        ASSERT_TRUE(QTest::qWaitFor(
            [&] {
                QCoreApplication::processEvents();
                return !browser->IsLoading();
            },
            20'000));
    }
    bool Until(const std::function<bool()>& done) { return QTest::qWaitFor(done, 20'000); }

    QTreeWidget& Tree() { return *browser->findChild<QTreeWidget*>(u"treFolders"_s); }
    QTreeView& List() { return *browser->findChild<QTreeView*>(u"lvwFiles"_s); }
    QTreeWidgetItem& Indexed() { return *Tree().topLevelItem(0)->child(0); }
    QString Cell(int row, int column) {
        return List().model()->index(row, column).data().toString();
    }
    QStringList Names() {
        QStringList names;
        for (int row = 0; row < List().model()->rowCount(); ++row) {
            names << Cell(row, 0);
        }
        return names;
    }
    QTreeWidgetItem* Child(QTreeWidgetItem& node, const QString& name) {
        for (int at = 0; at < node.childCount(); ++at) {
            if (node.child(at)->text(0) == name) {
                return node.child(at);
            }
        }
        return nullptr;
    }
    void ClickHeading(int column) {
        QHeaderView& head = *List().header();
        const QPoint place(head.sectionViewportPosition(column) + 20, head.height() / 2);
        QTest::mouseClick(head.viewport(), Qt::LeftButton, {}, place);
        Settle();
    }
    void Drop(QAbstractItemView& pane, const QPoint& place, const QStringList& paths,
              Qt::KeyboardModifiers keys = {}) {
        const auto data = ToMimeData({paths, false});
        QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, data.get(), Qt::LeftButton,
                              keys);
        QCoreApplication::sendEvent(pane.viewport(), &enter);
        QDragMoveEvent move(place, Qt::CopyAction | Qt::MoveAction, data.get(), Qt::LeftButton,
                            keys);
        QCoreApplication::sendEvent(pane.viewport(), &move);
        lastAccepted = move.isAccepted();
        lastAction = move.dropAction();
        QDropEvent drop(place, Qt::CopyAction | Qt::MoveAction, data.get(), Qt::LeftButton, keys);
        QCoreApplication::sendEvent(pane.viewport(), &drop);
        QCoreApplication::processEvents();
    }

    std::unique_ptr<Browser> browser;
    bool lastAccepted = false;
    Qt::DropAction lastAction = Qt::IgnoreAction;
};

TEST_F(BrowserTest, TheTreeShowsFoldersAndTheirPlusSigns) {
    Show();
    EXPECT_EQ(Tree().topLevelItem(0)->text(0), GetMessage(43));
    EXPECT_EQ(Tree().currentItem(), &Indexed());
    EXPECT_EQ(Names(), QStringList({u"Empty"_s, u"Sub"_s, u"one.txt"_s}));
    ASSERT_EQ(Indexed().childCount(), 2);
    QTreeWidgetItem* sub = Child(Indexed(), u"Sub"_s);
    QTreeWidgetItem* empty = Child(Indexed(), u"Empty"_s);
    EXPECT_TRUE(Until([&] {
        return sub->childIndicatorPolicy() == QTreeWidgetItem::ShowIndicator &&
               empty->childIndicatorPolicy() == QTreeWidgetItem::DontShowIndicator;
    }));
    EXPECT_EQ(sub->childCount(), 0); // not read before it is opened
    sub->setExpanded(true);
    EXPECT_TRUE(Until([&] { return sub->childCount() == 1; }));
    EXPECT_EQ(Tree().currentItem(), &Indexed());
    EXPECT_FALSE(Tree().accessibleName().isEmpty() || List().accessibleName().isEmpty());

    const BrowserState state = browser->State();
    EXPECT_EQ(state.node, NodeKind::Indexed);
    EXPECT_EQ(state.historySize, 1);
    EXPECT_TRUE(state.selected.isEmpty());
    EXPECT_EQ(browser->FolderCount(), 2);

    // Built anew, the chosen folder stays.
    ASSERT_TRUE(browser->SelectFolder(platform::Capitals(LogicalDocs(u"Sub/Deep"_s))));
    Settle();
    browser->InitializeTreeView();
    Settle();
    EXPECT_EQ(Tree().currentItem()->text(0), u"Deep"_s);
    EXPECT_EQ(browser->State().node, NodeKind::Below);
    EXPECT_EQ(Names(), QStringList{u"three.txt"_s});
}

TEST_F(BrowserTest, FieldsAreColumnsWithTheirKeysBehindThem) {
    AddField(u"TITLE"_s, u"Title"_s, 0);
    AddField(u"PAID"_s, u"Paid on"_s, 3);
    AddValues(LogicalDocs(), u"o'brien.txt"_s,
              {{u"TITLE"_s, u"Invoice"_s}, {u"PAID"_s, u"20240229"_s}});
    AddValues(LogicalDocs(), u"one.txt"_s, {{u"PAID"_s, u"20230301"_s}});
    WriteFile(Docs(u"o'brien.txt"_s), QByteArray(9'216, 'x'));
    WriteFile(Docs(u"ten.txt"_s), QByteArray(10'240, 'x'));
    Show();
    QAbstractItemModel& model = *List().model();
    const auto head = [&](int column, int role) {
        return model.headerData(column, Qt::Horizontal, role).toString();
    };
    ASSERT_EQ(model.columnCount(), 9);
    EXPECT_EQ(head(5, Qt::DisplayRole), u"Title"_s);
    EXPECT_EQ(head(5, FilesModel::TagRole), QString());
    EXPECT_EQ(head(6, FilesModel::TagRole), u"D"_s);
    EXPECT_EQ(head(7, FilesModel::KeyRole), u"ODT_PAID"_s);
    for (const int hidden : {2, 4, 7, 8}) {
        EXPECT_TRUE(List().isColumnHidden(hidden)) << hidden;
    }
    // Sub-folders first, then o'brien, one, ten.
    EXPECT_EQ(Cell(0, 1), u"-"_s);
    EXPECT_EQ(model.index(0, 0).data(FilesModel::TagRole).toString(), u"F"_s);
    EXPECT_EQ(Cell(2, 1), u"9 Kb"_s);
    EXPECT_EQ(Cell(2, 2), SizeKey(9'216));
    EXPECT_EQ(Cell(2, 4).size(), 14);
    EXPECT_EQ(Cell(2, 5), u"Invoice"_s);
    EXPECT_EQ(Cell(2, 6), UnFrmtDateDb(u"20240229"_s));
    EXPECT_EQ(Cell(2, 7), u"20240229"_s);

    ClickHeading(1);
    EXPECT_EQ(Names().mid(2), QStringList({u"one.txt"_s, u"o'brien.txt"_s, u"ten.txt"_s}));
    ClickHeading(1);
    EXPECT_EQ(Names(),
              QStringList({u"Empty"_s, u"Sub"_s, u"ten.txt"_s, u"o'brien.txt"_s, u"one.txt"_s}));
    ClickHeading(6);
    EXPECT_EQ(Names().mid(2), QStringList({u"ten.txt"_s, u"one.txt"_s, u"o'brien.txt"_s}));

    // A value was changed: the folder is not read again. Then a field is gone.
    DbExecute(u"Update tblDocFields set TITLE = 'Receipt' where sfilename = 'ONE.TXT'"_s);
    browser->UpdateCurrentFileField();
    EXPECT_EQ(Cell(3, 5), u"Receipt"_s);
    DbExecute(u"Delete from tblFieldsDefs where sfieldname = 'PAID'"_s);
    browser->CreateLVWColumns();
    Settle();
    EXPECT_EQ(model.columnCount(), 7);
    EXPECT_EQ(Names().mid(2), QStringList({u"o'brien.txt"_s, u"one.txt"_s, u"ten.txt"_s}));
}

TEST_F(BrowserTest, BackAndForwardPassOverWhatIsGone) {
    Show();
    for (const QString& folder : {u"Empty"_s, u"Sub"_s, u"Sub/Deep"_s}) {
        ASSERT_TRUE(browser->SelectFolder(LogicalDocs(folder)));
        Settle();
    }
    ASSERT_TRUE(QDir(Docs(u"Sub"_s)).removeRecursively());
    Tree().setCurrentItem(Tree().topLevelItem(0));
    dialogue.told.clear();
    QTest::keyClick(&Tree(), Qt::Key_Backspace);
    Settle();
    EXPECT_EQ(Tree().currentItem()->text(0), u"Empty"_s);
    EXPECT_EQ(browser->State().historyPosition, 1);
    QTest::keyClick(&Tree(), Qt::Key_Right, Qt::AltModifier);
    EXPECT_EQ(Tree().currentItem(), Tree().topLevelItem(0));
    EXPECT_EQ(browser->RowCount(), 0);
    QTest::keyClick(&Tree(), Qt::Key_Left, Qt::AltModifier);
    QTest::keyClick(&Tree(), Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(Tree().currentItem(), &Indexed());
    EXPECT_EQ(dialogue.told, QStringList());
}

TEST_F(BrowserTest, FoldersThatVanishAreToldOnceAndTheTreeStaysOfUse) {
    Show();
    // Chosen when it is gone: told. Gone while it is shown: the folder above is shown.
    QDir(Docs(u"Empty"_s)).removeRecursively();
    Tree().setCurrentItem(Child(Indexed(), u"Empty"_s));
    ASSERT_TRUE(Until([&] { return !dialogue.told.isEmpty(); }));
    EXPECT_EQ(dialogue.told, QStringList{GetMessage(116) + u'|' + GetMessage(1063) + u"|3"_s});
    EXPECT_EQ(Tree().currentItem(), &Indexed());
    Settle();
    EXPECT_FALSE(Child(Indexed(), u"Empty"_s));
    dialogue.told.clear();
    browser->SelectFolder(LogicalDocs(u"Sub/Deep"_s));
    Settle();
    QDir(Docs(u"Sub"_s)).removeRecursively();
    ASSERT_TRUE(Until([&] { return Tree().currentItem() == &Indexed(); }));
    Settle();
    EXPECT_EQ(Names(), QStringList{u"one.txt"_s});
    EXPECT_EQ(dialogue.told, QStringList());

    // The indexed folder itself.
    QDir(Docs()).removeRecursively();
    ASSERT_TRUE(Until([&] { return !dialogue.told.isEmpty(); }));
    QTest::qWait(500);
    ASSERT_EQ(dialogue.told.size(), 1);
    EXPECT_TRUE(dialogue.told[0].startsWith(GetMessage(41) + u'|' + GetMessage(296)));
    EXPECT_EQ(Tree().currentItem(), Tree().topLevelItem(0));
    EXPECT_EQ(Tree().topLevelItem(0)->childCount(), 1);
    WriteFile(Docs(u"back.txt"_s), "x");
    Tree().setCurrentItem(&Indexed());
    Settle();
    EXPECT_EQ(Names(), QStringList{u"back.txt"_s});
}

TEST_F(BrowserTest, ARefusedFolderLeadsToTheRoot) {
    Show();
    QFile::setPermissions(Docs(u"Sub"_s), {});
    // Root may read everything: another user does this.
    if (geteuid() == 0) {
        ASSERT_EQ(::chmod(ThePlace().Path("home").toUtf8().constData(), 0755), 0);
        ASSERT_EQ(::chmod(QFileInfo(ThePlace().Path("home")).path().toUtf8().constData(), 0755), 0);
        ASSERT_EQ(seteuid(65534), 0);
    }
    Tree().setCurrentItem(Child(Indexed(), u"Sub"_s));
    const bool told = Until([&] { return !dialogue.told.isEmpty(); });
    if (getuid() == 0) {
        ASSERT_EQ(seteuid(0), 0);
    }
    QFile::setPermissions(Docs(u"Sub"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    ASSERT_TRUE(told);
    EXPECT_TRUE(dialogue.told[0].startsWith(GetMessage(99) + u'|' + GetMessage(329)));
    EXPECT_EQ(Tree().currentItem(), Tree().topLevelItem(0));
}

TEST_F(BrowserTest, TheListFollowsTheDiskAndKeepsItsPlace) {
    for (int at = 0; at < 200; ++at) {
        WriteFile(Docs(u"m%1.txt"_s.arg(at, 3, 10, QChar(u'0'))), "x");
    }
    Show();
    const auto rowOf = [&](const QString& name) { return static_cast<int>(Names().indexOf(name)); };
    List().setFocus();
    browser->SelectFile(u"m150.txt"_s);
    List().verticalScrollBar()->setValue(120);
    const QString top = List().indexAt({1, 1}).data().toString();
    WriteFile(Docs(u"a.txt"_s), "new");
    QFile::remove(Docs(u"m003.txt"_s));
    WriteFile(Docs(u"m150.txt"_s), QByteArray(5'000, 'x'));
    ASSERT_TRUE(Until([&] { return Names().contains(u"a.txt"_s); }));
    ASSERT_TRUE(Until([&] { return Cell(rowOf(u"m150.txt"_s), 1) == u"4.88 Kb"_s; }));
    EXPECT_FALSE(Names().contains(u"m003.txt"_s));
    ASSERT_EQ(browser->State().selected.size(), 1);
    EXPECT_EQ(browser->State().selected[0].path, LogicalDocs(u"m150.txt"_s));
    EXPECT_EQ(List().indexAt({1, 1}).data().toString(), top);

    // So much at once that all is shown anew.
    for (int at = 0; at < 200; at += 2) {
        QFile::remove(Docs(u"m%1.txt"_s.arg(at, 3, 10, QChar(u'0'))));
    }
    ASSERT_TRUE(Until([&] { return !Names().contains(u"m198.txt"_s); }));
    ASSERT_TRUE(Until([&] { return !Names().contains(u"m000.txt"_s); }));
    EXPECT_EQ(browser->State().selected.size(), 0); // m150 is gone
    // A sub-folder made elsewhere arrives in the tree, too.
    QDir().mkpath(Docs(u"Fresh"_s));
    EXPECT_TRUE(Until([&] { return Child(Indexed(), u"Fresh"_s) != nullptr; }));
}

TEST_F(BrowserTest, ANameIsEditedInPlace) {
    Show();
    QStringList asked;
    bool allow = true;
    browser->RenameRequested = [&](const QString& path, const QString& name, bool isFolder) {
        asked << path + u'>' + name + (isFolder ? u"/"_s : QString());
        return allow && QFile::rename(platform::ToMachine(path),
                                      QFileInfo(platform::ToMachine(path)).path() + u'/' + name);
    };
    browser->SelectFile(u"one.txt"_s);
    QTest::keyClick(&List(), Qt::Key_F2);
    auto* editor = List().findChild<QLineEdit*>();
    ASSERT_TRUE(editor);
    EXPECT_EQ(editor->selectedText(), u"one"_s); // the ending stays
    // What the disk does meanwhile does not disturb.
    WriteFile(Docs(u"aaa.txt"_s), "x");
    QTest::keyClicks(editor, u"first"_s);
    QTest::qWait(600);
    ASSERT_TRUE(List().findChild<QLineEdit*>());
    EXPECT_EQ(editor->text(), u"first.txt"_s);
    QTest::keyClick(editor, Qt::Key_Return);
    QTest::qWait(1); // the view takes the text over later
    EXPECT_EQ(asked, QStringList{LogicalDocs(u"one.txt"_s) + u">first.txt"_s});
    ASSERT_TRUE(Until([&] { return Names().contains(u"aaa.txt"_s); }));
    EXPECT_TRUE(Names().contains(u"first.txt"_s) && !Names().contains(u"one.txt"_s));
    EXPECT_EQ(browser->State().selected.value(0).name, u"first.txt"_s);

    // Refused: the old name stays. Escape asks nobody.
    allow = false;
    asked.clear();
    QTest::keyClick(&List(), Qt::Key_F2);
    QTest::keyClicks(List().findChild<QLineEdit*>(), u"b?d"_s);
    QTest::keyClick(List().findChild<QLineEdit*>(), Qt::Key_Return);
    QTest::qWait(1); // the view takes the text over later
    EXPECT_EQ(asked.size(), 1);
    EXPECT_TRUE(Names().contains(u"first.txt"_s));
    QTest::keyClick(&List(), Qt::Key_F2);
    QTest::keyClicks(List().findChild<QLineEdit*>(), u"x"_s);
    QTest::keyClick(List().findChild<QLineEdit*>(), Qt::Key_Escape);
    QTest::qWait(1); // the view takes the text over later
    EXPECT_EQ(asked.size(), 1);

    // In the tree: not the indexed folder, but one below it.
    allow = true;
    asked.clear();
    Tree().setFocus();
    browser->StartLabelEdit();
    EXPECT_FALSE(Tree().findChild<QLineEdit*>());
    browser->SelectFolder(LogicalDocs(u"Sub"_s));
    Settle();
    browser->StartLabelEdit();
    ASSERT_TRUE(Tree().findChild<QLineEdit*>());
    QTest::keyClicks(Tree().findChild<QLineEdit*>(), u"Other"_s);
    QTest::keyClick(Tree().findChild<QLineEdit*>(), Qt::Key_Return);
    QTest::qWait(1); // the view takes the text over later
    EXPECT_EQ(asked, QStringList{LogicalDocs(u"Sub"_s) + u">Other/"_s});
    QCoreApplication::processEvents();
    Settle();
    EXPECT_EQ(browser->State().folder.section(u'\\', -1), u"Other"_s);
    EXPECT_EQ(Names(), QStringList({u"Deep"_s, u"two.txt"_s}));
    EXPECT_EQ(dialogue.told, QStringList());
}

TEST_F(BrowserTest, ElementsAreFoundOpenedAndSelected) {
    Show();
    QSignalSpy opened(browser.get(), &Browser::Opened);
    browser->FindElement(LogicalDocs(u"Sub/Deep/three.txt"_s));
    Settle();
    EXPECT_EQ(Tree().currentItem()->text(0), u"Deep"_s);
    EXPECT_EQ(browser->State().selected.value(0).name, u"three.txt"_s);
    EXPECT_FALSE(browser->State().treeActive);
    QTest::keyClick(&List(), Qt::Key_Return);
    ASSERT_EQ(opened.size(), 1);
    EXPECT_EQ(opened[0][0].toString(), LogicalDocs(u"Sub/Deep/three.txt"_s));
    browser->FindElement(LogicalDocs(u"Sub/gone.txt"_s));
    Settle();
    ASSERT_TRUE(Until([&] { return !dialogue.told.isEmpty(); }));
    browser->FindElement(u"\\nowhere\\x.txt"_s);
    EXPECT_EQ(dialogue.told, QStringList({GetMessage(121) + u'|' + GetMessage(1064) + u"|4"_s,
                                          GetMessage(99) + u'|' + GetMessage(1063) + u"|4"_s}));
    browser->SelectFolder(LogicalDocs());
    Settle();
    browser->SelectLvw(true);
    EXPECT_EQ(browser->State().selected.size(), 3);
    EXPECT_TRUE(browser->State().selected[0].isFolder);
    browser->InvertSelection();
    EXPECT_EQ(browser->State().selected.size(), 0);
    browser->SelectFile(u"Sub"_s);
    browser->InvertSelection();
    EXPECT_EQ(browser->State().selected.size(), 2);
    // Type-ahead, and a folder opened by Enter.
    QTest::keyClick(&List(), 'S');
    QTest::keyClick(&List(), Qt::Key_Return);
    Settle();
    EXPECT_EQ(Tree().currentItem()->text(0), u"Sub"_s);
    browser->SetCut({LogicalDocs(u"Sub/two.txt"_s)});
    EXPECT_TRUE(List().model()->index(1, 0).data(FilesModel::CutRole).toBool());
    EXPECT_FALSE(List().model()->index(0, 0).data(FilesModel::CutRole).toBool());
}

TEST_F(BrowserTest, WhatASearchFoundStandsInPlaceOfTheFolder) {
    Show();
    browser->ShowFound({LogicalDocs(u"Sub/two.txt"_s), LogicalDocs(u"gone.txt"_s),
                        LogicalDocs(u"Sub/Deep/three.txt"_s)});
    Settle();
    auto& close = *browser->findChild<QPushButton*>(u"cmdCloseFilter"_s);
    EXPECT_TRUE(close.isVisible() && browser->State().searchMode);
    EXPECT_EQ(Names(), QStringList({u"three.txt"_s, u"two.txt"_s}));
    const int folder = List().model()->columnCount() - 1;
    EXPECT_FALSE(List().isColumnHidden(folder));
    EXPECT_EQ(List().header()->visualIndex(folder), 1); // beside the name
    EXPECT_EQ(Cell(0, folder), Docs(u"Sub/Deep"_s));
    List().selectAll();
    EXPECT_EQ(browser->State().selected[1].path, LogicalDocs(u"Sub/two.txt"_s));
    browser->SetPrevPath(); // no history in here
    EXPECT_TRUE(browser->State().searchMode);
    QTest::mouseClick(&close, Qt::LeftButton);
    Settle();
    EXPECT_FALSE(close.isVisible() || browser->State().searchMode);
    EXPECT_TRUE(List().isColumnHidden(folder));
    EXPECT_EQ(Names(), QStringList({u"Empty"_s, u"Sub"_s, u"one.txt"_s}));

    // The folder from before is gone: the root.
    browser->SelectFolder(LogicalDocs(u"Empty"_s));
    Settle();
    browser->ShowFound({LogicalDocs(u"one.txt"_s)});
    QDir(Docs(u"Empty"_s)).removeRecursively();
    Tree().setCurrentItem(&Indexed()); // choosing a folder ends the search as well
    Settle();
    EXPECT_FALSE(browser->State().searchMode);
    EXPECT_EQ(Names(), QStringList({u"Sub"_s, u"one.txt"_s}));
}

TEST_F(BrowserTest, DropsAreHandedOnWhereTheyCanGo) {
    Show();
    QList<std::pair<FileList, QString>> dropped;
    QObject::connect(
        browser.get(), &Browser::FilesDropped,
        [&](const FileList& list, const QString& target) { dropped << std::pair(list, target); });
    const auto onRow = [&](const QString& name) {
        return List()
            .visualRect(List().model()->index(static_cast<int>(Names().indexOf(name)), 0))
            .center();
    };
    WriteFile(ThePlace().Path("home", u"outside.txt"_s), "x");
    const QString outside = ThePlace().Logical("home", u"outside.txt"_s);
    Drop(List(), onRow(u"Sub"_s), {outside});
    ASSERT_EQ(dropped.size(), 1);
    EXPECT_TRUE(dropped[0].first.move);
    EXPECT_EQ(dropped[0].second, LogicalDocs(u"Sub"_s));
    Drop(List(), List().viewport()->rect().bottomRight() - QPoint(5, 5), {outside},
         Qt::ControlModifier);
    ASSERT_EQ(dropped.size(), 2);
    EXPECT_FALSE(dropped[1].first.move);
    EXPECT_EQ(dropped[1].second, LogicalDocs());
    // Where the files are already, and on itself: nothing at all.
    Drop(List(), onRow(u"one.txt"_s), {LogicalDocs(u"one.txt"_s)});
    Drop(List(), onRow(u"Sub"_s), {LogicalDocs(u"Sub"_s)});
    EXPECT_FALSE(lastAccepted);
    EXPECT_EQ(dropped.size(), 2);
    EXPECT_EQ(dialogue.told, QStringList());

    const auto onNode = [&](QTreeWidgetItem* item) { return Tree().visualItemRect(item).center(); };
    Indexed().setExpanded(true);
    Drop(Tree(), onNode(Child(Indexed(), u"Sub"_s)), {LogicalDocs(u"one.txt"_s)});
    ASSERT_EQ(dropped.size(), 3);
    EXPECT_EQ(dropped[2].second.section(u'\\', -1), u"Sub"_s);
    const QString told = GetMessage(119) + u'|' + GetMessage(135) + u"|3"_s;
    Drop(Tree(), onNode(Tree().topLevelItem(0)), {LogicalDocs(u"one.txt"_s)});
    EXPECT_EQ(lastAction, Qt::IgnoreAction);
    EXPECT_EQ(dialogue.told, QStringList{told});
    browser->SelectFolder(LogicalDocs(u"Sub"_s));
    Settle();
    Drop(List(), onRow(u"Deep"_s), {LogicalDocs(u"Sub"_s)});
    EXPECT_EQ(dialogue.told, QStringList({told, told}));
    EXPECT_EQ(dropped.size(), 3);
}

TEST_F(BrowserTest, ColumnsComeBackAsTheyWereLeft) {
    AddField(u"TITLE"_s, u"Title"_s, 0);
    {
        Show();
        List().header()->resizeSection(FilesModel::Date, 222);
        List().header()->moveSection(List().header()->visualIndex(5), 1);
        ClickHeading(1);
        ClickHeading(1);
        browser->SaveState();
        browser.reset();
    }
    AddField(u"MORE"_s, u"More"_s, 0);
    browser = std::make_unique<Browser>();
    browser->RestoreState();
    EXPECT_EQ(List().columnWidth(FilesModel::Date), 222);
    // Of the columns that are seen it is the one behind the name.
    EXPECT_LT(List().header()->visualIndex(5), List().header()->visualIndex(FilesModel::Size));
    EXPECT_EQ(List().header()->sortIndicatorSection(), 1);
    EXPECT_EQ(List().header()->sortIndicatorOrder(), Qt::DescendingOrder);
    EXPECT_FALSE(List().isColumnHidden(6));
}

} // namespace
} // namespace velmora
