// The windows of indexing/.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/windows/FrmGestFolders.h"
#include "indexing/windows/FrmUpdateIndex.h"
#include "tests/screenshots/Shots.h"

#include <QPushButton>

using namespace Qt::StringLiterals;

namespace velmora {

QList<Shot> IndexingShots() {
    return {
        {u"FrmGestFolders"_s, TakePlain<FrmGestFolders>},
        {u"FrmUpdateIndex"_s,
         [](Stage&, const Grab& grab) {
             FrmUpdateIndex window;
             window.show(); // its timer starts the run later than the picture is taken
             grab(window);
         }},
        {u"FrmUpdateIndex-problems"_s,
         [](Stage& stage, const Grab& grab) {
             FrmUpdateIndex window;
             window.ForceRecreate = window.UpdateAll = true;
             window.show();
             const auto* close = window.findChild<QPushButton*>(u"cmdClose"_s);
             stage.WaitUntil([&] { return close->isVisible(); });
             grab(window);
         }},
    };
}

} // namespace velmora
