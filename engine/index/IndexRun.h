// One run of an index job, on the thread that writes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/IndexJob.h"
#include "engine/index/DamagedIndex.h"
#include "engine/index/DocumentStore.h"
#include "engine/index/FolderScan.h"
#include "engine/index/Progress.h"
#include "engine/index/ReadQueue.h"
#include "engine/index/Replacement.h"

#include <memory>
#include <string>
#include <vector>

namespace engine {

class IndexRun {
  public:
    IndexRun(const IndexJob& job, Progress& progress, IndexReport& report);
    // Throws IndexError and sqlite::Error.
    void Run();

  private:
    // What is known of a file while its documents come in.
    struct FileState {
        std::int64_t id = 0;       // 0: nothing of it written yet
        bool rowWritten = false;
        bool read = false;         // its own text is in
        bool provisional = false;  // row says "read again" until all members are in
    };

    [[nodiscard]] IndexMode WritingMode() const;
    [[nodiscard]] CommitBounds Bounds() const;
    void RunInto(const std::string& indexFile, bool created);
    // Making an index anew: IndexRunAnew.cpp.
    void Create();
    void Rebuild(const std::string& indexFile, bool damaged);
    void Mend(const std::string& indexFile, const std::string& damaged);
    [[nodiscard]] bool IsStillWhole(const std::string& indexFile) const;
    void SettleAndClose();
    void AddKnownFiles(FolderScan& scan);
    void TellWhatIsMissing();
    void ReadAddList(FolderScan& scan) const;
    void RemoveListed();
    void RemoveFolder(const QString& folder);
    void ReadFiles(FolderScan& scan);
    void Write(const ReadQueue::Event& event, ReadQueue& queue);
    void WriteDocument(IncomingDocument& document, ReadQueue& queue);
    void FinishFile(const FinishedFile& file);
    void WriteByName(const ScanItem& item, FileState& state, const FinishedFile& file,
                     const std::string& reason);
    std::int64_t Claim(const ScanItem& item, FileState& state);
    DocumentRow Row(const ScanItem& item, const DocumentHead& head, std::int64_t id);
    void Report(const ScanItem& item, const std::string& member, ReadState state,
                const std::string& reason);
    [[nodiscard]] std::string MachinePath(const ScanItem& item) const;
    void Compress();

    const IndexJob& m_job;
    Progress& m_progress;
    IndexReport& m_report;
    Alphabet m_alphabet;
    std::string m_alphabetText;
    // In this order: what is open is closed before it is removed, and all of that under the lock.
    std::optional<WriterLock> m_lock;
    std::optional<Replacement> m_fresh; // used where an index is made anew
    std::unique_ptr<IndexFile> m_index;
    std::unique_ptr<DocumentStore> m_store;
    std::unique_ptr<DamagedIndex> m_damaged; // that is being replaced, until it has told what it knows
    FolderScan* m_scan = nullptr;
    std::vector<FileState> m_files; // by item
    std::string m_folderName;       // logical name in capitals of m_folderPath
    std::string m_folderPath;
};

// Logical names, in capitals and as the index spells them, of the files that the job takes out by
// its list. Throws IndexError.
[[nodiscard]] QStringList ReadRemoveList(const IndexJob& job);

// Content of the alphabet file at a logical path; empty when there is none.
// Throws IndexError when it cannot be read.
[[nodiscard]] std::string ReadAlphabetFile(const QString& logicalPath);
// The alphabet in that file. Throws IndexError, naming file and line.
[[nodiscard]] Alphabet LoadAlphabet(const QString& logicalPath);
// Its canonical form.
[[nodiscard]] std::string AlphabetOf(const QString& logicalPath);

} // namespace engine
