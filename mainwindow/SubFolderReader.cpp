// Looks into folders for their sub-folders on other threads.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/SubFolderReader.h"

#include "mainwindow/FileOrder.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"

#include <QElapsedTimer>

namespace velmora {

namespace {

constexpr int kThreads = 4;
constexpr int kOneFolderMs = 200;
constexpr int kAllFoldersMs = 10'000;
constexpr int kPortionMs = 60;

SubFolders ReadSubFolders(const QString& path, const BackgroundTask& task) {
    SubFolders folders;
    folders.machinePath = platform::ToMachine(path);
    folders.exists = !folders.machinePath.isEmpty() && platform::IsFolder(folders.machinePath);
    if (folders.exists) {
        folders.error = platform::VisitSubFolders(folders.machinePath, [&](const QString& name) {
            if (!name.isEmpty() && !name.startsWith(u'.')) {
                folders.names << name;
            }
            return !task.IsCancelled();
        });
        SortNames(folders.names);
    }
    return folders;
}

} // namespace

bool HasSubFolders(const QString& path, int milliseconds) {
    QElapsedTimer clock;
    clock.start();
    bool found = false;
    (void)platform::VisitSubFolders(path, [&](const QString& name) {
        found = (!name.isEmpty() && !name.startsWith(u'.')) || clock.elapsed() > milliseconds;
        return !found;
    });
    return found;
}

SubFolderReader::SubFolderReader(ReadReceiver read, PlusReceiver plus)
    : m_read(std::move(read)), m_plus(std::move(plus)), m_background(kThreads) {}

void SubFolderReader::Read(quint64 node, const QString& path) {
    std::erase_if(m_tasks, [](const auto& task) { return task.expired(); });
    m_tasks.push_back(m_background.Run([this, node, path](BackgroundTask& task) {
        SubFolders folders = ReadSubFolders(path, task);
        folders.node = node;
        task.Post([this, folders] { m_read(folders); });
    }));
}

void SubFolderReader::FindPlus(QList<PlusQuestion> questions) {
    const auto work = [this, questions = std::move(questions)](BackgroundTask& task) {
        QElapsedTimer all;
        QElapsedTimer portion;
        all.start();
        portion.start();
        QList<PlusAnswer> answers;
        const auto post = [&] {
            task.Post([this, answers] { m_plus(answers); });
            answers.clear();
            portion.restart();
        };
        for (const PlusQuestion& question : questions) {
            if (task.IsCancelled()) {
                return;
            }
            PlusAnswer answer{question.node, {}, true};
            if (all.elapsed() < kAllFoldersMs) {
                answer.machinePath = platform::ToMachine(question.path);
                answer.plus = !answer.machinePath.isEmpty() &&
                              HasSubFolders(answer.machinePath, kOneFolderMs);
            }
            answers << answer;
            if (portion.elapsed() >= kPortionMs) {
                post();
            }
        }
        post();
    };
    m_tasks.push_back(m_background.Run(work));
}

void SubFolderReader::Cancel() {
    for (const auto& task : m_tasks) {
        if (const BackgroundTaskPtr running = task.lock()) {
            running->Cancel();
        }
    }
    m_tasks.clear();
}

} // namespace velmora
