// Reads all tables of an index and compares them with one another.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "IndexAudit.h"

#include "engine/index/IndexFile.h"
#include "engine/index/StoredText.h"
#include "engine/text/Tokenizer.h"
#include "platform/Names.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace engine_test {
namespace {

using engine::IndexFile;
using Places = std::map<std::string, std::vector<std::int64_t>>; // of one document, by word

std::string PathOf(const QString& folder) {
    return platform::EncodeName(folder + QLatin1Char('/')).toStdString() + engine::kIndexFileName;
}

IndexFile Open(const QString& folder) {
    return {PathOf(folder), engine::IndexMode::Search, engine::Alphabet().Canonical()};
}

std::map<std::int64_t, Places> PlacesOf(IndexFile& index) {
    index.Db().Exec("CREATE VIRTUAL TABLE temp.instance USING fts5vocab(main, words, 'instance')");
    std::map<std::int64_t, Places> places;
    sqlite::Statement rows(index.Db(), "SELECT doc, term, \"offset\" FROM temp.instance");
    while (rows.Step())
        places[rows.Int64(0)][std::string(rows.Text(1))].push_back(rows.Int64(2));
    return places;
}

std::string Join(const std::vector<std::int64_t>& numbers) {
    std::string text;
    for (const std::int64_t number : numbers)
        text += " " + std::to_string(number);
    return text;
}

// The words of the stored text, cut as they were when it was read.
Places WordsOf(IndexFile& index, std::int64_t document, engine::WordRule rule) {
    const engine::Alphabet alphabet;
    engine::Tokenizer tokenizer(alphabet);
    Places places;
    std::int64_t last = -1;
    engine::ReadStoredText(index, document, [&](const std::string& text) {
        for (const engine::Word& word : tokenizer.Split(text, rule)) {
            if (word.advances || last < 0)
                ++last;
            places[std::string(word.term)].push_back(last);
        }
    });
    return places;
}

void ExpectNothing(IndexFile& index, const char* what, const char* sql, std::string& faults) {
    if (const auto count = sqlite::QueryInt64(index.Db(), sql).value_or(0); count != 0)
        faults += std::string(what) + ": " + std::to_string(count) + "\n";
}

void CompareWords(IndexFile& index, std::string& faults) {
    const auto places = PlacesOf(index);
    std::map<std::string, std::int64_t> documents;
    std::set<std::int64_t> ids;
    sqlite::Statement rows(index.Db(), "SELECT id, name, path FROM document");
    while (rows.Step()) {
        const std::int64_t id = rows.Int64(0);
        ids.insert(id);
        const auto found = places.find(id);
        const Places& have = found == places.end() ? Places() : found->second;
        if (have != WordsOf(index, id, engine::RuleFor(rows.Text(1), rows.Text(2))))
            faults += "other words than those of its text: " + std::string(rows.Text(1)) + "\n";
    }
    for (const auto& [id, words] : places) {
        if (ids.count(id) == 0)
            faults += "words without a document: " + std::to_string(id) + "\n";
        for (const auto& [word, _] : words)
            ++documents[word];
    }
    std::map<std::string, std::int64_t> counted;
    sqlite::Statement terms(index.Db(), "SELECT word, documents FROM term");
    while (terms.Step())
        counted[std::string(terms.Text(0))] = terms.Int64(1);
    if (counted != documents)
        faults += "the list of words does not count the documents\n";
}

} // namespace

std::vector<std::string> ContentOf(const QString& folder) {
    IndexFile index = Open(folder);
    const auto places = PlacesOf(index);
    std::vector<std::string> lines;
    sqlite::Statement rows(
        index.Db(),
        "SELECT d.id, f.path || '/' || d.file || d.path, d.name || '|' || d.display || '|' || "
        "d.kind || '|' || d.size || '|' || d.modified || '|' || d.words || '|' || d.state "
        "|| '|' || d.reason || '|' || d.readers || '|' || coalesce(p.name, '') "
        "FROM document d JOIN folder f ON f.id = d.folder "
        "LEFT JOIN document p ON p.id = d.parent");
    sqlite::Statement fields(index.Db(),
                             "SELECT name || '|' || first || '|' || last || '|' || value "
                             "FROM field WHERE document = ?1",
                             sqlite::Use::Often);
    while (rows.Step()) {
        const std::int64_t id = rows.Int64(0);
        const std::string name(rows.Text(1));
        lines.push_back(name + " row " + std::string(rows.Text(2)));
        fields.Bind(1, id);
        while (fields.Step())
            lines.push_back(name + " field " + std::string(fields.Text(0)));
        fields.Reset();
        std::string text;
        engine::ReadStoredText(index, id, [&](const std::string& part) { text += part; });
        lines.push_back(name + " text " + text);
        if (const auto found = places.find(id); found != places.end())
            for (const auto& [word, numbers] : found->second)
                lines.push_back(name + " word " + word + Join(numbers));
    }
    sqlite::Statement terms(index.Db(), "SELECT word || ' ' || documents FROM term");
    while (terms.Step())
        lines.push_back("listed " + std::string(terms.Text(0)));
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::string Difference(const std::vector<std::string>& have, const std::vector<std::string>& want) {
    constexpr std::size_t kShown = 8;
    std::string text;
    const auto list = [&](const char* what, const auto& one, const auto& other) {
        std::vector<std::string> only;
        std::set_difference(one.begin(), one.end(), other.begin(), other.end(),
                            std::back_inserter(only));
        for (std::size_t i = 0; i < only.size() && i < kShown; ++i)
            text += what + only[i].substr(0, 300) + "\n";
    };
    list("too much: ", have, want);
    list("missing:  ", want, have);
    return text;
}

std::string FaultsIn(const QString& folder) {
    std::string faults;
    try {
        IndexFile index = Open(folder);
        if (const std::string said = index.Db().ReadPragma("integrity_check"); said != "ok")
            faults += said + "\n";
        index.Db().Exec("INSERT INTO words(words) VALUES('integrity-check')");
        ExpectNothing(index, "texts without a document",
                      "SELECT count(*) FROM chunk WHERE id >> 20 NOT IN (SELECT id FROM document)",
                      faults);
        ExpectNothing(index, "fields without a document",
                      "SELECT count(*) FROM field WHERE document NOT IN (SELECT id FROM document)",
                      faults);
        ExpectNothing(index, "members without their container",
                      "SELECT count(*) FROM document WHERE parent <> 0 AND parent NOT IN "
                      "(SELECT id FROM document)",
                      faults);
        ExpectNothing(index, "documents without a folder",
                      "SELECT count(*) FROM document WHERE folder NOT IN (SELECT id FROM folder)",
                      faults);
        ExpectNothing(index, "files that are there twice",
                      "SELECT count(*) FROM (SELECT 1 FROM document GROUP BY folder, file, path "
                      "HAVING count(*) > 1)",
                      faults);
        CompareWords(index, faults);
    } catch (const std::exception& error) {
        faults += std::string("cannot be read: ") + error.what() + "\n";
    }
    return faults;
}

std::set<std::int64_t> DocumentIds(const QString& folder) {
    IndexFile index = Open(folder);
    std::set<std::int64_t> ids;
    sqlite::Statement rows(index.Db(), "SELECT id FROM document");
    while (rows.Step())
        ids.insert(rows.Int64(0));
    return ids;
}

} // namespace engine_test
