// The program with windows: wires the start, the dialogue and the main window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "app/NoDisplay.h"
#include "core/Globals.h"
#include "core/Starter.h"
#include "core/windows/FrmSplash.h"
#include "core/windows/HelpKey.h"
#include "core/windows/WindowDialogue.h"
#include "mainwindow/windows/FrmMain.h"
#include "resources/icons/Icons.h"
#include "store/windows/FrmArchiveSelection.h"

#include <QApplication>
#include <clocale>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class WindowHost : public StarterHost {
  public:
    void ShowSplash() override { FrmSplash(FrmSplash::Use::Start).exec(); }
    ArchiveChoice ShowArchiveSelection() override {
        FrmArchiveSelection window;
        window.exec();
        return {window.Cancelled, window.ArchivePath};
    }
    void ShowFrmMain() override {
        m_main = std::make_unique<FrmMain>();
        m_main->show();
        Program().mainCaption = [this] { return m_main->windowTitle(); };
    }

    [[nodiscard]] bool IsMainShown() const { return m_main != nullptr; }

  private:
    std::unique_ptr<FrmMain> m_main;
};

int Run(int argc, char** argv) {
    if (const auto ended = RunWithoutDisplay(argc, argv)) {
        return *ended;
    }
    QApplication application(argc, argv);
    PrepareLocale();
    QApplication::setApplicationName(u"Velmora"_s);
    QApplication::setApplicationVersion(QStringLiteral(VELMORA_VERSION));
    QApplication::setDesktopFileName(u"velmora"_s);
    QApplication::setWindowIcon(ProgramIcon());

    WindowDialogue dialogue;
    WindowReporter reporter;
    const ScopedDialogue dialogueInForce(dialogue);
    const ScopedReporter reporterInForce(reporter);
    HelpKey helpKey;
    QApplication::instance()->installEventFilter(&helpKey);

    WindowHost host;
    // The splash is the first window to close, and must not end the process with it.
    QApplication::setQuitOnLastWindowClosed(false);
    Starter::main(host, Starter::CommandLine(QApplication::arguments()));
    if (!host.IsMainShown()) {
        return 0;
    }
    QApplication::setQuitOnLastWindowClosed(true);
    const int code = QApplication::exec();
    Program().mainCaption = nullptr;
    return code;
}

} // namespace
} // namespace velmora

int main(int argc, char** argv) {
    return velmora::Run(argc, argv);
}
