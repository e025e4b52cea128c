// Documents in and out of the tables.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/DocumentStore.h"

#include "engine/index/StoredText.h"

#include <algorithm>

namespace engine {
namespace {

constexpr std::size_t kCommitTerms = 400'000; // bounds the memory of the gathered counts

// The words of a document that is put in. Its compressed text is kept until they are through,
// since no other row can be written meanwhile.
class InsertTerms final : public TermSource {
  public:
    explicit InsertTerms(ChunkSource& chunks) : m_chunks(chunks) {}
    bool Next(std::string_view& terms) override {
        TextChunk chunk;
        if (!m_chunks.Next(chunk))
            return false;
        texts.push_back({chunk.wordCount, chunk.plainLength, std::string(chunk.text)});
        terms = chunk.terms;
        vocabulary.append(chunk.vocabulary);
        return true;
    }
    std::string vocabulary;
    struct Kept {
        std::uint64_t words, plain;
        std::string text;
    };
    std::vector<Kept> texts;

  private:
    ChunkSource& m_chunks;
};

// The words of a stored document, cut again.
class RemoveTerms final : public TermSource {
  public:
    RemoveTerms(sqlite::Statement& chunks, Tokenizer& tokenizer, WordRule rule)
        : m_chunks(chunks), m_tokenizer(tokenizer), m_rule(rule) {}
    bool Next(std::string_view& terms) override {
        if (!m_chunks.Step())
            return false;
        const std::string text =
            Decompress(m_chunks.Blob(1), static_cast<std::size_t>(m_chunks.Int64(0)));
        m_terms.clear();
        for (const Word& word : m_tokenizer.Split(text, m_rule)) {
            if (!word.advances)
                m_terms += '\x01';
            m_terms.append(word.term);
            m_terms += '\n';
            vocabulary.Insert(word.term);
        }
        terms = m_terms;
        return true;
    }
    TermSet vocabulary;

  private:
    sqlite::Statement& m_chunks;
    Tokenizer& m_tokenizer;
    WordRule m_rule;
    std::string m_terms;
};

sqlite::Statement Often(IndexFile& index, std::string_view sql) {
    return {index.Db(), sql, sqlite::Use::Often};
}

} // namespace

DocumentStore::DocumentStore(IndexFile& index, const Alphabet& alphabet, CommitBounds bounds)
    : m_index(index), m_bounds(bounds), m_letters(alphabet),
      m_insertDocument(Often(index, "INSERT INTO document VALUES(?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,"
                                    "?11,?12,?13,?14)")),
      m_insertWords(Often(index, "INSERT INTO words(rowid, text) VALUES(?1, 'x')")),
      m_insertField(Often(index, "INSERT OR IGNORE INTO field VALUES(?1, ?2, ?3, ?4, ?5)")),
      m_insertChunk(Often(index, "INSERT INTO chunk VALUES(?1, ?2, ?3, ?4)")),
      m_deleteDocument(Often(index, "DELETE FROM document WHERE id = ?1")),
      m_deleteWords(
          Often(index, "INSERT INTO words(words, rowid, text) VALUES('delete', ?1, 'x')")),
      m_deleteFields(Often(index, "DELETE FROM field WHERE document = ?1")),
      m_deleteChunks(Often(index, "DELETE FROM chunk WHERE id BETWEEN ?1 AND ?2")),
      m_findKind(Often(index, "SELECT name, path FROM document WHERE id = ?1")),
      m_findChunks(
          Often(index, "SELECT plain, text FROM chunk WHERE id BETWEEN ?1 AND ?2 ORDER BY id")),
      m_findMembers(Often(index, "SELECT id FROM document WHERE parent = ?1 AND parent <> 0")),
      m_touch(Often(index, "UPDATE document SET size = ?2, modified = ?3 WHERE id = ?1")),
      m_tried(Often(index, "UPDATE document SET readers = ?2 WHERE id = ?1")) {
    m_nextId =
        sqlite::QueryInt64(index.Db(), "SELECT max(id) FROM document").value_or(0) + 1;
}

std::int64_t DocumentStore::NewId() { return m_nextId++; }

void DocumentStore::Begin() {
    m_changed = true;
    if (m_transaction)
        return;
    m_transaction.emplace(m_index.Db());
    m_begun = std::chrono::steady_clock::now();
    m_gathered = 0;
}

void DocumentStore::Insert(const DocumentRow& row, ChunkSource& chunks) {
    Begin();
    InsertTerms terms(chunks);
    m_index.Words().Set(&terms);
    try {
        m_insertWords.Bind(1, row.id).Run();
    } catch (const sqlite::Error&) {
        m_index.Words().Rethrow();
        throw;
    }
    const DocumentEnd& end = chunks.End();
    std::int64_t chunkId = FirstChunkId(row.id);
    for (const InsertTerms::Kept& kept : terms.texts) {
        m_insertChunk.Bind(1, chunkId++).Bind(2, kept.words).Bind(3, kept.plain);
        m_insertChunk.BindBlobStatic(4, kept.text).Run();
        m_gathered += kept.plain;
    }
    for (const FieldRange& field : end.fields) {
        m_insertField.Bind(1, row.id).Bind(2, field.name).Bind(3, field.first);
        m_insertField.Bind(4, field.last).Bind(5, field.value).Run();
    }
    m_insertDocument.Bind(1, row.id).Bind(2, row.parent).Bind(3, row.folder);
    m_insertDocument.BindBlob(4, row.file).Bind(5, row.path).Bind(6, row.name);
    m_insertDocument.Bind(7, row.display).Bind(8, row.kind).Bind(9, row.size);
    m_insertDocument.Bind(10, row.modified).Bind(11, end.words);
    m_insertDocument.Bind(12, static_cast<int>(end.state)).Bind(13, end.reason);
    m_insertDocument.Bind(14, row.readers).Run();
    CountTerms(terms.vocabulary, 1);
}

void DocumentStore::Remove(std::int64_t id) {
    Begin();
    std::vector<std::int64_t> ids{id};
    m_findMembers.Bind(1, id);
    while (m_findMembers.Step())
        ids.push_back(m_findMembers.Int64(0));
    m_findMembers.Reset();
    for (const std::int64_t each : ids)
        RemoveRow(each);
}

void DocumentStore::RemoveRow(std::int64_t id) {
    Begin();
    m_findKind.Bind(1, id);
    if (!m_findKind.Step()) {
        m_findKind.Reset();
        return;
    }
    const WordRule rule = RuleFor(m_findKind.Text(0), m_findKind.Text(1));
    m_findKind.Reset();
    m_findChunks.Bind(1, FirstChunkId(id)).Bind(2, FirstChunkId(id + 1) - 1);
    RemoveTerms terms(m_findChunks, m_letters, rule);
    m_index.Words().Set(&terms);
    try {
        m_deleteWords.Bind(1, id).Run();
    } catch (const sqlite::Error&) {
        m_findChunks.Reset();
        m_index.Words().Rethrow();
        throw;
    }
    m_findChunks.Reset();
    CountTerms(terms.vocabulary.Joined(), -1);
    m_deleteChunks.Bind(1, FirstChunkId(id)).Bind(2, FirstChunkId(id + 1) - 1).Run();
    m_deleteFields.Bind(1, id).Run();
    m_deleteDocument.Bind(1, id).Run();
}

void DocumentStore::Touch(std::int64_t id, std::int64_t size, std::int64_t modified) {
    Begin();
    m_touch.Bind(1, id).Bind(2, size).Bind(3, modified).Run();
}

void DocumentStore::MarkTried(std::int64_t id, int readers) {
    Begin();
    m_tried.Bind(1, id).Bind(2, readers).Run();
}

void DocumentStore::MarkPartly(std::int64_t id, std::int64_t size, std::int64_t modified,
                               const std::string& reason) {
    Touch(id, size, modified);
    sqlite::Statement mark(m_index.Db(), "UPDATE document SET state = ?2, reason = ?3 WHERE id = ?1");
    mark.Bind(1, id).Bind(2, static_cast<int>(ReadState::Partly)).Bind(3, reason).Run();
}

std::int64_t DocumentStore::FolderId(const std::string& path) {
    if (const auto found = m_folders.find(path); found != m_folders.end())
        return found->second;
    Begin();
    sqlite::Statement add(m_index.Db(), "INSERT OR IGNORE INTO folder(path) VALUES(?1)");
    add.BindBlob(1, path).Run();
    sqlite::Statement find(m_index.Db(), "SELECT id FROM folder WHERE path = ?1");
    find.BindBlob(1, path);
    find.Step();
    if (m_folders.size() > 10'000)
        m_folders.clear();
    return m_folders[path] = find.Int64(0);
}

void DocumentStore::CountTerms(std::string_view vocabulary, int change) {
    while (!vocabulary.empty()) {
        const auto end = vocabulary.find('\n');
        const std::uint32_t number = m_terms.Insert(vocabulary.substr(0, end));
        if (number >= m_termChanges.size())
            m_termChanges.resize(number + 1);
        m_termChanges[number] += change;
        vocabulary.remove_prefix(end == std::string_view::npos ? vocabulary.size() : end + 1);
    }
}

// In the order of the tree, so that each page of it is visited once.
void DocumentStore::WriteTerms() {
    std::vector<std::pair<std::string_view, std::int64_t>> sorted;
    std::string_view joined = m_terms.Joined();
    for (const std::int64_t change : m_termChanges) {
        const auto end = joined.find('\n');
        if (change != 0)
            sorted.emplace_back(joined.substr(0, end), change);
        joined.remove_prefix(end + 1);
    }
    std::sort(sorted.begin(), sorted.end());
    auto add = Often(m_index, "INSERT INTO term VALUES(?1, ?2) ON CONFLICT(word) DO UPDATE SET "
                              "documents = documents + excluded.documents");
    auto drop = Often(m_index, "DELETE FROM term WHERE word = ?1 AND documents <= 0");
    for (const auto& [word, change] : sorted) {
        add.BindStatic(1, word).Bind(2, change).Run();
        if (change < 0)
            drop.BindStatic(1, word).Run();
    }
    ForgetTerms();
}

void DocumentStore::ForgetTerms() noexcept {
    m_terms.Clear();
    m_termChanges.clear();
}

bool DocumentStore::CommitIsDue() const {
    return m_transaction && (m_gathered >= m_bounds.text || m_terms.Size() >= kCommitTerms ||
                             std::chrono::steady_clock::now() - m_begun >= m_bounds.time);
}

void DocumentStore::Commit() {
    if (!m_transaction)
        return;
    WriteTerms();
    m_transaction->Commit();
    m_transaction.reset();
}

void DocumentStore::Rollback() noexcept {
    m_transaction.reset();
    ForgetTerms();
    m_folders.clear();
}

bool DocumentStore::MergeStep(bool everything) {
    // A negative number of pages merges all segments into one, a positive one only levels that
    // are full; each step is a transaction of its own, so that a kill costs one step.
    constexpr int kPages = 2000;
    const std::int64_t before = m_index.Db().TotalChanges();
    sqlite::Statement merge(m_index.Db(), "INSERT INTO words(words, rank) VALUES('merge', ?1)");
    merge.Bind(1, everything ? -kPages : kPages).Run();
    return m_index.Db().TotalChanges() - before >= 2;
}

} // namespace engine
