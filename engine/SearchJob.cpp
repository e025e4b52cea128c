// One search, from the request's text to documents with hits.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/SearchJob.h"

#include "engine/index/DamageNote.h"
#include "engine/index/IndexRun.h"
#include "engine/index/Paths.h"
#include "engine/query/SearchRun.h"
#include "engine/query/ThesaurusFiles.h"
#include "platform/LogicalPath.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace engine {
namespace {

// Looks up what people see of documents.
class Items {
  public:
    explicit Items(IndexFile& index)
        : m_row(index.Db(),
                "SELECT d.name, f.path, d.file, d.path, d.display, d.modified, d.size "
                "FROM document d JOIN folder f ON f.id = d.folder WHERE d.id = ?1",
                sqlite::Use::Often) {}

    SearchItem Make(FoundByWords found) {
        SearchItem item;
        item.Id = found.id;
        item.Hits = std::move(found.hits);
        m_row.Bind(1, found.id);
        if (m_row.Step())
            Fill(item);
        m_row.Reset();
        return item;
    }

  private:
    QByteArray Bytes(int column) const {
        const auto bytes = m_row.Blob(column);
        return {bytes.data(), static_cast<qsizetype>(bytes.size())};
    }
    void Fill(SearchItem& item) const {
        const QByteArray folder = Bytes(1);
        item.FileName = QString::fromUtf8(Bytes(0));
        item.Spelling = platform::DecodeName(folder + (folder == "/" ? "" : "/") + Bytes(2)) +
                        QString::fromUtf8(Bytes(3)).replace(QLatin1Char('\\'), QLatin1Char('/'));
        item.DisplayName = QString::fromUtf8(Bytes(4));
        if (m_row.Int64(5) > 0)
            item.Date = QDateTime::fromMSecsSinceEpoch(m_row.Int64(5) / 1'000'000);
        item.Size = m_row.Int64(6);
    }
    sqlite::Statement m_row;
};

void Search(const SearchJob& job, SearchResults& results) {
    const Alphabet alphabet = LoadAlphabet(job.AlphabetFile);
    Tokenizer tokenizer(alphabet);
    const auto request = ParseRequestText(job.Request.toStdString(), tokenizer);
    const auto conditions = ParseFileConditions(job.FileConditions.toStdString(), tokenizer);
    const std::string file =
        platform::EncodeName(platform::ToMachine(job.IndexPath) + QLatin1Char('/')).toStdString() +
        kIndexFileName;
    IndexFile index(file, IndexMode::Search, alphabet.Canonical());
    if (!request)
        return;
    // One reading transaction: an update that commits meanwhile does not mix old and new.
    sqlite::Transaction snapshot(index.Db(), sqlite::Transaction::Begin::Deferred);
    const auto thesaurus = job.UseWordNet ? OpenWordNet(tokenizer, true)
                                          : ReadUserThesaurus(job.ThesaurusFile, tokenizer);
    Vocabulary vocabulary(index, job.StemLanguage.toStdString());
    const SynonymUse synonyms{job.Synonyms, thesaurus.get()};
    SearchRun run(index, MakePlan(*request, conditions.get(), vocabulary, synonyms));
    Items items(index);
    for (FoundByWords& ranked : run.Run(static_cast<std::size_t>(std::max(job.MaxFiles, 0))))
        results.items.push_back(items.Make(std::move(ranked)));
    results.found = run.Found();
}

} // namespace

QString SearchItem::HitsString() const {
    QString text;
    for (const std::uint32_t hit : Hits)
        text += QString::number(hit) + QLatin1Char(' ');
    return text;
}

SearchResults SearchJob::Execute() const {
    SearchResults results;
    const auto fail = [&](IndexFault fault, const char* words) {
        results.items.clear();
        results.fault = fault;
        results.faultText = QString::fromUtf8(words);
        if (fault == IndexFault::Damaged)
            NoteDamage(IndexFileOf(IndexPath));
    };
    try {
        Search(*this, results);
    } catch (const RequestError& error) {
        fail(IndexFault::Request, error.what());
        results.requestFault = error.reason;
        results.position = error.position;
        results.token = QString::fromStdString(error.token);
    } catch (const IndexError& error) {
        fail(error.fault, error.what());
    } catch (const sqlite::Error& error) {
        fail(Translate(error).fault, error.what());
    } catch (const std::exception& error) {
        fail(IndexFault::Other, error.what());
    }
    return results;
}

} // namespace engine
