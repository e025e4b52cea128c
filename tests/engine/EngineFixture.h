// A folder of documents and an index over it, both temporary.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/IndexJob.h"
#include "engine/SearchJob.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace engine_test {

inline QString WorkerProgram() { return QStringLiteral(VELMORA_BIN_DIR "/velmora-worker"); }

class EngineFixture : public testing::Test {
  protected:
    EngineFixture() {
        QDir(m_folder.path()).mkdir(QStringLiteral("docs"));
        QDir(m_folder.path()).mkdir(QStringLiteral("index"));
    }
    [[nodiscard]] QString Docs() const { return m_folder.filePath(QStringLiteral("docs")); }
    [[nodiscard]] QString IndexFolder() const { return m_folder.filePath(QStringLiteral("index")); }
    [[nodiscard]] QString IndexPath() const { return platform::ToLogical(IndexFolder()); }

    // name may hold folders, which are made.
    QString Write(const QString& name, const QByteArray& content) const {
        const QString path = Docs() + QLatin1Char('/') + name;
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        file.write(content);
        return path;
    }

    [[nodiscard]] engine::IndexJob Job() const {
        engine::IndexJob job;
        job.IndexPath = IndexPath();
        job.WorkerProgram = WorkerProgram();
        job.ActionRemoveDeleted = true;
        return job;
    }

    // One update over the documents' folder, or over the given lines of the add list.
    engine::IndexReport Update(engine::IndexJob job, QStringList lines = {}) const {
        if (lines.isEmpty())
            lines << platform::ToLogical(Docs()) + QStringLiteral("<+>");
        QFile list(m_folder.filePath(QStringLiteral("add.txt")));
        EXPECT_TRUE(list.open(QIODevice::WriteOnly));
        list.write(lines.join(QStringLiteral("\r\n")).toUtf8());
        list.close();
        job.ToAddFileListName = platform::ToLogical(list.fileName());
        return job.Execute();
    }
    engine::IndexReport Update() const { return Update(Job()); }

    [[nodiscard]] engine::SearchJob Request(const QString& request) const {
        engine::SearchJob job;
        job.IndexPath = IndexPath();
        job.Request = request;
        return job;
    }
    [[nodiscard]] engine::SearchResults Search(const char* request) const {
        return Request(QString::fromUtf8(request)).Execute();
    }
    // Display names of what is found, best first, parted by blanks.
    [[nodiscard]] std::string Names(const char* request) const {
        const engine::SearchResults results = Search(request);
        if (results.fault)
            return "fault: " + results.faultText.toStdString();
        QStringList names;
        for (const engine::SearchItem& item : results.items)
            names << item.DisplayName;
        return names.join(QLatin1Char(' ')).toStdString();
    }

    QTemporaryDir m_folder;
};

} // namespace engine_test
