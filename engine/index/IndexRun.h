// One run of an index job, on the thread that writes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/IndexJob.h"
#include "engine/index/DocumentStore.h"
#include "engine/index/FolderScan.h"
#include "engine/index/Progress.h"
#include "engine/index/ReadQueue.h"

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

    void RunInto(const std::string& indexFile, bool created);
    void RebuildInto(const std::string& indexFile);
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
    std::unique_ptr<IndexFile> m_index;
    std::unique_ptr<DocumentStore> m_store;
    FolderScan* m_scan = nullptr;
    std::vector<FileState> m_files; // by item
    std::string m_folderName;       // logical name in capitals of m_folderPath
    std::string m_folderPath;
};

// Content of the alphabet file at a logical path; empty when there is none.
// Throws IndexError when it cannot be read.
[[nodiscard]] std::string ReadAlphabetFile(const QString& logicalPath);
// The alphabet in that file. Throws IndexError, naming file and line.
[[nodiscard]] Alphabet LoadAlphabet(const QString& logicalPath);
// Its canonical form.
[[nodiscard]] std::string AlphabetOf(const QString& logicalPath);

} // namespace engine
