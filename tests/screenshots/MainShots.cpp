// The windows of mainwindow/.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FrmFileConflict.h"
#include "mainwindow/windows/FrmFileProgress.h"
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
        {u"FrmFileProgress"_s,
         [](Stage& stage, const Grab& grab) {
             FrmFileProgress window(ShellWork::Copy);
             window.show();
             platform::CarryProgress progress;
             progress.bytes = 345'000'000;
             progress.totalBytes = 912'000'000;
             progress.files = 41;
             progress.totalFiles = 120;
             progress.from = stage.Docs(u"contract.txt"_s);
             progress.to = stage.Docs(u"Letters/contract.txt"_s);
             window.ShowProgress(progress);
             grab(window);
         }},
        {u"FrmFileConflict"_s,
         [](Stage& stage, const Grab& grab) {
             platform::Conflict conflict;
             const auto side = [&](const QString& name) {
                 const QString path = stage.Docs(name);
                 return platform::CarrySide{path, platform::OwnStatusOf(path).value()};
             };
             conflict.from = side(u"contract.txt"_s);
             conflict.to = side(u"budget.xlsx"_s);
             conflict.canReplace = true;
             FrmFileConflict window(conflict);
             window.show();
             grab(window);
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
