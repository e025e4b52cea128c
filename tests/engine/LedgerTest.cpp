// What the index tells of its documents, and that what was not read gets another chance.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "EngineFixture.h"
#include "IndexAudit.h"
#include "Zip.h"

#include "engine/Ledger.h"
#include "engine/readers/Reader.h"
#include "sqlite/Database.h"
#include "sqlite/Statement.h"

#include <algorithm>

namespace engine_test {
namespace {

using engine::FolderCounts;
using engine::ReadState;

const QByteArray kBroken = "PK\x03\x04 but no archive";

class Ledger : public EngineFixture {
  protected:
    [[nodiscard]] std::string IndexFile() const {
        return IndexFolder().toStdString() + '/' + engine::kIndexFileName;
    }
    // The counts as "folder: state=number …", folders as seen from the documents' folder.
    [[nodiscard]] std::vector<std::string> Counts(const QString& folder = {}) const {
        std::vector<std::string> lines;
        for (const FolderCounts& each : engine::CountDocuments(IndexPath(), {}, folder)) {
            std::string line = each.folder.mid(Docs().size()).toStdString() + ":";
            for (std::size_t state = 0; state < engine::kReadStates; ++state)
                if (each.documents[state] != 0)
                    line +=
                        " " + std::to_string(state) + "=" + std::to_string(each.documents[state]);
            lines.push_back(line);
        }
        return lines;
    }
    [[nodiscard]] QString Below(const char* folder) const {
        return platform::ToLogical(Docs() + QLatin1Char('/') + QString::fromUtf8(folder));
    }
    [[nodiscard]] engine::IndexJob RetryJob() const {
        engine::IndexJob job = Job();
        job.ActionRetry = true;
        return job;
    }
    [[nodiscard]] static engine::IndexJob WithFakeWorker(engine::IndexJob job) {
        job.WorkerProgram = QStringLiteral(VELMORA_TEST_BIN "/engine_fake_worker");
        job.TimeLimit = 1;
        return job;
    }
};

using Lines = std::vector<std::string>;

TEST_F(Ledger, CountsTheDocumentsOfEachFolderByState) {
    Write(QStringLiteral("b.txt"), "beta");
    Write(QStringLiteral("Sub/a.txt"), "alpha");
    Write(QStringLiteral("Sub/app.exe"), QByteArray("MZ\0\1\2\3\0\0\xFF\xFE", 10));
    Write(QStringLiteral("Sub/broken.docx"), kBroken);
    const QByteArray inner = Zip({{"deep.txt", "deep"}, {"bad.xlsx", kBroken}});
    Write(QStringLiteral("Sub/z.zip"), Zip({{"good.txt", "good"}, {"in.zip", inner}}));
    Write(QStringLiteral("Sub/Deeper/c.txt"), "gamma");
    Write(QStringLiteral("Subway/d.txt"), "delta");
    Write(QStringLiteral("odd>a|b/bad.docx"), kBroken);
    ASSERT_FALSE(Update().fault);
    // z.zip and in.zip, three members, b.txt: the zip's members count with its folder.
    const Lines sub{"/Sub: 0=5 3=2 5=1", "/Sub/Deeper: 0=1"};
    EXPECT_EQ(Counts(), (Lines{": 0=1", "/odd>a|b: 3=1", sub[0], sub[1], "/Subway: 0=1"}));
    EXPECT_EQ(Counts(Below("SUB")), sub) << "neither the folder above nor one of a longer name";
    EXPECT_EQ(Counts(Below("sub") + QLatin1Char('\\')), sub);
    EXPECT_EQ(Counts(Below("nowhere")), Lines{});
    EXPECT_EQ(Counts(Below("odd>a|b")), Lines{"/odd>a|b: 3=1"});
    EXPECT_EQ(engine::ListProblems(IndexPath(), {}, Below("odd>a|b")).size(), 1U);

    // The list and the counts tell the same.
    const auto problems = engine::ListProblems(IndexPath(), {});
    for (std::size_t state = 1; state < engine::kReadStates; ++state) {
        if (state == static_cast<std::size_t>(ReadState::NameOnly))
            continue;
        std::size_t counted = 0;
        for (const FolderCounts& each : engine::CountDocuments(IndexPath(), {}))
            counted += each.documents[state];
        EXPECT_EQ(counted, static_cast<std::size_t>(std::count_if(
                               problems.begin(), problems.end(),
                               [&](const auto& each) {
                                   return static_cast<std::size_t>(each.state) == state;
                               })))
            << state;
    }
    // What leaves is not counted any more; a folder without documents is not told of.
    engine::IndexJob job = Job();
    job.ToRemoveFolders << Below("odd>a|b");
    EXPECT_EQ(Update(job, {Below("b.txt")}).removed, 1U);
    EXPECT_EQ(Counts(Below("odd>a|b")), Lines{});

    QDir(IndexFolder()).removeRecursively();
    EXPECT_THROW((void)engine::CountDocuments(IndexPath(), {}), engine::IndexError);
}

TEST_F(Ledger, OnDemandWhatWasNotReadIsTriedAgain) {
    for (const char* name : {"crash.txt", "hang.txt", "sub/refuse.txt", "good.txt"})
        Write(QString::fromLatin1(name), "common words");
    Write(QStringLiteral("picture.png"), "\x89PNG\r\n\x1A\n....");
    Write(QStringLiteral("good.zip"),
          Zip({{"one.txt", "common"}, {"app.exe", QByteArray("MZ\0\1\2\0\0\0", 8)}}));
    Write(QStringLiteral("holds.zip"), Zip({{"two.txt", "common"}, {"bad.docx", kBroken}}));
    ASSERT_EQ(Update(WithFakeWorker(Job())).added, 7U);
    EXPECT_EQ(Search("common").items.size(), 3U);
    EXPECT_EQ(Update().unchanged, 7U);
    EXPECT_EQ(Update(RetryJob(), {Below("sub/refuse.txt")}).changed, 1U) << "only what is named";

    const engine::IndexReport report = Update(RetryJob());
    EXPECT_EQ(report.changed, 3U) << "crash, hang, and the zip that holds a broken document";
    EXPECT_EQ(report.unchanged, 4U);
    ASSERT_EQ(report.problems.size(), 1U);
    EXPECT_TRUE(report.problems.front().file.endsWith(QStringLiteral("holds.zip>1|bad.docx")));
    EXPECT_EQ(Search("common").items.size(), 6U);
    EXPECT_EQ(Update(RetryJob()).changed, 1U);
    EXPECT_EQ(Update().unchanged, 7U);
    EXPECT_EQ(FaultsIn(IndexFolder()), "");
}

// One that comes to nothing takes nothing away.
TEST_F(Ledger, ARetryThatFailsKeepsWhatWasRead) {
    Write(QStringLiteral("crash.zip"), Zip({{"two.txt", "common"}, {"bad.docx", kBroken}}));
    ASSERT_EQ(Update().added, 1U);
    const auto before = ContentOf(IndexFolder());
    const engine::IndexReport report = Update(WithFakeWorker(RetryJob()));
    ASSERT_EQ(report.problems.size(), 1U);
    EXPECT_TRUE(report.problems.front().reason.contains(QStringLiteral("crashed")));
    EXPECT_EQ(Difference(ContentOf(IndexFolder()), before), "");
    EXPECT_EQ(Update().unchanged, 1U);
    // A file that has changed is another one: of that, nothing old may stay.
    Write(QStringLiteral("crash.zip"), Zip({{"other.txt", "common"}}));
    EXPECT_EQ(Update(WithFakeWorker(RetryJob())).changed, 1U);
    EXPECT_EQ(Names("common"), "");
    EXPECT_EQ(FaultsIn(IndexFolder()), "");
}

// The index as an older version of the program left it, which had no reader for one of the members.
TEST_F(Ledger, NewReadersTryWhatOlderOnesCouldNotRead) {
    Write(QStringLiteral("holds.zip"), Zip({{"one.txt", "common"}, {"old.txt", "common"}}));
    Write(QStringLiteral("fine.zip"), Zip({{"two.txt", "common"}}));
    Write(QStringLiteral("good.txt"), "common");
    Write(QStringLiteral("picture.png"), "\x89PNG\r\n\x1A\n....");
    Write(QStringLiteral("hang.docx"), "common");
    const auto makeOld = [&] {
        sqlite::Database index(IndexFile());
        index.Exec("UPDATE document SET readers = readers - 1");
        index.Exec("UPDATE document SET state = 4, reason = 'unknown kind of file' "
                   "WHERE display = 'old.txt'");
    };
    const auto readersOf = [&](const char* file) {
        sqlite::Database index(IndexFile());
        sqlite::Statement find(index, "SELECT readers FROM document WHERE display = ?1");
        return find.Bind(1, file).Step() ? find.Int(0) : 0;
    };
    ASSERT_EQ(Update(WithFakeWorker(Job())).added, 5U);
    makeOld();
    engine::IndexReport report = Update(WithFakeWorker(Job()));
    EXPECT_EQ(report.changed, 2U) << "the zip for its member, and the picture";
    EXPECT_EQ(report.unchanged, 2U);
    ASSERT_EQ(report.problems.size(), 1U);
    EXPECT_EQ(report.problems.front().reason, QStringLiteral("the reader took too long"));
    EXPECT_EQ(Counts(), (Lines{": 0=6 5=1 6=1"}));
    EXPECT_EQ(readersOf("fine.zip"), engine::kReadersVersion)
        << "its members are not asked for again";
    report = Update(WithFakeWorker(Job()));
    EXPECT_EQ(report.unchanged, 5U) << "a document that fails is tried once by each version";
    EXPECT_EQ(FaultsIn(IndexFolder()), "");
}

} // namespace
} // namespace engine_test
