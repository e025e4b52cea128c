// An archive with rows, real folders, and a person whose answers are scripted.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Messages.h"
#include "mainwindow/FileOperations.h"
#include "platform/Files.h"
#include "platform/Names.h"
#include "store/ModDb.h"
#include "store/Template.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"
#include "tests/platform/ScriptedObserver.h"

#include <gtest/gtest.h>

namespace velmora {

// A ShellView that answers from the script of its observer.
class ScriptedShell : public ShellView {
  public:
    void Begin(ShellWork work) override { works.push_back(work); }
    void ShowProgress(const platform::CarryProgress& progress) override {
        (void)script.ShowProgress(progress);
    }
    bool IsCancelled() const override { return cancelled; }
    platform::ConflictAnswer AskConflict(const platform::Conflict& conflict) override {
        return script.AskConflict(conflict);
    }
    platform::ProblemAnswer AskProblem(const platform::Problem& problem) override {
        return script.AskProblem(problem);
    }
    void End() override { ++ended; }

    testing_support::ScriptedObserver script;
    std::vector<ShellWork> works;
    std::size_t ended = 0;
    bool cancelled = false;
};

class MemoryClipboard : public FileClipboard {
  public:
    FileList Read(QStringList* foreign = nullptr) const override {
        if (foreign) {
            *foreign = elsewhere;
        }
        return list;
    }
    void Write(const FileList& files) override { list = files; }

    FileList list;
    QStringList elsewhere;
};

class FileOperationsTest : public testing::Test {
  protected:
    FileOperationsTest() {
        ThePlace().Clear();
        qputenv("XDG_DATA_HOME", ThePlace().Path("home", QStringLiteral("data")).toUtf8());
        program->gArchivePath = ThePlace().Logical("home", QStringLiteral("archive"));
        program->gUserKey = QStringLiteral("DOMAIN.ANNA");
        QDir().mkpath(ThePlace().Path("home", QStringLiteral("archive")));
        QDir().mkpath(Docs(QStringLiteral("Sub/Deep")));
        QDir().mkpath(Docs(QStringLiteral("Other")));
        CreateDatabase(program->gArchivePath);
    }

    static QString Docs(const QString& file = {}) {
        const QString folder = ThePlace().Path("home", QStringLiteral("Docs"));
        return file.isEmpty() ? folder : folder + u'/' + file;
    }
    static QString Logical(const QString& file = {}) { return platform::ToLogical(Docs(file)); }

    // A document with an OCR row, annotations and a field.
    static void AddDocument(const QString& file, const QByteArray& bytes = "content") {
        WriteFile(Docs(file), bytes);
        const QString path = platform::Capitals(Logical(file));
        for (const char* table : {"tblocrfiles", "tblannotationfiles", "tbldocfields"}) {
            const RecordSetPtr rows =
                GetRs(QStringLiteral("SELECT * FROM %1 WHERE 1=0").arg(QLatin1StringView(table)));
            rows->AddNew();
            rows->Fields(u"spath").SetValue(platform::ParentFolder(path));
            rows->Fields(u"sfilename").SetValue(platform::FileName(path));
            rows->Fields(u"suser").SetValue(Program().gUserKey);
            rows->UpdateBatch();
        }
    }
    // How many of the three tables know the document there.
    static int Rows(const QString& file) {
        const QString path = Logical(file);
        int found = 0;
        for (const char* table : {"tblocrfiles", "tblannotationfiles", "tbldocfields"}) {
            const RecordSetPtr rows =
                GetRs(QStringLiteral("SELECT * FROM %1 WHERE spath=? AND sfilename=?")
                          .arg(QLatin1StringView(table)),
                      {platform::ParentFolder(path), platform::FileName(path)});
            found += rows->EOF_() ? 0 : 1;
        }
        return found;
    }
    QString Told(int text, int title, Icon icon = Icon::Exclamation) const {
        return GetMessage(title) + u'|' + GetMessage(text) + u'|' +
               QString::number(static_cast<int>(icon));
    }

    ScopedGlobals program;
    ScopedConnection connection;
    ScriptedReporter reporter;
    ScriptedDialogue dialogue;
    ScriptedShell shell;
    MemoryClipboard clipboard;
    FileOperations operations{shell, clipboard};
};

} // namespace velmora
