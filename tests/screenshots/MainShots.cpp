// The windows of mainwindow/.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FrmMain.h"
#include "mainwindow/windows/FrmNameFile.h"
#include "platform/LogicalPath.h"
#include "tests/screenshots/Shots.h"

#include <QStatusBar>

using namespace Qt::StringLiterals;

namespace velmora {

QList<Shot> MainShots() {
    return {
        {u"FrmMain"_s,
         [](Stage& stage, const Grab& grab) {
             FrmMain window;
             window.show();
             stage.WaitUntil([&] { return window.isActiveWindow(); });
             window.FindElement(platform::ToLogical(stage.Docs(u"contract.txt"_s)));
             stage.WaitUntil([&] { return !window.statusBar()->currentMessage().isEmpty(); });
             grab(window);
             window.close();
         }},
        {u"FrmNameFile"_s,
         [](Stage& stage, const Grab& grab) {
             FrmNameFile window(platform::ToLogical(stage.Docs({})));
             window.show();
             grab(window);
         }},
    };
}

} // namespace velmora
