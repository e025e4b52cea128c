// The windows of the file operations, driven by clicks and keys.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "FileOperationsFixture.h"
#include "mainwindow/FileMessageIds.h"
#include "mainwindow/windows/FileShellWindows.h"
#include "mainwindow/windows/FrmFileConflict.h"
#include "mainwindow/windows/FrmNameFile.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class FileWindowsTest : public FileOperationsTest {
  protected:
    template <class Widget> static Widget& Control(QWidget& window, const char* name) {
        auto* control = window.findChild<Widget*>(QLatin1StringView(name));
        EXPECT_TRUE(control) << name;
        return *control;
    }
    static void Click(QWidget& window, const char* button) {
        QTest::mouseClick(&Control<QPushButton>(window, button), Qt::LeftButton);
    }
    // Acts on every modal window that opens while `act` runs, each once.
    static int WithModals(const std::function<void(QWidget&)>& onModal,
                          const std::function<void()>& act) {
        QSet<QWidget*> seen;
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            QWidget* window = QApplication::activeModalWidget();
            if (window && !seen.contains(window)) {
                seen.insert(window);
                onModal(*window);
            }
        });
        watch.start(1);
        act();
        return static_cast<int>(seen.size());
    }

    QWidget owner;
    FileShellWindows windows{&owner, 0};
    FileOperations byWindows{windows, clipboard};
};

TEST_F(FileWindowsTest, TheConflictIsShownAndAnsweredByClicks) {
    WriteFile(Docs(u"a.tif"_s), "new content");
    const auto paste = [&](const char* button, bool forAll) {
        WriteFile(Docs(u"Other/a.tif"_s), "old");
        bool asked = false;
        WithModals(
            [&](QWidget& window) {
                auto* form = qobject_cast<FrmFileConflict*>(&window);
                if (!form) {
                    return;
                }
                asked = true;
                EXPECT_TRUE(Control<QLabel>(*form, "lblQuestion").text().contains(u"a.tif"_s));
                EXPECT_TRUE(Control<QLabel>(*form, "lblNewFacts").text().startsWith(u"11 b"_s));
                EXPECT_TRUE(Control<QLabel>(*form, "lblOldFacts").text().startsWith(u"3 b"_s));
                EXPECT_TRUE(Control<QPushButton>(*form, "cmdSkip").isDefault());
                Control<QCheckBox>(*form, "chkForAll").setChecked(forAll);
                button ? Click(*form, button) : QTest::keyClick(form, Qt::Key_Escape);
            },
            [&] {
                byWindows.Drop({{Logical(u"a.tif"_s)}, false}, Logical(u"Other"_s));
            });
        EXPECT_TRUE(asked);
        return BytesOf(Docs(u"Other/a.tif"_s));
    };
    EXPECT_EQ(paste("cmdSkip", false), "old");
    EXPECT_EQ(paste("cmdAnnulla", false), "old");
    EXPECT_EQ(paste(nullptr, true), "old");
    EXPECT_EQ(paste("cmdReplace", true), "new content");
    EXPECT_EQ(paste("cmdKeepBoth", false), "old");
    EXPECT_EQ(BytesOf(Docs(u"Other/a (2).tif"_s)), "new content");
}

TEST_F(FileWindowsTest, AFolderIsMergedAndOneOntoItselfHasNoReplace) {
    const platform::OwnStatus folder{platform::OwnKind::Folder, 0, 0, 0, 1, 2};
    FrmFileConflict merge({{u"/a/f"_s, folder}, {u"/b/f"_s, {folder.kind, 0, 0, 0, 1, 3}}, true});
    EXPECT_EQ(Control<QPushButton>(merge, "cmdReplace").text(), GetMessage(kMerge));
    EXPECT_TRUE(Control<QPushButton>(merge, "cmdReplace").isDefault());
    FrmFileConflict self({{u"/a/f"_s, folder}, {u"/a/f"_s, folder}, false});
    EXPECT_TRUE(Control<QPushButton>(self, "cmdReplace").isHidden());
    EXPECT_EQ(self.Answer.choice, platform::ConflictChoice::Cancel);
}

TEST_F(FileWindowsTest, AProblemTellsWhatAndWhereAndIsAnsweredByClicks) {
    WriteFile(Docs(u"kept"_s), "kept");
    for (const char* button : {"cmdSkip", "cmdAnnulla", "cmdRetry"}) {
        bool mended = false;
        WithModals(
            [&](QWidget& window) {
                auto* box = qobject_cast<QMessageBox*>(&window);
                if (!box) {
                    return;
                }
                EXPECT_TRUE(box->text().contains(Docs(u"gone"_s))) << box->text().toStdString();
                if (qstrcmp(button, "cmdRetry") == 0) {
                    WriteFile(Docs(u"gone"_s), "mended");
                    mended = true;
                }
                Click(*box, button);
            },
            [&] {
                byWindows.Drop({{Logical(u"gone"_s), Logical(u"kept"_s)}, false},
                               Logical(u"Other"_s));
            });
        EXPECT_EQ(QFile::exists(Docs(u"Other/kept"_s)), qstrcmp(button, "cmdAnnulla") != 0);
        EXPECT_EQ(QFile::exists(Docs(u"Other/gone"_s)), mended);
        QFile::remove(Docs(u"Other/kept"_s));
    }
}

TEST_F(FileWindowsTest, TheProgressIsShownAndCancels) {
    FrmFileProgress form(ShellWork::Copy, &owner);
    form.show();
    EXPECT_EQ(form.windowTitle(), GetMessage(75));
    platform::CarryProgress now;
    now.bytes = 25;
    now.totalBytes = 100;
    now.totalFiles = 4;
    now.from = u"/home/anna/"_s + QString(300, u'x') + u"/end.tif"_s;
    now.to = u"/media/disk"_s;
    form.ShowProgress(now);
    EXPECT_EQ(Control<QProgressBar>(form, "barProgress").value(), 250);
    EXPECT_TRUE(Control<QLabel>(form, "lblFrom").text().endsWith(u"end.tif"_s));
    EXPECT_LT(Control<QLabel>(form, "lblFrom").text().size(), 200);
    const int width = form.width();
    Click(form, "cmdAnnulla");
    EXPECT_TRUE(form.Cancelled);
    form.ShowProgress(now);
    EXPECT_EQ(Control<QLabel>(form, "lblStep").text(), GetMessage(3125));
    EXPECT_EQ(form.width(), width);

    // An operation that lasts shows it, and Escape ends the operation.
    bool shown = false;
    WithModals(
        [&](QWidget& window) {
            shown = qobject_cast<FrmFileProgress*>(&window) != nullptr;
            QTest::keyClick(&window, Qt::Key_Escape);
        },
        [&] {
            windows.Begin(ShellWork::Move);
            EXPECT_TRUE(QTest::qWaitFor([&] { return windows.IsCancelled(); }, 5000));
            windows.End();
        });
    EXPECT_TRUE(shown);
}

TEST_F(FileWindowsTest, ANameIsAskedForUntilItIsGood) {
    WriteFile(Docs(u"taken.TIF"_s), "x");
    FrmNameFile form(Logical());
    form.show();
    auto& text = Control<QLineEdit>(form, "txtNamefile");
    EXPECT_TRUE(Control<QLabel>(form, "lblInfoPermission").isHidden());
    QTest::keyClicks(&text, u"ta/?*ken"_s);
    EXPECT_EQ(text.text(), u"taken"_s);
    QTest::keyClick(&text, Qt::Key_Return);
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(dialogue.told, QStringList{Told(193, 88)});
    QTest::keyClicks(&text, u"free"_s); // the refused name is selected
    Click(form, "cmdok");
    EXPECT_EQ(form.FileName, u"free.TIF"_s);
    EXPECT_FALSE(form.isVisible());
    FrmNameFile cancelled(Logical(u"gone"_s));
    EXPECT_FALSE(Control<QLabel>(cancelled, "lblInfoPermission").isHidden());
    Click(cancelled, "cmdAnnulla");
    EXPECT_EQ(cancelled.FileName, QString());
}

TEST_F(FileWindowsTest, TheDesktopsClipboardIsReadOnceForEachChange) {
    DesktopClipboard desktop;
    desktop.Write({{Logical(u"Sub"_s)}, true});
    EXPECT_TRUE(desktop.Read().move);
    EXPECT_EQ(desktop.Read().paths, QStringList{Logical(u"Sub"_s)});
    QGuiApplication::clipboard()->setText(u"words"_s);
    EXPECT_TRUE(desktop.Read().IsEmpty());
    desktop.Write({{Logical(u"Sub"_s)}, false});
    desktop.Write({});
    EXPECT_TRUE(desktop.Read().IsEmpty());
}

} // namespace
} // namespace velmora
