// Times how the program's file list shows large folders, and how long its window stands still.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
//   list_folder [FILES…]      by default 10000 and 100000
// Makes the folders in a temporary place and lists them through the main window's own panes.
#include "core/Globals.h"
#include "indexing/IndexedFolders.h"
#include "mainwindow/windows/Browser.h"
#include "platform/LogicalPath.h"
#include "store/ModDb.h"
#include "store/Template.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTreeView>
#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace velmora;

namespace {

void MakeFiles(const QString& folder, int count) {
    QDir().mkpath(folder);
    for (const char* name : {"/sub a", "/sub b"}) {
        QDir().mkpath(folder + QLatin1StringView(name));
    }
    static const char* kEndings[] = {"tif", "pdf", "txt", "odt", "eml"};
    for (int at = 0; at < count; ++at) {
        // Spread like names are, not in the order of the making.
        const quint32 mixed = static_cast<quint32>(at) * 2654435761U;
        QFile file(u"%1/Document %2 %3.%4"_s.arg(folder)
                       .arg(mixed % 1000)
                       .arg(at)
                       .arg(QLatin1StringView(kEndings[at % 5])));
        if (!file.open(QIODevice::WriteOnly) || file.write("x") != 1) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file.fileName()));
            std::exit(1);
        }
    }
}

// Runs the event loop until `done`, and notes when it first had rows and its longest pause.
struct Times {
    qint64 firstRows = -1;
    qint64 complete = 0;
    qint64 longestGap = 0;
};

Times Watch(const QTreeView& list, QElapsedTimer& clock, const std::function<bool()>& done) {
    Times times;
    qint64 before = 0;
    const auto look = [&] {
        const qint64 now = clock.elapsed();
        times.longestGap = std::max(times.longestGap, now - before);
        before = now;
        if (times.firstRows < 0 && list.model()->rowCount() > 0) {
            times.firstRows = now;
        }
    };
    look();
    while (!done()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 2);
        look();
    }
    times.complete = clock.elapsed();
    for (int more = 0; more < 5; ++more) { // the painting that follows
        QCoreApplication::processEvents();
        look();
    }
    return times;
}

void Print(const char* what, int files, const Times& times) {
    std::printf("%-10s %7d files  first rows %5lld ms  complete %5lld ms  longest pause %4lld ms\n",
                what, files, static_cast<long long>(times.firstRows),
                static_cast<long long>(times.complete), static_cast<long long>(times.longestGap));
    std::fflush(stdout);
}

void Run(const QString& folder, int files) {
    Browser browser;
    browser.resize(1200, 800);
    browser.InitializeTreeView();
    browser.show();
    QCoreApplication::processEvents();
    auto& list = *browser.findChild<QTreeView*>(u"lvwFiles"_s);
    const auto loaded = [&] { return !browser.IsLoading(); };
    const auto timed = [&](const char* what, const std::function<void()>& act) {
        QElapsedTimer clock;
        clock.start();
        act();
        Print(what, files, Watch(list, clock, loaded));
    };
    timed("list", [&] { browser.SelectFolder(folder); });
    if (list.model()->rowCount() != files + 2) {
        std::fprintf(stderr, "%d rows\n", list.model()->rowCount());
        std::exit(1);
    }
    timed("by size", [&] { list.sortByColumn(1, Qt::DescendingOrder); });
    timed("by name", [&] { list.sortByColumn(0, Qt::DescendingOrder); });
    timed("reload", [&] { browser.LoadlvwFiles(browser.State().folder, true); });
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QTemporaryDir place;
    for (const char* name : {"/program", "/archive", "/docs"}) {
        QDir().mkpath(place.path() + QLatin1StringView(name));
    }
    qputenv("VELMORA_HOME", (place.path() + u"/program"_s).toUtf8());
    qputenv("VELMORA_CONFIG_HOME", (place.path() + u"/program"_s).toUtf8());
    const QApplication application(argc, argv);
    Program().gArchivePath = platform::ToLogical(place.path() + u"/archive"_s);
    Program().gUserKey = u"BENCH"_s;
    CreateDatabase(Program().gArchivePath);
    const QString docs = platform::ToLogical(place.path() + u"/docs"_s);
    if (!AddIdxdFolderRow(docs, u"docs"_s, u"FLDCL"_s)) {
        return 1;
    }
    QList<int> sizes;
    for (int at = 1; at < argc; ++at) {
        sizes << QByteArray(argv[at]).toInt();
    }
    for (const int files : sizes.isEmpty() ? QList<int>{10'000, 100'000} : sizes) {
        const QString name = QString::number(files);
        MakeFiles(place.path() + u"/docs/"_s + name, files);
        Run(platform::JoinPath(docs, name), files);
    }
    Store().gConnection.reset();
    return 0;
}
