// One search, from the request's text to documents with hits.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/SearchJob.h"

#include "engine/index/IndexRun.h"
#include "engine/query/SearchRun.h"
#include "engine/query/ThesaurusFiles.h"
#include "platform/LogicalPath.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace engine {
namespace {

SearchItem ItemOf(IndexFile& index, RankedDocument ranked) {
    sqlite::Statement row(index.Db(),
                          "SELECT d.name, f.path, d.file, d.path, d.display, d.modified, d.size "
                          "FROM document d JOIN folder f ON f.id = d.folder WHERE d.id = ?1");
    row.Bind(1, ranked.id);
    SearchItem item;
    item.Id = ranked.id;
    item.Hits = std::move(ranked.hits);
    if (!row.Step())
        return item;
    const auto text = [&](int column) {
        const auto bytes = row.Blob(column);
        return QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size()));
    };
    const QByteArray folder = text(1);
    item.FileName = QString::fromUtf8(text(0));
    item.Spelling = platform::DecodeName(folder + (folder == "/" ? "" : "/") + text(2)) +
                    QString::fromUtf8(text(3)).replace(QLatin1Char('\\'), QLatin1Char('/'));
    item.DisplayName = QString::fromUtf8(text(4));
    if (row.Int64(5) > 0)
        item.Date = QDateTime::fromMSecsSinceEpoch(row.Int64(5) / 1'000'000);
    item.Size = row.Int64(6);
    return item;
}

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
    for (RankedDocument& ranked : run.Run(static_cast<std::size_t>(std::max(job.MaxFiles, 0))))
        results.items.push_back(ItemOf(index, std::move(ranked)));
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
