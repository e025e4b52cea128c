// Rows, words and texts of documents: puts them in and takes them out, in bounded transactions.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"
#include "engine/readers/Frames.h"
#include "engine/text/TermSet.h"
#include "engine/text/Tokenizer.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace engine {

// What is written of one document.
struct DocumentRow {
    std::int64_t id = 0;
    std::int64_t parent = 0; // 0: a file on disk
    std::int64_t folder = 0;
    std::string file;        // bytes of the file's name as spelled on disk
    std::string path;        // ">n|MEMBER" as spelled; "" for a file
    std::string name;        // logical name in capitals
    std::string display;
    std::int64_t size = 0;
    std::int64_t modified = 0; // nanoseconds since 1970; -1: not finished, read again
    int kind = 0;
    int readers = 0;           // version of the readers that read it
};

// Chunks of a document in their order, as they come.
class ChunkSource {
  public:
    virtual ~ChunkSource() = default;
    // False at the end. The chunk's views are valid until the next call.
    virtual bool Next(TextChunk& chunk) = 0;
    // Known when Next has answered false.
    virtual const DocumentEnd& End() = 0;
};

// How much may stand uncommitted, and so be lost with the process.
struct CommitBounds {
    std::uint64_t text = std::uint64_t{64} << 20; // bytes
    std::chrono::seconds time{20};
};

// Writes within a transaction that it opens and closes by itself. Everything throws
// sqlite::Error; the open transaction is then rolled back by Rollback.
class DocumentStore {
  public:
    DocumentStore(IndexFile& index, const Alphabet& alphabet, CommitBounds bounds);

    [[nodiscard]] std::int64_t NewId();
    // Writes the row with its text, words and fields.
    void Insert(const DocumentRow& row, ChunkSource& chunks);
    // Takes out the document and its members. Unknown ids are ignored.
    void Remove(std::int64_t id);
    // Takes out one document and leaves its members.
    void RemoveRow(std::int64_t id);
    // Changes a row's size, time and state without touching its text.
    void Touch(std::int64_t id, std::int64_t size, std::int64_t modified);
    // Remembers that these readers have nothing more to get out of a file.
    void MarkTried(std::int64_t id, int readers);
    // Touch, for a document of which only a part could be read.
    void MarkPartly(std::int64_t id, std::int64_t size, std::int64_t modified,
                    const std::string& reason);

    // Row id of a folder, made when it is new. path: machine path.
    [[nodiscard]] std::int64_t FolderId(const std::string& path);

    // Whether enough has gathered, or enough time has passed, for a commit.
    [[nodiscard]] bool CommitIsDue() const;
    void CommitIfDue() {
        if (CommitIsDue())
            Commit();
    }
    void Commit();
    void Rollback() noexcept;
    [[nodiscard]] bool Changed() const { return m_changed; }

    // Brings the full-text tree into few segments; returns false when there was nothing to do.
    // everything: one segment, however long it takes. keepGoing is asked now and then.
    template <class KeepGoing> void Compress(bool everything, KeepGoing keepGoing) {
        Commit();
        while (keepGoing() && MergeStep(everything)) {
        }
    }

  private:
    void Begin();
    void CountTerms(std::string_view vocabulary, int change);
    void WriteTerms();
    void ForgetTerms() noexcept;
    bool MergeStep(bool everything);

    IndexFile& m_index;
    CommitBounds m_bounds;
    Tokenizer m_letters;
    std::optional<sqlite::Transaction> m_transaction;
    std::chrono::steady_clock::time_point m_begun;
    std::uint64_t m_gathered = 0; // bytes of plain text since the last commit
    bool m_changed = false;
    std::int64_t m_nextId = 0;
    TermSet m_terms;                       // of the documents in this transaction
    std::vector<std::int64_t> m_termChanges; // by term: how many more documents hold it
    std::unordered_map<std::string, std::int64_t> m_folders;

    sqlite::Statement m_insertDocument, m_insertWords, m_insertField, m_insertChunk;
    sqlite::Statement m_deleteDocument, m_deleteWords, m_deleteFields, m_deleteChunks;
    sqlite::Statement m_findKind, m_findChunks, m_findMembers, m_touch, m_tried;
};


} // namespace engine
