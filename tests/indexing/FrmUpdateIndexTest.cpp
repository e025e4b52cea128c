// The progress window, driven through its controls.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/windows/FrmUpdateIndex.h"
#include "core/Events.h"
#include "core/Messages.h"
#include "indexing/windows/ScanAnimation.h"
#include "tests/indexing/IndexingFixture.h"

#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QTest>
#include <QTimer>
#include <QTreeView>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class FrmUpdateIndexTest : public IndexingTest {
  protected:
    FrmUpdateIndexTest() { AddRow(LogicalDocs()); }

    template <class Widget> static Widget& Control(QWidget& window, const char* name) {
        auto* control = window.findChild<Widget*>(QLatin1StringView(name));
        EXPECT_TRUE(control) << name;
        return *control;
    }
    static void WriteManyFiles(int count) {
        QByteArray text;
        for (int word = 0; word < 4000; ++word) {
            text += "heron" + QByteArray::number(word) + ' ';
        }
        for (int file = 0; file < count; ++file) {
            WriteFile(Docs(u"%1.txt"_s.arg(file)), text);
        }
    }
    // Looks at the window again and again while it runs.
    static void Watch(QWidget& window, std::function<void()> look) {
        auto* timer = new QTimer(&window);
        QObject::connect(timer, &QTimer::timeout, &window, std::move(look));
        timer->start(1);
    }
};

TEST_F(FrmUpdateIndexTest, TheBarsMoveAndTheWindowUnloadsItself) {
    WriteManyFiles(250);
    FrmUpdateIndex window;
    window.UpdateAll = true;
    QSet<int> seen;
    QString log;
    Watch(window, [&] {
        seen << Control<QProgressBar>(window, "prgTotal").value();
        log = Control<QPlainTextEdit>(window, "txtLog").toPlainText();
        EXPECT_FALSE(Control<QCheckBox>(window, "chkAutoShutDown").isVisible());
    });
    window.exec();
    EXPECT_GT(seen.size(), 2);
    EXPECT_TRUE(log.contains(Docs()));
    EXPECT_EQ(window.IndexReport.added, 250u);
    EXPECT_FALSE(window.Cancelled);
    EXPECT_EQ(Found(u"heron7"_s).size(), 250);
}

TEST_F(FrmUpdateIndexTest, CancelStopsTheRunAndStaysPressed) {
    WriteManyFiles(400);
    for (const bool byEscape : {false, true}) {
        FrmUpdateIndex window;
        window.ForceRecreate = window.UpdateAll = true;
        bool pressed = false;
        Watch(window, [&] {
            auto& cancel = Control<QPushButton>(window, "cmdAnnulla");
            if (pressed) {
                EXPECT_FALSE(cancel.isEnabled());
            } else if (Control<QProgressBar>(window, "prgTotal").value() > 0) {
                pressed = true;
                if (byEscape) {
                    QTest::keyClick(&window, Qt::Key_Escape);
                } else {
                    QTest::mouseClick(&cancel, Qt::LeftButton);
                }
            }
        });
        window.exec();
        ASSERT_TRUE(pressed);
        EXPECT_TRUE(window.Cancelled);
        EXPECT_TRUE(window.IndexReport.aborted);
        EXPECT_LT(window.IndexReport.documents, 400u);
    }
}

TEST_F(FrmUpdateIndexTest, ACancelBeforeTheStartIsNotLost) {
    WriteManyFiles(20);
    FrmUpdateIndex window;
    window.UpdateAll = true;
    // The timer goes off while the button's handler lets events run.
    bool yielded = false;
    const ScopedYield hook([&] {
        if (!std::exchange(yielded, true)) {
            EXPECT_TRUE(QTest::qWaitFor([&] { return !window.isVisible(); }, 20'000));
        }
    });
    QTimer::singleShot(0, &window, [&] {
        QTest::mouseClick(&Control<QPushButton>(window, "cmdAnnulla"), Qt::LeftButton);
    });
    window.exec();
    EXPECT_TRUE(yielded);
    EXPECT_TRUE(window.Cancelled);
    EXPECT_TRUE(window.IndexReport.aborted);
}

TEST_F(FrmUpdateIndexTest, UnreadDocumentsAreListedUntilTheWindowIsClosed) {
    WriteFile(Docs(u"broken.docx"_s), "PK\x03\x04 nothing of a document");
    WriteFile(Docs(u"good.txt"_s), "heron");
    FrmUpdateIndex window;
    window.UpdateAll = true;
    bool listed = false;
    Watch(window, [&] {
        auto& list = Control<QTreeView>(window, "lvwProblems");
        if (!list.isVisible() || listed) {
            return;
        }
        listed = true;
        EXPECT_EQ(list.model()->rowCount(), 1);
        EXPECT_EQ(list.model()->index(0, 0).data().toString(), u"broken.docx"_s);
        EXPECT_FALSE(list.model()->index(0, 2).data().toString().isEmpty());
        EXPECT_EQ(list.model()->index(0, 3).data().toString(), Docs());
        EXPECT_FALSE(Control<ScanAnimation>(window, "aniIdx").IsMoving());
        EXPECT_TRUE(Control<QLabel>(window, "lblStatus").text().startsWith(GetMessage(144)));
        EXPECT_FALSE(Control<QPushButton>(window, "cmdAnnulla").isVisible());
        QTest::mouseClick(&Control<QPushButton>(window, "cmdCopyList"), Qt::LeftButton);
        EXPECT_TRUE(QApplication::clipboard()->text().startsWith(Docs(u"broken.docx"_s) + u'\t'));
        QTest::keyClick(&window, Qt::Key_Return);
    });
    window.exec();
    EXPECT_TRUE(listed);
    EXPECT_FALSE(window.Cancelled);

    // Where nobody is in front, the window does not wait.
    program->gAutoIndexing = true;
    window.ForceRecreate = window.UpdateAll = true;
    listed = true;
    window.exec();
    EXPECT_EQ(window.IndexReport.problems.size(), 1u);
}

// Over what the run before was about, and only on demand: the file stands as it did.
TEST_F(FrmUpdateIndexTest, RetryReadsTheListedDocumentsAgain) {
    const QByteArray broken = "PK\x03\x04 nothing of a document";
    QDateTime changed = QDateTime::fromSecsSinceEpoch(1'700'000'000);
    const auto write = [&](const QByteArray& content) {
        WriteFile(Docs(u"broken.docx"_s), content);
        QFile file(Docs(u"broken.docx"_s));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(changed, QFileDevice::FileModificationTime));
    };
    WriteFile(Docs(u"good.txt"_s), "heron");
    for (const bool all : {true, false}) {
        changed = changed.addSecs(1);
        write(broken);
        FrmUpdateIndex window;
        window.UpdateAll = all;
        if (!all) {
            WriteFile(Docs(u"new.txt"_s), "heron");
            window.FileOrFolderToAdd.emplace().Add(LogicalDocs(u"broken.docx"_s));
        }
        int pressed = 0;
        Watch(window, [&] {
            auto& retry = Control<QPushButton>(window, "cmdRetry");
            if (!Control<QTreeView>(window, "lvwProblems").isVisible()) {
                EXPECT_FALSE(retry.isVisible());
                return;
            }
            EXPECT_EQ(retry.text(), GetMessage(1029));
            if (++pressed == 2) { // the first time, nothing has become of it
                write("heron" + QByteArray(broken.size() - 5, ' '));
            }
            QTest::mouseClick(&retry, Qt::LeftButton);
        });
        window.exec();
        EXPECT_EQ(pressed, 2);
        EXPECT_EQ(window.IndexReport.changed, 1u);
        EXPECT_EQ(window.IndexReport.unchanged, all ? 1u : 0u);
        EXPECT_FALSE(window.Retry);
        EXPECT_EQ(Found(u"heron"_s), (QStringList{u"broken.docx"_s, u"good.txt"_s}));
    }
}

// What was not read in earlier runs is not told again by a run that passes it over.
TEST_F(FrmUpdateIndexTest, TheLedgerListsWhatEarlierRunsCouldNotRead) {
    WriteFile(Docs(u"old.docx"_s), "PK\x03\x04 nothing of a document");
    RunFull();
    WriteFile(Docs(u"new.docx"_s), "PK\x03\x04 nothing either");
    const auto names = [](FrmUpdateIndex& window) {
        auto& list = Control<QTreeView>(window, "lvwProblems");
        QStringList found;
        for (int row = 0; row < list.model()->rowCount(); ++row) {
            found << list.model()->index(row, 0).data().toString();
        }
        return found;
    };
    FrmUpdateIndex window;
    window.UpdateAll = true;
    bool looked = false;
    Watch(window, [&] {
        if (looked || !Control<QTreeView>(window, "lvwProblems").isVisible()) {
            return;
        }
        looked = true;
        EXPECT_EQ(names(window), QStringList{u"new.docx"_s});
        QTest::mouseClick(&Control<QPushButton>(window, "cmdLedger"), Qt::LeftButton);
        EXPECT_EQ(names(window), QStringList({u"new.docx"_s, u"old.docx"_s}));
        EXPECT_EQ(Control<QLabel>(window, "lblProblems").text(), GetMessage(3589, {u"2"_s}));
        QTest::mouseClick(&Control<QPushButton>(window, "cmdClose"), Qt::LeftButton);
    });
    window.exec();
    ASSERT_TRUE(looked);

    // Asked for by itself: nothing runs until the person wants to try again.
    WriteFile(Docs(u"old.docx"_s), "heron, which is no package but a text");
    FrmUpdateIndex ledger;
    ledger.OnlyLedger = true;
    int step = 0;
    Watch(ledger, [&] {
        if (!Control<QTreeView>(ledger, "lvwProblems").isVisible()) {
            return;
        }
        EXPECT_EQ(names(ledger).size(), ++step == 1 ? 2 : 1);
        QTest::mouseClick(&Control<QPushButton>(ledger, step == 1 ? "cmdRetry" : "cmdClose"),
                          Qt::LeftButton);
    });
    ledger.exec();
    EXPECT_EQ(step, 2);
    EXPECT_FALSE(ledger.Cancelled);
}

TEST_F(FrmUpdateIndexTest, EveryFileComesIntoTheLog) {
    constexpr int kFiles = 150;
    for (int file = 0; file < kFiles; ++file) {
        WriteFile(Docs(u"%1.txt"_s.arg(file)), "heron");
    }
    FrmUpdateIndex window;
    window.UpdateAll = true;
    QSet<QString> seen;
    auto& log = Control<QPlainTextEdit>(window, "txtLog");
    QObject::connect(&log, &QPlainTextEdit::textChanged, [&] {
        for (const QString& line : log.toPlainText().split(u'\n', Qt::SkipEmptyParts)) {
            seen << line;
        }
    });
    window.exec();
    EXPECT_EQ(seen.size(), kFiles);
}

TEST_F(FrmUpdateIndexTest, TheShutDownBoxIsOfferedOnceAndMirrored) {
    FrmUpdateIndex window;
    window.EnableAutoShutDown = true;
    window.ShutDownPC = true;
    bool clicked = false;
    Watch(window, [&] {
        if (!std::exchange(clicked, true)) {
            auto& box = Control<QCheckBox>(window, "chkAutoShutDown");
            EXPECT_TRUE(box.isVisible());
            EXPECT_FALSE(window.ShutDownPC);
            box.click();
        }
    });
    window.exec();
    EXPECT_TRUE(clicked);
    EXPECT_TRUE(window.ShutDownPC);
    EXPECT_FALSE(window.EnableAutoShutDown);

    FrmUpdateIndex ticked;
    ticked.TickAutoShutDown();
    ticked.exec();
    EXPECT_TRUE(ticked.ShutDownPC);
}

} // namespace
} // namespace velmora
