// The flow of a text search, from the box to the place in the browser.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/TextSearch.h"
#include "core/Messages.h"
#include "core/windows/FrmAttesa.h"
#include "search/windows/frmSearchResult.h"
#include "tests/search/SearchFixture.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class TextSearchTest : public SearchTest {
  protected:
    TextSearchTest() {
        host.window = &window;
        host.txtRicerca = &box;
        host.CloseFilter = [this] { log << u"close filter"_s; };
        host.FindElement = [this](const QString& file) { log << file; };
        window.show();
    }
    void Run(const QString& request, const QString& folder = {}) {
        box.setText(request);
        TextSearch(host, folder, true);
    }
    // Does something to the result window once it is there.
    static void WhenOpen(std::function<void(frmSearchResult&)> act) {
        QTimer::singleShot(0, [act = std::move(act)] {
            auto* results = qobject_cast<frmSearchResult*>(QApplication::activeModalWidget());
            if (results == nullptr) {
                return WhenOpen(act);
            }
            act(*results);
        });
    }
    static int WaitWindows() {
        int count = 0;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            count += qobject_cast<FrmAttesa*>(widget) != nullptr ? 1 : 0;
        }
        return count;
    }

    QWidget window;
    QLineEdit box{&window};
    TextSearchHost host;
    QStringList log;
};

TEST_F(TextSearchTest, ResultsAreShownAndTheFileIsFoundInTheBrowser) {
    Write(u"Sub/Öl.txt"_s, "walnut");
    Index();
    dialogue.SetPointer(Pointer::Hourglass);
    bool shown = false;
    WhenOpen([&](frmSearchResult& results) {
        shown = true;
        EXPECT_EQ(WaitWindows(), 0);
        EXPECT_EQ(dialogue.CurrentPointer(), Pointer::Default);
        results.findChild<QAction*>(u"LOCATE"_s)->trigger();
    });
    Run(u"WALNUT"_s);
    EXPECT_TRUE(shown);
    EXPECT_EQ(log, QStringList({u"close filter"_s, LogicalDocs(u"Sub/Öl.txt"_s)}));
    EXPECT_EQ(box.text(), u"WALNUT"_s); // what was typed stays
    EXPECT_TRUE(dialogue.told.isEmpty());

    WhenOpen([](frmSearchResult& results) { results.close(); });
    Run(u"walnut"_s, LogicalDocs(u"Sub"_s));
    EXPECT_EQ(log.size(), 3); // closed without a target: nothing to find
}

TEST_F(TextSearchTest, NothingFoundIsSaidAndTheBoxStays) {
    Write(u"a.txt"_s, "walnut");
    Index();
    for (const QString& request : {u"oak"_s, QString()}) {
        dialogue.told.clear();
        dialogue.SetPointer(Pointer::Hourglass);
        Run(request);
        EXPECT_EQ(dialogue.told, QStringList(u"Velmora - Information|No match found!|1"_s));
        EXPECT_EQ(dialogue.CurrentPointer(), Pointer::Default);
        EXPECT_EQ(box.text(), request);
        EXPECT_EQ(WaitWindows(), 0);
    }
}

TEST_F(TextSearchTest, MistakeInTheRequestIsToldAndTheCaretStandsThere) {
    Write(u"a.txt"_s, "walnut");
    Index();
    Run(u"Caffè) and walnut"_s);
    ASSERT_EQ(dialogue.told.size(), 1);
    EXPECT_TRUE(dialogue.told.first().contains(u"6"_s)) << dialogue.told.first().toStdString();
    EXPECT_TRUE(dialogue.told.first().startsWith(u"Velmora - Unable to continue|"_s));
    EXPECT_EQ(box.cursorPosition(), 5);
    Run(u"walnut and"_s);
    EXPECT_EQ(box.cursorPosition(), 10);
    EXPECT_EQ(box.text(), u"walnut and"_s);
}

TEST_F(TextSearchTest, MissingIndexIsToldAndABrokenOneReported) {
    Run(u"walnut"_s);
    EXPECT_EQ(dialogue.told.size(), 1);
    EXPECT_TRUE(reporter.reports.isEmpty());
    WriteFile(platform::ToMachine(program->gArchivePath + u"\\indexes\\DOMAIN.ANNA\\index_a.ix"_s),
              QByteArray(9000, 'x'));
    int tries = 0;
    reporter.Next([&] { return ++tries == 1; }); // Retry once, then Cancel
    Run(u"walnut"_s);
    EXPECT_EQ(reporter.reports.size(), 2);
    EXPECT_EQ(dialogue.told.size(), 1); // nothing more is said
}

} // namespace
} // namespace velmora
