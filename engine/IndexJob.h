// Brings an index in step with the disk: creates it, adds, renews and removes documents.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"
#include "engine/readers/DocumentSink.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace engine {

// Told of a job's progress on the thread that called Execute, at most some thirty times a second.
class StatusHandler {
  public:
    virtual ~StatusHandler() = default;
    virtual void ReceiveProgress(int percent) = 0; // of the whole job, 0 to 100
    // 1 start, 2 creating the index, 3 looking for what has changed, 4 reading, 5 taking out
    // words, 6 adding words, 7 compressing, 8 done
    virtual void ReceiveStep(int step) = 0;
    // A file that has been read: its machine path, as a person sees it; percentDone of that file.
    virtual void ReceiveFileInfo(const QString& name, int percentDone) = 0;
    // The files that have been read since the last call, each once, oldest first. A handler that
    // can take them together need not be called for each.
    virtual void ReceiveFiles(const QStringList& names, int percentDone) {
        for (const QString& name : names)
            ReceiveFileInfo(name, percentDone);
    }
    [[nodiscard]] virtual bool CheckForAbort() = 0;
};

// A document that could not be read, or only in part; or a folder that could not be looked at.
struct Problem {
    QString file;   // machine path; members as path>…|member
    ReadState state = ReadState::Failed;
    QString reason; // short English clause
};

struct IndexReport {
    bool aborted = false;
    std::uint64_t added = 0, changed = 0, removed = 0, unchanged = 0; // files
    std::uint64_t documents = 0; // written in this run, members of containers included
    std::vector<Problem> problems; // of this run
    // Machine path where a damaged index was set aside; a new one stands in its place. It holds what
    // the job adds and, as far as that could be found out, the files that the damaged one knew.
    // Empty: nothing of the kind has happened.
    QString damagedKept;
    // Since a damaged index was replaced, in this run or an earlier one: what else it held could not
    // be found out. Ends with a run over the whole archive.
    bool otherFoldersMissing = false;
    // Set when the job could not go on; what was committed before stays.
    std::optional<IndexFault> fault;
    QString faultText; // the system's words
};

// Paths are logical paths in any case. Fields are set by the caller before Execute.
struct IndexJob {
    QString IndexPath;         // folder of the index; made when missing
    QString IndexName;         // for people; not used to find the index
    bool ActionCreate = false; // a new index in place of the old one
    bool ActionAdd = true;
    // Files that could not be read, or only in part, or that hold a document of which that is true
    // are read again, though unchanged; they count as changed. Without it they are tried again
    // only when they change, or by a program whose readers can do more.
    bool ActionRetry = false;
    bool ActionCompress = false;
    bool ActionRemoveDeleted = false; // documents whose files are gone leave the index
    bool ActionRemoveListed = false;
    QString ToAddFileListName; // text file, UTF-8: a path a line, "<+>" behind a folder
    QString ToRemoveListName;  // text file, UTF-8: a path a line
    bool WholeArchive = false; // the add list names everything that the index is to hold
    QStringList ToRemoveFolders; // every document below leaves, whether its file is there or not
    // Other computers may open the index, wherever it lies: searches there wait for each commit,
    // which comes sooner.
    bool Shared = false;
    QString IncludeFilters = QStringLiteral("*");
    QString ExcludeFilters;
    QString AlphabetFile;      // may be missing
    QString WorkerProgram;     // machine path of velmora-worker; empty: DefaultWorkerProgram
    int Workers = 0;           // 0: as many as there are cores
    int TimeLimit = 120;       // seconds that reading one file may take
    // A commit follows when that much has gathered: what a kill can cost at most.
    std::uint64_t CommitText = std::uint64_t{64} << 20; // bytes of text
    int CommitTime = 20;                                // seconds
    engine::StatusHandler* StatusHandler = nullptr; // may be null

    // Runs to the end on threads of its own while this one tells the handler. An index that turns
    // out to be damaged is replaced on the way. Never throws.
    [[nodiscard]] IndexReport Execute() const;
};

// Machine path of the worker program: beside the running executable, or where it is installed.
[[nodiscard]] QString DefaultWorkerProgram();

} // namespace engine
