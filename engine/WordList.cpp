// Lists words of the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/WordList.h"

#include "engine/index/DamageNote.h"
#include "engine/index/IndexRun.h"
#include "platform/LogicalPath.h"

#include <algorithm>
#include <memory>

namespace engine {
namespace {

std::unique_ptr<IndexFile> Open(const QString& file, const QString& alphabetFile) {
    try {
        return std::make_unique<IndexFile>(platform::EncodeName(file).toStdString(), IndexMode::Search,
                                           AlphabetOf(alphabetFile));
    } catch (const IndexError&) {
        return nullptr;
    }
}

ListedWord Row(const sqlite::Statement& row) {
    const auto word = row.Text(0);
    return {QString::fromUtf8(word.data(), static_cast<qsizetype>(word.size())), row.Int64(1)};
}

std::string Fold(const QString& text, const QString& alphabetFile) {
    Tokenizer tokenizer(Alphabet::Parse(ReadAlphabetFile(alphabetFile)));
    return tokenizer.Fold(text.toStdString());
}

} // namespace

bool WordListBuilder::OpenIndex(const QString& indexPath, const QString& alphabetFile) {
    m_words.clear();
    m_file = platform::ToMachine(indexPath) + QLatin1Char('/') + QLatin1String(kIndexFileName);
    m_alphabetFile = alphabetFile;
    return Open(m_file, m_alphabetFile) != nullptr;
}

void WordListBuilder::ListWords(const QString& word, int range) {
    Read([&](IndexFile& index) {
        const std::string folded = Fold(word, m_alphabetFile);
        sqlite::Statement before(index.Db(), "SELECT word, documents FROM term WHERE word < ?1 "
                                             "ORDER BY word DESC LIMIT ?2");
        before.Bind(1, folded).Bind(2, range);
        while (before.Step())
            m_words.push_back(Row(before));
        std::reverse(m_words.begin(), m_words.end());
        sqlite::Statement from(index.Db(), "SELECT word, documents FROM term WHERE word >= ?1 "
                                           "ORDER BY word LIMIT ?2");
        from.Bind(1, folded).Bind(2, range + 1);
        while (from.Step())
            m_words.push_back(Row(from));
    });
}

void WordListBuilder::ListPrefix(const QString& prefix, int limit) {
    Read([&](IndexFile& index) {
        const std::string folded = Fold(prefix, m_alphabetFile);
        sqlite::Statement words(index.Db(), "SELECT word, documents FROM term WHERE word >= ?1 AND "
                                            "word < ?1 || char(1114111) "
                                            "ORDER BY documents DESC, word LIMIT ?2");
        words.Bind(1, folded).Bind(2, limit);
        while (words.Step())
            m_words.push_back(Row(words));
    });
}

// Half a list is none.
void WordListBuilder::Read(const std::function<void(IndexFile&)>& use) {
    m_words.clear();
    const auto index = Open(m_file, m_alphabetFile);
    if (!index)
        return;
    try {
        use(*index);
    } catch (const sqlite::Error& error) {
        m_words.clear();
        if (error.Kind() == sqlite::ErrorKind::Corrupt)
            NoteDamage(platform::EncodeName(m_file).toStdString());
        throw Translate(error);
    }
}

} // namespace engine
