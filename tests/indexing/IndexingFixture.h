// An archive with a database and a folder of documents, and a view that remembers what it was
// shown. SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Globals.h"
#include "engine/SearchJob.h"
#include "indexing/IndexedFolders.h"
#include "indexing/UpdateIndex.h"
#include "indexing/UpdateLists.h"
#include "platform/LogicalPath.h"
#include "store/ModDb.h"
#include "store/Template.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <gtest/gtest.h>

namespace velmora {

// Reads the two lists while the engine works: they are gone after the run.
class RememberingView : public UpdateView {
  public:
    void ShowStep(const QString& text) override {
        steps << text;
        lists.clear();
        const QDir folder(platform::ToMachine(GetTemporaryFolder()));
        for (const QString& name : folder.entryList({QStringLiteral("vms*")}, QDir::Files)) {
            const QByteArray list = BytesOf(folder.filePath(name));
            if (!list.isEmpty()) {
                lists << QString::fromUtf8(list);
            }
        }
        if (onStep) {
            onStep();
        }
    }
    void SetTotalProgress(int percent) override { total = percent; }
    void SetFileProgress(int percent) override { file = percent; }
    int LogLength() const override { return static_cast<int>(log.size()); }
    void EmptyLog() override { log.clear(); }
    void AppendLog(const QString& text) override { log += text; }

    // Logical path of the folder that the lists are made in, without a closing back-slash.
    static QString GetTemporaryFolder();
    // The lines of the list that holds a text; empty when there is none.
    QStringList LinesWith(const QString& text) const {
        for (const QString& list : lists) {
            if (list.contains(text)) {
                return list.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
            }
        }
        return {};
    }

    QStringList steps;
    QStringList lists;
    int total = -1;
    int file = -1;
    QString log;
    std::function<void()> onStep;
};

class IndexingTest : public testing::Test {
  protected:
    IndexingTest() {
        ThePlace().Clear();
        program->gArchivePath = ThePlace().Logical("home", QStringLiteral("archive"));
        program->gUserKey = QStringLiteral("DOMAIN.ANNA");
        QDir().mkpath(ThePlace().Path("home", QStringLiteral("archive")));
        QDir().mkpath(Docs());
        CreateDatabase(program->gArchivePath);
    }

    // Machine path of the documents folder, or of a file in it.
    static QString Docs(const QString& file = {}) {
        const QString folder = ThePlace().Path("home", QStringLiteral("Docs"));
        return file.isEmpty() ? folder : folder + u'/' + file;
    }
    static QString LogicalDocs(const QString& file = {}) { return platform::ToLogical(Docs(file)); }
    static QString IndexFile() {
        return platform::ToMachine(ArchiveIndexPath()) + QStringLiteral("/index_a.ix");
    }
    static void AddRow(const QString& folder) {
        ASSERT_TRUE(AddIdxdFolderRow(folder, platform::FileName(folder), QStringLiteral("FLDCL")));
    }
    static void AddMailRow(int client, const QString& path) {
        const RecordSetPtr rows = GetRsMailConfig();
        rows->AddNew();
        rows->Fields(u"iclient").SetValue(client);
        rows->Fields(u"smailpath").SetValue(path);
        rows->Fields(u"suser").SetValue(Program().gUserKey);
        rows->UpdateBatch();
    }

    // Names of the documents in the index that hold the word.
    static QStringList Found(const QString& word) {
        engine::SearchJob job;
        job.IndexPath = ArchiveIndexPath();
        job.AlphabetFile = platform::JoinPath(gProgramPath(), QStringLiteral("default.abc"));
        job.Request = word;
        QStringList names;
        for (const engine::SearchItem& item : job.Execute().items) {
            names << item.DisplayName;
        }
        names.sort();
        return names;
    }

    engine::IndexReport Run(UpdateMembers& members) {
        UpdateStatus status(view);
        UpdateIndex(members, view, status);
        return members.IndexReport;
    }
    engine::IndexReport RunFull() {
        UpdateMembers members;
        members.UpdateAll = true;
        return Run(members);
    }

    ScopedGlobals program;
    ScopedConnection connection;
    ScriptedReporter reporter;
    ScriptedDialogue dialogue;
    RememberingView view;
};

} // namespace velmora
