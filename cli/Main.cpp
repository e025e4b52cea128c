// velmora: indexing and searching from the command line.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Commands.h"
#include "cli/Signals.h"
#include "core/Starter.h"

#include <QCoreApplication>
#include <cstdio>

namespace {

// Qt's own remarks, such as on a locale that is not UTF-8, help nobody here: what is read and
// written is UTF-8 in any case.
void KeepFatalOnly(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "velmora: %s\n", text.toUtf8().constData());
    }
}

} // namespace

int main(int argc, char** argv) {
    QByteArrayList words; // as given, before Qt takes any of them for its own
    for (int at = 1; at < argc; ++at) {
        words << argv[at];
    }
    velmora::IgnoreClosedPipes();
    qInstallMessageHandler(&KeepFatalOnly);
    int ownName = argc > 0 ? 1 : 0;
    const QCoreApplication application(ownName, argv);
    velmora::PrepareLocale();
    velmora::Output output;
    return velmora::RunCommandLine(words, output);
}
