// Indexes that something has damaged: the search says so, the update sets them aside and makes a
// new one that misses nothing, or says that it may. SPDX-License-Identifier: AGPL-3.0-or-later
#include "IndexAudit.h"
#include "PhaseFixture.h"

#include <sys/stat.h>

#include <functional>
#include <map>
#include <random>

namespace engine_test {
namespace {

using engine::IndexFault;

constexpr qint64 kPage = 8192;

class Damaged : public PhaseFixture {
  protected:
    Damaged() : PhaseFixture(Phase::Update) {}

    [[nodiscard]] QString File(const char* suffix = "") const {
        return IndexFolder() + QStringLiteral("/index_a.ix") + QLatin1String(suffix);
    }
    void Overwrite(qint64 at, const QByteArray& bytes) const {
        QFile file(File());
        ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(at));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    void Become(const QByteArray& content) const {
        QFile file(File());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    [[nodiscard]] qint64 RootOf(const char* table) const {
        sqlite::Database database(File().toStdString());
        sqlite::Statement find(database, "SELECT rootpage FROM sqlite_schema WHERE name = ?1");
        find.Bind(1, table);
        return find.Step() ? (find.Int64(0) - 1) * kPage : -1;
    }
    [[nodiscard]] QStringList KeptFiles() const {
        return QDir(IndexFolder()).entryList({QStringLiteral("index_a.ix.damaged-*")});
    }
    // A search that goes through all documents and words, some of which are damaged or not.
    [[nodiscard]] std::optional<IndexFault> SearchEverywhere() const {
        for (const char* request : {"document", "xfirstword and not nothing", "l* or w* or the"}) {
            const engine::SearchResults results = Search(request);
            if (results.fault)
                return results.fault;
            EXPECT_FALSE(results.items.empty()) << request;
        }
        return {};
    }
    // The job of the fixture over one of its folders only, as a partial update runs it.
    [[nodiscard]] engine::IndexJob Partial(const char* root) const {
        CrashJob job = m_job;
        job.roots = QStringList{Docs() + QLatin1Char('/') + QLatin1String(root)};
        engine::IndexJob partial = job.Job();
        partial.WholeArchive = false;
        return partial;
    }
};

TEST_F(Damaged, InWhateverWayItIsRecognisedKeptAndMadeAnew) {
    const std::map<std::string, std::function<void()>> damages{
        {"header", [&] { Overwrite(0, QByteArray(100, 'h')); }},
        {"marks of the header", [&] { Overwrite(68, QByteArray(4, 'h')); }},
        {"page of the tables' list", [&] { Overwrite(100, QByteArray(kPage - 100, '\x07')); }},
        {"documents", [&] { Overwrite(RootOf("document"), QByteArray(kPage, '\x55')); }},
        {"folders", [&] { Overwrite(RootOf("folder"), QByteArray(kPage, '\x55')); }},
        {"words", [&] { Overwrite(RootOf("words_data"), QByteArray(kPage, '\x55')); }},
        {"texts", [&] { Overwrite(RootOf("chunk"), QByteArray(kPage, '\x55')); }},
        {"half", [&] { QFile::resize(File(), QFileInfo(File()).size() / 2 / kPage * kPage); }},
        {"odd half", [&] { QFile::resize(File(), QFileInfo(File()).size() / 2 + 77); }},
        {"beginning", [&] { QFile::resize(File(), 60); }},
        {"nothing", [&] { QFile::resize(File(), 0); }},
        {"text", [&] { Become("This is no index at all.\n"); }},
        {"zeroes", [&] { Become(QByteArray(100'000, '\0')); }},
        {"foreign database",
         [&] {
             QFile::remove(File());
             sqlite::Database other(File().toStdString(), {sqlite::OpenMode::Create, {}});
             other.Exec("CREATE TABLE recipes(name); INSERT INTO recipes VALUES('soup')");
         }},
    };
    for (const auto& [name, damage] : damages) {
        SCOPED_TRACE(name);
        Restore();
        for (const QString& old : KeptFiles())
            QFile::remove(IndexFolder() + QLatin1Char('/') + old);
        damage();
        QFile before(File());
        ASSERT_TRUE(before.open(QIODevice::ReadOnly));
        const QByteArray bytes = before.readAll();
        before.close();
        // Texts are read for pages, not for searching.
        if (name != "texts") {
            EXPECT_EQ(SearchEverywhere(), IndexFault::Damaged);
        }
        const engine::IndexReport report = m_job.Job().Execute();
        ASSERT_FALSE(report.fault) << report.faultText.toStdString();
        EXPECT_FALSE(report.otherFoldersMissing);
        EXPECT_EQ(FaultsIn(IndexFolder()), "");
        ASSERT_EQ(Difference(ContentOf(IndexFolder()), m_fresh), "");
        EXPECT_EQ(Difference(HitsNow(), m_hits), "");
        // What was there is kept as it was.
        ASSERT_EQ(KeptFiles().size(), 1);
        EXPECT_EQ(report.damagedKept, IndexFolder() + QLatin1Char('/') + KeptFiles().front());
        QFile kept(report.damagedKept);
        ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
        EXPECT_EQ(kept.size(), bytes.size());
        // All is said and done: the next run finds nothing to mend.
        EXPECT_TRUE(m_job.Job().Execute().damagedKept.isEmpty());
        ExpectTheNextUpdateToFinish();
    }
}

// Bytes that are wrong anywhere: a search finds what is there or says that it cannot; whatever it
// met, the next update mends.
TEST_F(Damaged, AnywhereAtAllNoSearchLiesAndTheNextUpdateMendsWhatASearchHasMet) {
    const std::vector<std::string> before = HitsNow();
    const qint64 pages = QFileInfo(File()).size() / kPage;
    std::mt19937 random(21);
    int met = 0;
    for (int round = 0; round < 12; ++round) {
        const qint64 page = 1 + static_cast<qint64>(random()) % (pages - 1);
        SCOPED_TRACE("page " + std::to_string(page));
        Restore();
        Overwrite(page * kPage, QByteArray(kPage, static_cast<char>(random())));
        if (SearchEverywhere() != IndexFault::Damaged)
            continue;
        ++met;
        EXPECT_TRUE(QFile::exists(File(".suspect")));
        const engine::IndexReport report = m_job.Job().Execute();
        ASSERT_FALSE(report.fault) << report.faultText.toStdString();
        EXPECT_FALSE(report.damagedKept.isEmpty());
        EXPECT_FALSE(QFile::exists(File(".suspect")));
        ASSERT_EQ(Difference(ContentOf(IndexFolder()), m_fresh), "");
    }
    EXPECT_GE(met, 2);
    // A false alarm costs a look and nothing else.
    Restore();
    Become(QByteArray("x"));
    EXPECT_EQ(Search("document").fault, IndexFault::Damaged);
    Restore();
    QFile note(File(".suspect"));
    ASSERT_TRUE(note.open(QIODevice::WriteOnly));
    EXPECT_TRUE(m_job.Job().Execute().damagedKept.isEmpty());
    EXPECT_FALSE(note.exists());
}

TEST_F(Damaged, LogsAreReadAsFarAsTheyGo) {
    const QByteArray path = File().toUtf8();
    const auto leaveLog = [&] {
        Restore();
        ::unlink((path + "-wal").constData());
        // Kept open by somebody else, so that it is still there when the run has ended.
        engine::IndexFile open(path.toStdString(), engine::IndexMode::Search, {});
        (void)open.Meta("alphabet");
        EXPECT_FALSE(m_job.Job().Execute().fault);
        QFile::copy(File("-wal"), File(".log"));
        QFile::copy(File(), File(".main"));
    };
    const auto putBack = [&](qint64 size) {
        for (const char* suffix : {"", "-wal", "-shm"})
            QFile::remove(File(suffix));
        QFile::rename(File(".log"), File("-wal"));
        QFile::rename(File(".main"), File());
        QFile::resize(File("-wal"), size);
    };
    for (const int part : {0, 1, 2, 3}) {
        SCOPED_TRACE(part);
        leaveLog();
        const qint64 size = QFileInfo(File(".log")).size();
        ASSERT_GT(size, 4 * kPage);
        putBack(part == 0 ? 20 : size * part / 4 + 11);
        EXPECT_FALSE(Search("document").fault);
        EXPECT_EQ(FaultsIn(IndexFolder()), "");
        ExpectTheNextUpdateToFinish();
    }
    leaveLog();
    putBack(kPage * 4);
    QFile log(File("-wal"));
    ASSERT_TRUE(log.open(QIODevice::WriteOnly));
    log.write(QByteArray(100'000, 'w'));
    log.close();
    EXPECT_FALSE(Search("document").fault);
    ExpectTheNextUpdateToFinish();
}

TEST_F(Damaged, APartialUpdateKeepsTheOtherFoldersOrSaysThatTheyAreMissing) {
    // The list of documents can be read: all of them come again, but for what is to be removed.
    Overwrite(RootOf("chunk"), QByteArray(kPage, '\x55'));
    engine::IndexReport report = Partial("texts").Execute();
    ASSERT_FALSE(report.fault) << report.faultText.toStdString();
    EXPECT_FALSE(report.damagedKept.isEmpty());
    EXPECT_FALSE(report.otherFoldersMissing);
    EXPECT_EQ(FaultsIn(IndexFolder()), "");
    EXPECT_GT(Search("appendage").found, 0U);
    ExpectTheNextUpdateToFinish();

    Restore();
    Overwrite(RootOf("chunk"), QByteArray(kPage, '\x55'));
    engine::IndexJob removal = Partial("texts");
    removal.ToRemoveFolders << platform::ToLogical(Docs() + QStringLiteral("/mixed"));
    ASSERT_FALSE(removal.Execute().fault);
    EXPECT_EQ(Search("appendage").found, 0U);
    EXPECT_GT(Search("document").found, 10U);

    // Nothing of it can be read: that is told until a run over everything has been made.
    Restore();
    Overwrite(0, QByteArray(100, 'h'));
    report = Partial("texts").Execute();
    ASSERT_FALSE(report.fault);
    EXPECT_TRUE(report.otherFoldersMissing);
    EXPECT_EQ(Search("appendage").found, 0U);
    report = Partial("single").Execute();
    EXPECT_TRUE(report.damagedKept.isEmpty());
    EXPECT_TRUE(report.otherFoldersMissing);
    ExpectTheNextUpdateToFinish();
    EXPECT_FALSE(Partial("single").Execute().otherFoldersMissing);
}

// A share that is not there while the index is mended: its documents are told as missing, and come
// back with it.
TEST_F(Damaged, WhatIsAwayMeanwhileIsTold) {
    ASSERT_TRUE(QDir().rename(Docs() + QStringLiteral("/mixed"),
                              m_folder.filePath(QStringLiteral("away"))));
    Overwrite(RootOf("chunk"), QByteArray(kPage, '\x55'));
    const engine::IndexReport report = Partial("texts").Execute();
    ASSERT_FALSE(report.damagedKept.isEmpty());
    ASSERT_FALSE(report.problems.empty());
    EXPECT_EQ(report.problems.back().file, Docs() + QStringLiteral("/mixed"));
    EXPECT_EQ(report.problems.back().reason, QStringLiteral("the folder is not there"));
    ASSERT_TRUE(QDir().rename(m_folder.filePath(QStringLiteral("away")),
                              Docs() + QStringLiteral("/mixed")));
    ExpectTheNextUpdateToFinish();
}

TEST_F(Damaged, OnlyTheLastOneIsKept) {
    for (const char* suffix : {"2001-01-01-000000", "2001-01-01-000000-wal", "2002-02-02-000000"}) {
        QFile older(File(".damaged-") + QLatin1String(suffix));
        ASSERT_TRUE(older.open(QIODevice::WriteOnly));
    }
    // One of them lacks its index: it was cut short, and what stands there lacks its log.
    QFile::remove(File(".damaged-2001-01-01-000000"));
    const engine::IndexReport report = m_job.Job().Execute();
    EXPECT_FALSE(report.damagedKept.isEmpty());
    EXPECT_EQ(KeptFiles().size(), 1);
    ExpectTheNextUpdateToFinish();
    // Cut short between two names: the index has none, and is known by its other one.
    QFile::remove(report.damagedKept);
    ASSERT_TRUE(QFile::rename(File(), report.damagedKept));
    QFile fresh(File(".new"));
    ASSERT_TRUE(fresh.open(QIODevice::WriteOnly));
    EXPECT_EQ(Search("document").fault, IndexFault::Missing);
    EXPECT_FALSE(Partial("single").Execute().otherFoldersMissing);
    EXPECT_EQ(KeptFiles().size(), 1);
    ExpectTheNextUpdateToFinish();
}

TEST_F(Damaged, ARebuildKeepsItToo) {
    Become("This is no index at all.\n");
    engine::IndexJob rebuild = m_job.Job();
    rebuild.ActionCreate = true;
    const engine::IndexReport report = rebuild.Execute();
    ASSERT_FALSE(report.fault) << report.faultText.toStdString();
    EXPECT_TRUE(QFile::exists(report.damagedKept));
    ExpectTheNextUpdateToFinish();
}

} // namespace
} // namespace engine_test
