// A job for the child process of the crash tests, and its way over the command line.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/IndexJob.h"
#include "platform/LogicalPath.h"
#include "tests/sqlite/FaultVfs.h"

#include <QFile>
#include <QStringList>

namespace engine_test {

inline constexpr int kReportFile = 3; // descriptor that the child tells on

// Paths are machine paths.
struct CrashJob {
    QString indexFolder;
    QStringList roots; // folders to add with all below them
    QString listFile;  // where their list is written
    QString worker;
    QString removeFolder; // empty: none
    bool create = false;
    bool compress = false;
    bool onAShare = false;       // the child takes the index's disk for one on a server
    bool shared = false;         // other computers may open it
    sqlite_test::Fault fault;    // at 0: none; -1: none, but calls are counted
    std::int64_t killAtStep = 0; // before which change of a file's name the child dies; 0: none

    [[nodiscard]] engine::IndexJob Job() const {
        engine::IndexJob job;
        job.IndexPath = platform::ToLogical(indexFolder);
        job.WorkerProgram = worker;
        job.ActionCreate = create;
        job.ActionCompress = compress;
        job.ActionRemoveDeleted = true;
        job.WholeArchive = true;
        job.Shared = shared;
        job.Workers = 2;
        job.CommitText = 30'000;
        if (!removeFolder.isEmpty())
            job.ToRemoveFolders << platform::ToLogical(removeFolder);
        QFile list(listFile);
        if (list.open(QIODevice::WriteOnly))
            for (const QString& root : roots)
                list.write((platform::ToLogical(root) + QStringLiteral("<+>\r\n")).toUtf8());
        job.ToAddFileListName = platform::ToLogical(listFile);
        return job;
    }

    [[nodiscard]] QStringList Arguments() const {
        return {indexFolder,
                roots.join(QLatin1Char('\n')),
                listFile,
                worker,
                removeFolder,
                QString::number(create),
                QString::number(compress),
                QString::number(static_cast<int>(fault.way)),
                QString::number(fault.calls),
                QString::number(fault.at),
                QString::number(fault.seed),
                QString::number(killAtStep),
                QString::number(onAShare),
                QString::number(shared)};
    }
    // arguments: the program's name first.
    [[nodiscard]] static CrashJob FromArguments(const QStringList& arguments) {
        CrashJob job;
        job.indexFolder = arguments.value(1);
        job.roots = arguments.value(2).split(QLatin1Char('\n'));
        job.listFile = arguments.value(3);
        job.worker = arguments.value(4);
        job.removeFolder = arguments.value(5);
        job.create = arguments.value(6).toInt() != 0;
        job.compress = arguments.value(7).toInt() != 0;
        job.fault.way = static_cast<sqlite_test::Fault::Way>(arguments.value(8).toInt());
        job.fault.calls = arguments.value(9).toUInt();
        job.fault.at = arguments.value(10).toLongLong();
        job.fault.seed = arguments.value(11).toUInt();
        job.killAtStep = arguments.value(12).toLongLong();
        job.onAShare = arguments.value(13).toInt() != 0;
        job.shared = arguments.value(14).toInt() != 0;
        return job;
    }
};

} // namespace engine_test
