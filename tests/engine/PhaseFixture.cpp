// Prepares the phases and judges their outcome.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "PhaseFixture.h"

#include "CrashCorpus.h"
#include "IndexAudit.h"

#include "engine/WordList.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace engine_test {

int FromEnvironment(const char* name, int otherwise) {
    const char* value = std::getenv(name);
    return value == nullptr ? otherwise : std::atoi(value);
}

std::string NameOf(Phase phase) {
    constexpr const char* kNames[] = {"Create", "Update", "Remove", "Compress", "Rebuild", "Mend"};
    return kNames[static_cast<int>(phase)];
}

PhaseFixture::PhaseFixture(Phase phase, bool shared) : m_phase(phase) {
    m_job.shared = shared;
    m_job.indexFolder = IndexFolder();
    m_job.listFile = m_folder.filePath(QStringLiteral("add.txt"));
    m_job.worker = WorkerProgram();
    for (const char* root : {"texts", "mixed", "single"})
        m_job.roots << Docs() + QLatin1Char('/') + QLatin1String(root);
    if (phase == Phase::Remove)
        m_job.removeFolder = m_job.roots.takeAt(1);
    m_job.compress = phase == Phase::Compress;
    m_job.create = phase == Phase::Rebuild;
    MakeStart();
}

void PhaseFixture::MakeStart() {
    WriteCorpus(Docs(), Age::Older);
    if (m_phase != Phase::Create) {
        CrashJob first = m_job;
        first.create = first.compress = false;
        if (!first.removeFolder.isEmpty())
            first.roots << std::exchange(first.removeFolder, {});
        engine::IndexJob job = first.Job();
        // Many small segments, for there to be something to compress.
        job.CommitText = m_phase == Phase::Compress ? 1 : job.CommitText;
        ASSERT_FALSE(job.Execute().fault);
        if (m_phase == Phase::Mend) {
            SpoilTexts();
        } else {
            m_start = ContentOf(IndexFolder());
            m_startIds = DocumentIds(IndexFolder());
        }
    }
    if (m_phase == Phase::Compress)
        QFile::remove(Docs() + QStringLiteral("/single/only.txt"));
    else if (m_phase != Phase::Remove)
        WriteCorpus(Docs(), Age::Newer);
    ASSERT_TRUE(QDir().rename(IndexFolder(), Kept()));
    QDir().mkpath(IndexFolder());
    engine::IndexJob fresh = m_job.Job();
    fresh.ActionCreate = false;
    ASSERT_FALSE(fresh.Execute().fault);
    m_fresh = ContentOf(IndexFolder());
    m_hits = HitsNow();
    ASSERT_GT(m_fresh.size(), 1000U);
    Restore();
}

// The table of texts becomes unreadable; a run sees it as soon as a document has changed.
void PhaseFixture::SpoilTexts() const {
    const QString path = IndexFolder() + QStringLiteral("/index_a.ix");
    std::int64_t page = 0;
    {
        sqlite::Database database(path.toStdString());
        page =
            sqlite::QueryInt64(database, "SELECT rootpage FROM sqlite_schema WHERE name = 'chunk'")
                .value_or(0);
    }
    QFile file(path);
    ASSERT_TRUE(page > 1 && file.open(QIODevice::ReadWrite) && file.seek((page - 1) * 8192));
    file.write(QByteArray(8192, '\x55'));
}

void PhaseFixture::Restore() const {
    // The folder itself may be a disk of its own.
    for (const QString& name : QDir(IndexFolder()).entryList(QDir::Files))
        QFile::remove(IndexFolder() + QLatin1Char('/') + name);
    for (const QString& name : QDir(Kept()).entryList(QDir::Files))
        ASSERT_TRUE(
            QFile::copy(Kept() + QLatin1Char('/') + name, IndexFolder() + QLatin1Char('/') + name));
}

std::vector<std::string> PhaseFixture::HitsNow() const {
    std::vector<std::string> lines;
    for (const QString& text : CorpusRequests()) {
        const engine::SearchResults results = Request(text).Execute();
        EXPECT_FALSE(results.fault) << results.faultText.toStdString();
        for (const engine::SearchItem& item : results.items)
            lines.push_back((text + u' ' + item.Spelling + u' ' + item.HitsString()).toStdString());
    }
    engine::WordListBuilder words;
    EXPECT_TRUE(words.OpenIndex(IndexPath(), {}));
    words.ListPrefix(QString(), 100'000);
    for (int i = 0; i < words.Count(); ++i)
        lines.push_back(words.Word(i).word.toStdString() + " " +
                        std::to_string(words.Word(i).documents));
    std::sort(lines.begin(), lines.end());
    return lines;
}

void PhaseFixture::ExpectWhole() const {
    const auto begun = std::chrono::steady_clock::now();
    const engine::SearchResults results = Search("document");
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(5))
        << "it does not open at once";
    if (m_phase == Phase::Create && results.fault == engine::IndexFault::Missing)
        return;
    if (m_phase == Phase::Mend) {
        // Damaged as it was, or whole and new.
        if (FaultsIn(IndexFolder()).empty()) {
            EXPECT_EQ(Difference(ContentOf(IndexFolder()), m_fresh), "");
        }
        return;
    }
    ASSERT_FALSE(results.fault) << results.faultText.toStdString();
    ASSERT_EQ(FaultsIn(IndexFolder()), "");
    if (m_phase == Phase::Rebuild) {
        const auto content = ContentOf(IndexFolder());
        EXPECT_TRUE(content == m_start || content == m_fresh)
            << "neither the old index nor the new one:\n"
            << Difference(content, m_fresh);
    }
}

void PhaseFixture::ExpectTheNextUpdateToFinish() const {
    CrashJob next = m_job;
    next.create = false;
    const engine::IndexReport report = next.Job().Execute();
    ASSERT_FALSE(report.fault) << report.faultText.toStdString();
    EXPECT_TRUE(m_phase == Phase::Mend || report.damagedKept.isEmpty())
        << "what went wrong passed for damage";
    EXPECT_FALSE(report.otherFoldersMissing);
    EXPECT_EQ(FaultsIn(IndexFolder()), "");
    ASSERT_EQ(Difference(ContentOf(IndexFolder()), m_fresh), "");
    EXPECT_EQ(Difference(HitsNow(), m_hits), "");
    EXPECT_FALSE(QFile::exists(IndexFolder() + QStringLiteral("/index_a.ix.new")));
}

} // namespace engine_test
