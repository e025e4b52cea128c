// Answers what needs no display.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "app/NoDisplay.h"

#include "core/Globals.h"
#include "core/Messages.h"
#include "mainwindow/MessageIds.h"
#include "platform/User.h"

#include <cstdio>
#include <cstring>

namespace velmora {

namespace {

void Print(std::FILE* stream, const QString& text) {
    std::fprintf(stream, "%s\n", text.toUtf8().constData());
}

// Qt takes its platform from the environment or from an option of its own.
bool HasDisplay(int argc, char** argv) {
    for (int at = 1; at < argc; ++at) {
        if (std::strcmp(argv[at], "-platform") == 0 || std::strcmp(argv[at], "-display") == 0) {
            return true;
        }
    }
    for (const char* variable : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        if (!qEnvironmentVariableIsEmpty(variable)) {
            return true;
        }
    }
    return false;
}

} // namespace

std::optional<int> RunWithoutDisplay(int argc, char** argv) {
    // The language of the system until the start chooses.
    Program().gLocaleId = static_cast<qint32>(platform::UserLocaleId());
    for (int at = 1; at < argc; ++at) {
        if (std::strcmp(argv[at], "--help") == 0) {
            Print(stdout, GetMessage(kHelp));
            return 0;
        }
        if (std::strcmp(argv[at], "--version") == 0) {
            std::puts("Velmora " VELMORA_VERSION);
            return 0;
        }
    }
    if (HasDisplay(argc, argv)) {
        return std::nullopt;
    }
    Print(stderr, QStringLiteral("PrjVelmora: ") + GetMessage(kNoDisplay));
    return 1;
}

} // namespace velmora
