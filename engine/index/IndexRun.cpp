// From the disk into the index: scan, read in workers, write.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/IndexRun.h"

#include "engine/index/ChunkSources.h"
#include "engine/index/DamageNote.h"
#include "engine/index/Paths.h"
#include "engine/index/ReadTask.h"
#include "engine/readers/ReadRequest.h"
#include "engine/readers/Reader.h"
#include "platform/LogicalPath.h"
#include "workers/Pool.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace engine {
namespace {

// Where searches have to wait for a commit.
constexpr std::uint64_t kSharedCommitText = std::uint64_t{16} << 20; // bytes
constexpr int kSharedCommitTime = 5;                                 // seconds

constexpr std::size_t kWorkerMemory = std::size_t{1} << 30;

std::string Words(workers::Ending ending, const std::string& message) {
    switch (ending) {
    case workers::Ending::CannotOpen:
        return message;
    case workers::Ending::Crashed:
        return "the reader crashed (" + message + ")";
    case workers::Ending::TimedOut:
        return "the reader took too long";
    case workers::Ending::OutOfMemory:
        return "the reader ran out of memory";
    case workers::Ending::BadAnswer:
        return "the reader gave a wrong answer (" + message + ")";
    default:
        return message.empty() ? "the reader gave up" : message;
    }
}

} // namespace

std::string ReadAlphabetFile(const QString& logicalPath) {
    if (logicalPath.isEmpty())
        return {};
    const QString path = platform::ToMachine(logicalPath);
    if (!platform::IsFile(path))
        return {};
    const platform::FileContent content = platform::ReadFile(path);
    if (!content.error.Ok())
        throw IndexError(IndexFault::NoRights,
                         (path + QStringLiteral(": ") + content.error.text).toStdString());
    return content.bytes.toStdString();
}

Alphabet LoadAlphabet(const QString& logicalPath) {
    try {
        return Alphabet::Parse(ReadAlphabetFile(logicalPath));
    } catch (const AlphabetError& error) {
        throw IndexError(IndexFault::Other,
                         platform::DisplayPath(logicalPath).toStdString() + ", " + error.what());
    }
}

std::string AlphabetOf(const QString& logicalPath) { return LoadAlphabet(logicalPath).Canonical(); }

IndexRun::IndexRun(const IndexJob& job, Progress& progress, IndexReport& report)
    : m_job(job), m_progress(progress), m_report(report) {}

void IndexRun::Run() {
    m_progress.SetStep(1);
    m_alphabet = LoadAlphabet(m_job.AlphabetFile);
    m_alphabetText = ReadAlphabetFile(m_job.AlphabetFile); // the workers parse it themselves
    const QString folder = platform::ToMachine(m_job.IndexPath);
    if (folder.isEmpty())
        throw IndexError(IndexFault::Missing, m_job.IndexPath.toStdString());
    if (const auto error = platform::CreateFolders(folder); !error.Ok())
        throw IndexError(error.code == ENOSPC ? IndexFault::DiskFull : IndexFault::NoRights,
                         (folder + QStringLiteral(": ") + error.text).toStdString());
    const std::string file =
        platform::EncodeName(folder + QLatin1Char('/')).toStdString() + kIndexFileName;
    RequireLocks(platform::EncodeName(folder).toStdString());
    m_lock.emplace(file);
    const std::string cutShort = CutShort(file);
    m_fresh.emplace(file);
    const bool exists = platform::Exists(PathText(file));
    if (m_job.ActionCreate && exists)
        return Rebuild(file, !cutShort.empty());
    if (!cutShort.empty())
        return Mend(file, cutShort);
    if (!exists) {
        Create();
        return RunInto(file, true);
    }
    if (IsDamageNoted(file) && !IsStillWhole(file))
        return Mend(file, file);
    try {
        return RunInto(file, false);
    } catch (const IndexError& error) {
        if (error.fault != IndexFault::Damaged)
            throw;
    } catch (const sqlite::Error& error) {
        if (Translate(error).fault != IndexFault::Damaged)
            throw;
    }
    Mend(file, file);
}

IndexMode IndexRun::WritingMode() const {
    return m_job.Shared ? IndexMode::UpdateShared : IndexMode::Update;
}

CommitBounds IndexRun::Bounds() const {
    CommitBounds bounds{m_job.CommitText, std::chrono::seconds(m_job.CommitTime)};
    if (m_job.Shared || platform::IsNetworkFileSystem(platform::ToMachine(m_job.IndexPath))) {
        bounds = {std::min(m_job.CommitText, kSharedCommitText),
                  std::chrono::seconds(std::min(m_job.CommitTime, kSharedCommitTime))};
    }
    return bounds;
}

void IndexRun::RunInto(const std::string& indexFile, bool created) {
    if (created)
        m_progress.SetStep(2);
    m_index = std::make_unique<IndexFile>(indexFile, WritingMode(), m_alphabet.Canonical());
    m_store = std::make_unique<DocumentStore>(*m_index, m_alphabet, Bounds());
    try {
        RemoveListed();
        for (const QString& folder : m_job.ToRemoveFolders)
            RemoveFolder(folder);
        m_progress.SetStep(3);
        const NameFilter filter(m_job.IncludeFilters.toStdString(), m_job.ExcludeFilters.toStdString());
        FolderScan scan(*m_index, filter, m_job.ActionRetry ? Retry::Unread : Retry::NewReaders,
                        [this] { return !m_progress.Aborted(); });
        m_scan = &scan;
        if (m_job.ActionAdd && !m_job.ToAddFileListName.isEmpty())
            ReadAddList(scan);
        if (m_damaged)
            AddKnownFiles(scan);
        if (m_job.ActionRemoveDeleted && !created)
            scan.FindDeleted();
        if (m_job.ActionRemoveDeleted && !m_progress.Aborted()) {
            for (const std::int64_t id : scan.deleted) {
                m_store->Remove(id);
                m_store->CommitIfDue();
                ++m_report.removed;
            }
        }
        for (const ScanProblem& problem : scan.problems)
            m_report.problems.push_back(
                {PathText(problem.path), ReadState::Failed, QString::fromStdString(problem.reason)});
        m_report.unchanged = scan.unchanged;
        for (const std::int64_t id : scan.nothingToGain) {
            m_store->MarkTried(id, kReadersVersion);
            m_store->CommitIfDue();
        }
        ReadFiles(scan);
        scan.StorePlaces();
        m_store->Commit();
        Compress();
    } catch (...) {
        m_store->Rollback();
        throw;
    }
    m_report.aborted = m_progress.Aborted();
    TellWhatIsMissing();
    m_progress.SetPercent(100);
    m_progress.SetStep(8);
}

void IndexRun::ReadAddList(FolderScan& scan) const {
    const platform::FileContent list =
        platform::ReadFile(platform::ToMachine(m_job.ToAddFileListName));
    if (!list.error.Ok())
        throw IndexError(IndexFault::Other, list.error.text.toStdString());
    for (QString line : QString::fromUtf8(list.bytes).split(QLatin1Char('\n'))) {
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        if (line.isEmpty())
            continue;
        const bool tree = line.endsWith(QLatin1String("<+>"));
        if (tree)
            line.chop(3);
        const std::string path = PathBytes(line);
        if (path.empty())
            scan.problems.push_back({line.toStdString(), "there is no such place on this machine"});
        else if (tree)
            scan.AddTree(path);
        else
            scan.AddFile(path);
    }
}

QStringList ReadRemoveList(const IndexJob& job) {
    if (!job.ActionRemoveListed || job.ToRemoveListName.isEmpty())
        return {};
    const platform::FileContent list = platform::ReadFile(platform::ToMachine(job.ToRemoveListName));
    if (!list.error.Ok())
        throw IndexError(IndexFault::Other, list.error.text.toStdString());
    QStringList names;
    for (QString line : QString::fromUtf8(list.bytes).split(QLatin1Char('\n'))) {
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        if (!line.isEmpty())
            names << WithoutMarks(platform::Capitals(line));
    }
    return names;
}

void IndexRun::RemoveListed() {
    sqlite::Statement find(m_index->Db(), "SELECT id FROM document WHERE name = ?1 AND parent = 0",
                           sqlite::Use::Often);
    for (const QString& name : ReadRemoveList(m_job)) {
        if (m_progress.Aborted())
            return;
        std::vector<std::int64_t> ids;
        find.Bind(1, name.toStdString());
        while (find.Step())
            ids.push_back(find.Int64(0));
        find.Reset();
        for (const std::int64_t id : ids) {
            m_store->Remove(id);
            m_store->CommitIfDue();
            ++m_report.removed;
        }
    }
}

void IndexRun::RemoveFolder(const QString& folder) {
    const std::string below = NamesBelow(folder);
    std::vector<std::int64_t> ids;
    sqlite::Statement find(m_index->Db(),
                           "SELECT id FROM document WHERE name >= ?1 AND name < ?2 AND parent = 0");
    find.Bind(1, below).Bind(2, BehindNames(below));
    while (find.Step())
        ids.push_back(find.Int64(0));
    find.Reset();
    for (const std::int64_t id : ids) {
        if (m_progress.Aborted())
            return;
        m_store->Remove(id);
        m_store->CommitIfDue();
        ++m_report.removed;
    }
}

void IndexRun::ReadFiles(FolderScan& scan) {
    if (scan.items.empty() || m_progress.Aborted())
        return;
    m_progress.SetStep(4);
    m_files.assign(scan.items.size(), {});
    workers::PoolOptions options;
    options.executable =
        (m_job.WorkerProgram.isEmpty() ? DefaultWorkerProgram() : m_job.WorkerProgram).toStdString();
    options.workers = m_job.Workers;
    options.memoryLimit = kWorkerMemory;
    options.timeLimit = std::chrono::seconds(m_job.TimeLimit);
    options.settings = {{kAlphabetSetting, m_alphabetText}};
    ReadQueue queue;
    workers::Pool pool(options);
    std::uint64_t totalWork = 0;
    constexpr std::uint64_t kPerFile = 4096; // opening a file costs about as much as reading that
    for (const ScanItem& item : scan.items)
        totalWork += static_cast<std::uint64_t>(item.size) + kPerFile;
    std::thread feeder([&] {
        for (std::size_t i = 0; i < scan.items.size() && !m_progress.Aborted(); ++i)
            pool.Add(std::make_unique<ReadTask>(queue, i, MachinePath(scan.items[i])));
        pool.Wait();
        queue.Close();
    });
    const auto stop = [&] {
        queue.Close();
        pool.Cancel();
        feeder.join();
    };
    try {
        std::uint64_t work = 0;
        std::size_t finished = 0;
        ReadQueue::Event event;
        while (finished < scan.items.size() && !m_progress.Aborted()) {
            if (!queue.Take(event))
                continue;
            // Without any worker nothing can be said about the documents.
            if (!event.document && event.file.ending == workers::Ending::Crashed)
                if (const std::string reason = pool.StartFailure(); !reason.empty())
                    throw IndexError(IndexFault::Other, reason);
            Write(event, queue);
            if (event.document)
                continue;
            const ScanItem& item = scan.items[event.file.item];
            ++finished;
            work += static_cast<std::uint64_t>(item.size) + kPerFile;
            m_progress.SetPercent(static_cast<int>(work * 99 / totalWork));
            m_progress.SetFile(MachinePath(item), 100);
            if (m_store->CommitIsDue()) {
                m_progress.SetStep(6);
                m_store->Commit();
            }
        }
    } catch (...) {
        stop();
        throw;
    }
    stop();
}

void IndexRun::Write(const ReadQueue::Event& event, ReadQueue& queue) {
    if (event.document)
        WriteDocument(*event.document, queue);
    else
        FinishFile(event.file);
}

std::string IndexRun::MachinePath(const ScanItem& item) const {
    const std::string& folder = m_scan->FolderPath(item);
    return folder == "/" ? folder + item.file : folder + "/" + item.file;
}

// The first thing that comes of a file makes room for it.
std::int64_t IndexRun::Claim(const ScanItem& item, FileState& state) {
    if (state.id == 0) {
        if (item.oldId != 0) {
            m_store->Remove(item.oldId);
            ++m_report.changed;
        } else {
            ++m_report.added;
        }
        state.id = m_store->NewId();
    }
    return state.id;
}

DocumentRow IndexRun::Row(const ScanItem& item, const DocumentHead& head, std::int64_t id) {
    const std::string& folder = m_scan->FolderPath(item);
    if (m_folderPath != folder || m_folderName.empty()) {
        m_folderPath = folder;
        m_folderName = IndexName(PathText(folder == "/" ? folder : folder + "/"));
    }
    DocumentRow row;
    row.id = id;
    row.folder = m_store->FolderId(folder);
    row.file = item.file;
    row.path = head.path;
    const QString file = platform::ToLogical(QLatin1Char('/') + PathText(item.file)).mid(1);
    row.name = m_folderName + platform::Capitals(WithoutMarks(file)).toStdString() +
               platform::Capitals(QString::fromStdString(head.path)).toStdString();
    row.display = head.path.empty() ? PathText(item.file).toStdString() : head.display;
    row.kind = head.kind;
    row.size = static_cast<std::int64_t>(head.size);
    row.modified = head.modified * 1'000'000'000;
    row.readers = kReadersVersion;
    return row;
}

void IndexRun::WriteDocument(IncomingDocument& document, ReadQueue& queue) {
    m_progress.SetStep(5);
    const ScanItem& item = m_scan->items[document.item];
    FileState& state = m_files[document.item];
    const std::int64_t fileId = Claim(item, state);
    QueuedChunks chunks(queue, document);
    ++m_report.documents;
    if (!document.head.path.empty()) {
        if (!state.rowWritten) {
            // Until the container itself comes, its row says that it is to be read again.
            DocumentRow row = Row(item, {}, fileId);
            row.modified = -1;
            NoChunks none;
            m_store->Insert(row, none);
            state.rowWritten = state.provisional = true;
        }
        DocumentRow row = Row(item, document.head, m_store->NewId());
        row.parent = fileId;
        m_store->Insert(row, chunks);
    } else {
        if (state.rowWritten)
            m_store->RemoveRow(fileId);
        DocumentRow row = Row(item, document.head, fileId);
        row.size = item.size;
        state.provisional = MayHoldOthers(static_cast<Kind>(document.head.kind));
        state.read = true;
        row.modified = state.provisional ? -1 : item.modified;
        m_store->Insert(row, chunks);
        state.rowWritten = true;
    }
    Report(item, document.head.path, chunks.End().state, chunks.End().reason);
}

void IndexRun::FinishFile(const FinishedFile& file) {
    const ScanItem& item = m_scan->items[file.item];
    FileState& state = m_files[file.item];
    if (file.ending == workers::Ending::Cancelled)
        return;
    if (file.ending == workers::Ending::Done && state.rowWritten) {
        // Its size and time are those of the moment it was opened: what was written to it
        // meanwhile is found by the next update.
        if (state.provisional || file.size != item.size || file.modified != item.modified)
            m_store->Touch(state.id, file.size, file.modified);
        return;
    }
    const std::string reason = Words(file.ending, file.message);
    const bool locked = file.ending == workers::Ending::CannotOpen;
    if ((locked || item.keepOld) && item.oldId != 0 && state.id == 0) {
        // What was readable before is not thrown away because it is locked today, or because
        // reading it once more comes to nothing.
        if (!locked)
            m_store->MarkTried(item.oldId, kReadersVersion);
        Report(item, {}, ReadState::Failed, reason);
        return;
    }
    WriteByName(item, state, file, reason);
}

void IndexRun::WriteByName(const ScanItem& item, FileState& state, const FinishedFile& file,
                           const std::string& reason) {
    const std::int64_t id = Claim(item, state);
    if (state.read) { // its own text is in; what is inside it is missing
        m_store->MarkPartly(id, item.size, item.modified, reason);
        Report(item, {}, ReadState::Partly, reason);
        return;
    }
    if (state.rowWritten)
        m_store->RemoveRow(id);
    DocumentRow row = Row(item, {}, id);
    row.size = item.size;
    // Without the right to open it there is nothing to remember: it is tried every time.
    row.modified = file.ending == workers::Ending::CannotOpen ? -1 : item.modified;
    NameChunk name(m_alphabet, row.display, ReadState::Failed, reason);
    m_store->Insert(row, name);
    ++m_report.documents;
    state.rowWritten = true;
    Report(item, {}, ReadState::Failed, reason);
}

void IndexRun::Report(const ScanItem& item, const std::string& member, ReadState state,
                      const std::string& reason) {
    if (state == ReadState::Read || state == ReadState::NameOnly)
        return;
    m_report.problems.push_back({PathText(MachinePath(item)) + MemberText(member), state,
                                 QString::fromStdString(reason)});
}

void IndexRun::Compress() {
    if (!m_job.ActionCompress || m_progress.Aborted() || !m_store->Changed())
        return;
    m_progress.SetStep(7);
    m_store->Compress(false, [this] { return !m_progress.Aborted(); });
}

} // namespace engine
