// Thousands of random requests over real text: the engine and a plain evaluator must agree, hit
// words included.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "EngineFixture.h"
#include "Oracle.h"

#include <map>

namespace engine_test {
namespace {

constexpr int kRequests = 3000;

std::vector<std::string> Paragraphs(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    std::vector<std::string> paragraphs;
    std::string current;
    for (const QByteArray& line : file.readAll().split('\n')) {
        current += line.toStdString() + "\n";
        if (line.trimmed().isEmpty() || current.size() > 1500) {
            if (!OracleWords(current).empty())
                paragraphs.push_back(current);
            current.clear();
        }
    }
    return paragraphs;
}

class RequestOracle : public EngineFixture {
  protected:
    // The licence and the program's own texts in five languages, a document for each paragraph.
    void SetUp() override {
        const QString top = QStringLiteral(VELMORA_TEST_DATA "/../..");
        std::vector<std::string> texts = Paragraphs(top + QStringLiteral("/LICENSE"));
        for (const char* language : {"it", "en", "de", "es", "fr"})
            for (std::string& text : Paragraphs(top + QStringLiteral("/resources/messages/") +
                                                QString::fromLatin1(language) + QStringLiteral(".txt")))
                texts.push_back(std::move(text));
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const bool titled = i % 3 == 0;
            const QString name = QStringLiteral("d%1.html").arg(i);
            const QString body = QString::fromStdString(texts[i]).toHtmlEscaped();
            const QString page = QStringLiteral("<!DOCTYPE html><meta charset=utf-8>") +
                                 (titled ? QStringLiteral("<title>Text %1 of the house</title>").arg(i) : QString()) +
                                 QStringLiteral("<body><p>") + body + QStringLiteral("</p>");
            Write(name, page.toUtf8());
            OracleDocument document;
            document.name = name.toUpper().toStdString();
            if (titled)
                document.words = OracleWords("Text " + std::to_string(i) + " of the house");
            document.titleWords = document.words.size();
            for (std::string& word : OracleWords(texts[i]))
                document.words.push_back(std::move(word));
            m_documents.push_back(std::move(document));
        }
        const engine::IndexReport report = Update();
        ASSERT_FALSE(report.fault) << report.faultText.toStdString();
        ASSERT_EQ(report.documents, texts.size());
        ASSERT_TRUE(report.problems.empty());
    }

    void Compare(const OracleRequest& request) {
        std::map<std::string, std::vector<std::uint32_t>> expected;
        for (const OracleDocument& document : m_documents) {
            Instances instances;
            if (!request.Matches(document, 1, document.words.size(), instances))
                continue;
            std::set<std::uint32_t> hits;
            for (const auto& [first, last] : instances)
                for (std::size_t word = first; word <= last; ++word)
                    hits.insert(static_cast<std::uint32_t>(word));
            expected[document.name] = {hits.begin(), hits.end()};
        }
        engine::SearchJob job = Request(QString::fromStdString(request.Text()));
        job.MaxFiles = 100'000;
        const engine::SearchResults results = job.Execute();
        ASSERT_FALSE(results.fault) << request.Text() << ": " << results.faultText.toStdString();
        std::map<std::string, std::vector<std::uint32_t>> found;
        std::pair<std::size_t, QString> before{SIZE_MAX, QString()};
        for (const engine::SearchItem& item : results.items) {
            found[platform::FileName(item.FileName).toStdString()] = item.Hits;
            const bool inOrder = item.Hits.size() < before.first ||
                                 (item.Hits.size() == before.first && before.second < item.FileName);
            ASSERT_TRUE(inOrder) << request.Text();
            before = {item.Hits.size(), item.FileName};
        }
        ASSERT_EQ(found, expected) << request.Text();
        ASSERT_EQ(results.found, expected.size()) << request.Text();
        m_matches += expected.empty() ? 0 : 1;
        // A cap keeps just the first of the same list.
        job.MaxFiles = 5;
        const engine::SearchResults few = job.Execute();
        ASSERT_EQ(few.items.size(), std::min<std::size_t>(5, results.items.size()));
        for (std::size_t i = 0; i < few.items.size(); ++i) {
            ASSERT_EQ(few.items[i].FileName, results.items[i].FileName) << request.Text();
            ASSERT_EQ(few.items[i].Hits, results.items[i].Hits) << request.Text();
        }
    }

    std::vector<OracleDocument> m_documents;
    int m_matches = 0;
};

TEST_F(RequestOracle, AgreesOnRandomRequests) {
    std::mt19937 random(20261121);
    for (int i = 0; i < kRequests && !HasFatalFailure(); ++i)
        Compare(*RandomRequest(random, m_documents, i % 4));
    // A comparison of nothing with nothing proves little.
    EXPECT_GT(m_matches, kRequests / 3);
}

} // namespace
} // namespace engine_test
