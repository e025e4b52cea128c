// The windows of search/.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/FrmSearchBuilder.h"
#include "search/windows/frmSearchResult.h"
#include "tests/screenshots/Shots.h"

#include <QAction>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

void TakeResults(Stage& stage, const QString& request, const Grab& grab) {
    frmSearchResult window(stage.Search(request), {}, request);
    window.show();
    stage.WaitUntil([&] { return window.findChild<QAction*>(u"NextHit"_s)->isEnabled(); });
    window.findChild<QAction*>(u"NextHit"_s)->trigger();
    grab(window);
}

} // namespace

QList<Shot> SearchShots() {
    return {
        {u"FrmSearchBuilder"_s,
         [](Stage&, const Grab& grab) {
             QLineEdit box;
             FrmSearchBuilder window(box, nullptr);
             window.findChild<QLineEdit*>(u"txtSearch_0"_s)->setText(u"rent contract"_s);
             window.show();
             grab(window);
         }},
        {u"frmSearchResult"_s,
         [](Stage& stage, const Grab& grab) { TakeResults(stage, u"rent*"_s, grab); }},
    };
}

} // namespace velmora
