// Updates: after anything that happens to the files, or to the program, the index equals a fresh one.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "EngineFixture.h"
#include "Zip.h"

#include "engine/FileConverter.h"
#include "engine/Ledger.h"
#include "engine/WordList.h"

#include <fcntl.h>
#include <unistd.h>

#include <map>
#include <random>

namespace engine_test {
namespace {

class IndexUpdate : public EngineFixture {
  protected:
    // Everything that can be asked of an index: its words with their counts, and for each word
    // the documents with their hits.
    using Content = std::map<std::string, std::map<std::string, std::vector<std::uint32_t>>>;
    [[nodiscard]] static Content ContentOf(const QString& indexPath) {
        engine::WordListBuilder words;
        EXPECT_TRUE(words.OpenIndex(indexPath, {}));
        words.ListPrefix(QString(), 1'000'000);
        Content content;
        for (int i = 0; i < words.Count(); ++i) {
            engine::SearchJob job;
            job.IndexPath = indexPath;
            job.Request = QLatin1Char('"') + words.Word(i).word + QLatin1Char('"');
            job.MaxFiles = 100'000;
            auto& documents = content[words.Word(i).word.toStdString()];
            for (const engine::SearchItem& item : job.Execute().items)
                documents[item.Spelling.toStdString()] = item.Hits;
            EXPECT_EQ(documents.size(), static_cast<std::size_t>(words.Word(i).documents))
                << words.Word(i).word.toStdString();
        }
        return content;
    }
    void ExpectLikeFresh() const {
        engine::IndexJob job = Job();
        job.IndexPath += QStringLiteral("\\fresh");
        ASSERT_FALSE(Update(job).fault);
        EXPECT_EQ(ContentOf(IndexPath()), ContentOf(job.IndexPath));
        QDir(IndexFolder() + QStringLiteral("/fresh")).removeRecursively();
    }
    // Makes the time of the last change differ for certain.
    static void Age(const QString& path) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.setFileTime(QDateTime::currentDateTime().addSecs(-5), QFileDevice::FileModificationTime);
    }
};

TEST_F(IndexUpdate, FollowsRandomChanges) {
    std::mt19937 random(7);
    const auto pick = [&](int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); };
    const auto text = [&] {
        QByteArray words;
        for (int i = pick(40) + 1; i > 0; --i)
            words += "word" + QByteArray::number(pick(60)) + (pick(9) == 0 ? ".\n" : " ");
        return words;
    };
    for (int round = 0; round < 12; ++round) {
        for (int i = 0; i < 15; ++i) {
            const QString name = QStringLiteral("f%1/d%2").arg(pick(3)).arg(pick(12));
            switch (pick(4)) {
            case 0:
                QFile::remove(Docs() + QLatin1Char('/') + name + QStringLiteral(".txt"));
                break;
            case 1:
                Write(name + QStringLiteral(".zip"), Zip({{"a.txt", text()}, {"b/c.html", "<p>" + text()}}));
                break;
            default:
                Write(name + QStringLiteral(".txt"), text());
            }
        }
        if (round == 6)
            QDir(Docs() + QStringLiteral("/f1")).removeRecursively();
        engine::IndexJob job = Job();
        job.ActionCompress = round % 3 == 0;
        const engine::IndexReport report = Update(job);
        ASSERT_FALSE(report.fault) << report.faultText.toStdString();
        ASSERT_TRUE(report.problems.empty()) << report.problems.front().file.toStdString();
        const engine::IndexReport again = Update();
        EXPECT_EQ(again.added + again.changed + again.removed, 0U);
        ExpectLikeFresh();
    }
}

TEST_F(IndexUpdate, NamesAreKeptAsTheyAreSpelled) {
    Write(QStringLiteral("Upper.TXT"), "alpha one");
    Write(QStringLiteral("upper.txt"), "alpha alpha two");
    Write(QStringLiteral("a>b|c \\ d'e.txt"), "alpha three");
    const QByteArray odd = (Docs() + QStringLiteral("/caf")).toLocal8Bit() + "\xE9.txt";
    QFile::copy(Docs() + QStringLiteral("/upper.txt"), Docs() + QStringLiteral("/x"));
    ASSERT_EQ(rename((Docs() + QStringLiteral("/x")).toLocal8Bit().constData(), odd.constData()), 0);
    Write(QStringLiteral("no ending"), "alpha four");
    Write(QStringLiteral("table.csv"), "alpha excluded");
    engine::IndexJob job = Job();
    job.IncludeFilters = QStringLiteral("*.* *.ocr");
    job.ExcludeFilters = QStringLiteral("*.csv *.db");
    ASSERT_TRUE(Update(job).problems.empty());
    const engine::SearchResults results = Search("alpha");
    ASSERT_EQ(results.items.size(), 5U);
    for (const engine::SearchItem& item : results.items) {
        EXPECT_TRUE(platform::Exists(item.Spelling)) << item.Spelling.toStdString();
        EXPECT_EQ(item.FileName, platform::Capitals(item.FileName));
        EXPECT_FALSE(item.FileName.contains(QLatin1Char('>')));
    }
    // Both spellings are there, each with its own hits.
    EXPECT_EQ(Names("alpha and one"), "Upper.TXT");
    // One of the two leaves, the other stays.
    QFile::remove(Docs() + QStringLiteral("/upper.txt"));
    EXPECT_EQ(Update(job).removed, 1U);
    EXPECT_EQ(Names("one or two"), "caf\xEF\x9F\xA9.txt Upper.TXT");
    unlink(odd.constData()); // the temporary folder cannot remove such a name by itself
}

TEST_F(IndexUpdate, MembersOfContainersAreDocuments) {
    const QByteArray inner = Zip({{"deep.txt", "needle deep"}, {"more.txt", "hay"}});
    Write(QStringLiteral("Outer.zip"), Zip({{"dir/first.txt", "needle first"}, {"in.zip", inner}}));
    Write(QStringLiteral("mail.eml"),
          "From: a@b.example\r\nSubject: about needles\r\nMIME-Version: 1.0\r\n"
          "Content-Type: multipart/mixed; boundary=x\r\n\r\n--x\r\n\r\nneedle body\r\n--x\r\n"
          "Content-Disposition: attachment; filename=\"note.txt\"\r\n\r\nneedle attached\r\n--x--\r\n");
    ASSERT_TRUE(Update().problems.empty());
    std::map<std::string, engine::SearchItem> found;
    for (const engine::SearchItem& item : Search("needle").items)
        found[item.DisplayName.toStdString()] = item;
    ASSERT_EQ(found.size(), 4U);
    EXPECT_TRUE(found["first.txt"].FileName.endsWith(QStringLiteral("\\DOCS\\OUTER.ZIP>0|DIR\\FIRST.TXT")));
    EXPECT_TRUE(found["deep.txt"].FileName.endsWith(QStringLiteral("\\DOCS\\OUTER.ZIP>1|IN.ZIP>0|DEEP.TXT")));
    EXPECT_TRUE(found["deep.txt"].Spelling.endsWith(QStringLiteral("/docs/Outer.zip>1|in.zip>0|deep.txt")));
    EXPECT_TRUE(found["note.txt"].FileName.endsWith(QStringLiteral("\\DOCS\\MAIL.EML>{0:0}|NOTE.TXT")));
    EXPECT_TRUE(found["mail.eml"].FileName.endsWith(QStringLiteral("\\DOCS\\MAIL.EML")));
    // A member's page comes out of its container.
    engine::FileConverter converter;
    converter.IndexPath = IndexPath();
    converter.WorkerProgram = WorkerProgram();
    for (const char* name : {"deep.txt", "note.txt"}) {
        converter.InputFile = found[name].FileName;
        converter.Spelling = found[name].Spelling;
        converter.Hits = found[name].Hits;
        converter.BeforeHit = QStringLiteral("[%%ThisHit%%:");
        converter.AfterHit = QStringLiteral("]");
        const engine::ConvertedPage page = converter.Execute();
        EXPECT_EQ(page.origin, engine::PageOrigin::Document) << page.reason.toStdString();
        EXPECT_TRUE(page.html.contains(QStringLiteral("[1:needle]"))) << page.html.toStdString();
    }
    // With the file its members go.
    QFile::remove(Docs() + QStringLiteral("/Outer.zip"));
    Update();
    EXPECT_EQ(Search("needle").items.size(), 2U);
    ExpectLikeFresh();
}

TEST_F(IndexUpdate, AFileThatIsListedTwiceIsOneDocument) {
    const QString file = platform::ToLogical(Write(QStringLiteral("in/twice.txt"), "once"));
    const QString folder = platform::ToLogical(Docs()) + QStringLiteral("<+>");
    for (const QStringList& lines : {QStringList{file, folder, file}, {folder, file}}) {
        EXPECT_EQ(Update(Job(), lines).documents, 1U);
        EXPECT_EQ(Search("once").found, 1U);
        Age(Docs() + QStringLiteral("/in/twice.txt"));
    }
}

TEST_F(IndexUpdate, WhatIsAwayIsNotGone) {
    Write(QStringLiteral("share/a.txt"), "away text");
    Write(QStringLiteral("local.txt"), "local text");
    const QString share = Docs() + QStringLiteral("/share");
    const QStringList roots{platform::ToLogical(share) + QStringLiteral("<+>"),
                            platform::ToLogical(Docs() + QStringLiteral("/local.txt"))};
    Update(Job(), roots);
    // The listed folder cannot be found at all: it is told, and its documents stay.
    ASSERT_TRUE(QDir().rename(share, m_folder.filePath(QStringLiteral("elsewhere"))));
    const engine::IndexReport report = Update(Job(), roots);
    EXPECT_EQ(report.removed, 0U);
    ASSERT_EQ(report.problems.size(), 1U);
    EXPECT_EQ(report.problems.front().file, share);
    EXPECT_EQ(Names("text"), "local.txt a.txt");
    // Back again, and emptied by hand on the same disk: now the documents are gone.
    ASSERT_TRUE(QDir().rename(m_folder.filePath(QStringLiteral("elsewhere")), share));
    QFile::remove(share + QStringLiteral("/a.txt"));
    EXPECT_EQ(Update(Job(), roots).removed, 1U);
    // A folder taken out of the list takes its documents along, be it there or not.
    Write(QStringLiteral("share/b.txt"), "more text");
    Update(Job(), roots);
    QDir(share).removeRecursively();
    engine::IndexJob job = Job();
    job.ToRemoveFolders << platform::ToLogical(share);
    EXPECT_EQ(Update(job, {roots.last()}).removed, 1U);
    EXPECT_EQ(Names("text"), "local.txt");
}

TEST_F(IndexUpdate, OneBadDocumentCostsNoOther) {
    for (const char* name : {"crash.txt", "crash-late.txt", "refuse.txt", "hang.txt", "good1.txt",
                             "good2.txt", "good3.txt", "good4.txt"})
        Write(QString::fromLatin1(name), "common words");
    Write(QStringLiteral("broken.docx"), "PK\x03\x04 but no archive");
    Write(QStringLiteral("picture.png"), "\x89PNG\r\n\x1A\n....");
    engine::IndexJob job = Job();
    job.WorkerProgram = QStringLiteral(VELMORA_TEST_BIN "/engine_fake_worker");
    job.TimeLimit = 1;
    const engine::IndexReport report = Update(job);
    ASSERT_FALSE(report.fault) << report.faultText.toStdString();
    std::map<std::string, std::string> reasons;
    for (const engine::Problem& problem : report.problems)
        reasons[platform::FileName(platform::ToLogical(problem.file)).toStdString()] = problem.reason.toStdString();
    EXPECT_EQ(reasons.size(), 5U);
    EXPECT_NE(reasons["crash.txt"].find("crashed"), std::string::npos);
    EXPECT_EQ(reasons["hang.txt"], "the reader took too long");
    EXPECT_EQ(reasons["refuse.txt"], "the reader does not like it");
    EXPECT_NE(reasons["broken.docx"], "");
    EXPECT_EQ(Search("common").items.size(), 4U);
    // What could not be read is found by its name, and listed later too.
    EXPECT_EQ(Names("hang"), "hang.txt");
    EXPECT_EQ(Names("picture"), "picture.png");
    EXPECT_EQ(engine::ListProblems(IndexPath(), {}).size(), engine::ListProblems(IndexPath(), {}, platform::ToLogical(Docs())).size());
    EXPECT_GE(engine::ListProblems(IndexPath(), {}).size(), 4U);
    // It is not tried again until it changes.
    EXPECT_EQ(Update().unchanged, 10U);
    Age(Docs() + QStringLiteral("/hang.txt"));
    EXPECT_EQ(Update().changed, 1U);
    EXPECT_EQ(Search("common").items.size(), 5U);
}

// Stops the job as soon as it has read something.
class Stopper final : public engine::StatusHandler {
  public:
    void ReceiveProgress(int percent) override { m_read = m_read || percent > 3; }
    void ReceiveStep(int step) override { steps.push_back(step); }
    void ReceiveFileInfo(const QString&, int) override {}
    bool CheckForAbort() override { return m_read; }
    std::vector<int> steps;

  private:
    bool m_read = false;
};

TEST_F(IndexUpdate, AStoppedRunIsFinishedByTheNext) {
    for (int i = 0; i < 3000; ++i)
        Write(QStringLiteral("d%1.txt").arg(i), "stop " + QByteArray::number(i) + QByteArray(2000, 'x'));
    Stopper stopper;
    engine::IndexJob job = Job();
    job.StatusHandler = &stopper;
    const engine::IndexReport report = Update(job);
    EXPECT_TRUE(report.aborted);
    EXPECT_LT(report.added, 3000U);
    EXPECT_EQ(Search("stop").found, report.added);
    EXPECT_EQ(stopper.steps.front(), 1);
    const engine::IndexReport rest = Update();
    EXPECT_EQ(rest.added + report.added, 3000U);
    EXPECT_EQ(Search("stop").found, 3000U);
    EXPECT_EQ(Search("stop").items.size(), 300U);
}

TEST_F(IndexUpdate, TellsWhatIsWrongWithTheIndex) {
    const auto fault = [](const engine::IndexReport& report) {
        return report.fault.value_or(engine::IndexFault::Request);
    };
    EXPECT_EQ(Search("any").fault, engine::IndexFault::Missing);
    Write(QStringLiteral("a.txt"), "alpha");
    ASSERT_FALSE(Update().fault);
    const QString file = IndexFolder() + QStringLiteral("/index_a.ix");
    {
        QFile lock(file + QStringLiteral(".lock"));
        ASSERT_TRUE(lock.open(QIODevice::ReadWrite));
        struct flock whole {};
        whole.l_type = F_WRLCK;
        ASSERT_EQ(fcntl(lock.handle(), F_OFD_SETLK, &whole), 0);
        EXPECT_EQ(fault(Update()), engine::IndexFault::Busy);
        EXPECT_EQ(Names("alpha"), "a.txt"); // searching goes on
    }
    // Another alphabet calls for a rebuild, which then works with it.
    engine::IndexJob job = Job();
    job.AlphabetFile = platform::ToLogical(Write(QStringLiteral("default.abc"), "letter U+005F # _\n"));
    EXPECT_EQ(fault(Update(job)), engine::IndexFault::Unsuitable);
    Write(QStringLiteral("b.txt"), "snake_case alpha");
    job.ActionCreate = true;
    ASSERT_FALSE(Update(job).fault);
    engine::SearchJob search = Request(QStringLiteral("snake_case"));
    search.AlphabetFile = job.AlphabetFile;
    EXPECT_EQ(search.Execute().items.front().Hits, std::vector<std::uint32_t>{1});
    Write(QStringLiteral("bad.abc"), "letter U+0041\nvowel U+0042\n");
    job.AlphabetFile = platform::ToLogical(Docs() + QStringLiteral("/bad.abc"));
    EXPECT_TRUE(Update(job).faultText.contains(QStringLiteral("line 2")));
    engine::IndexJob rebuild = Job();
    rebuild.ActionCreate = true;
    ASSERT_FALSE(Update(rebuild).fault);
    EXPECT_EQ(Search("alpha").items.size(), 2U);
    // A worker program that is not there is no fault of the documents.
    job = Job();
    job.WorkerProgram = QStringLiteral("/nowhere/velmora-worker");
    Write(QStringLiteral("c.txt"), "gamma");
    EXPECT_EQ(fault(Update(job)), engine::IndexFault::Other);
    Update();
    EXPECT_EQ(Names("gamma"), "c.txt");
}

} // namespace
} // namespace engine_test
