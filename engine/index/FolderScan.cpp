// Walks the listed folders and compares them with the rows of the index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/FolderScan.h"

#include "platform/Names.h"

#include <algorithm>
#include <utility>

namespace engine {
namespace {

QString Path(const std::string& bytes) { return platform::DecodeName(QByteArray::fromStdString(bytes)); }

std::string Bytes(const QString& path) { return platform::EncodeName(path).toStdString(); }

std::string Join(const std::string& folder, const std::string& name) {
    return folder == "/" ? folder + name : folder + "/" + name;
}

std::string ParentOf(const std::string& path) {
    const auto slash = path.find_last_of('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

bool IsWithin(const std::string& path, const std::string& place) {
    return path == place || place == "/" ||
           (path.size() > place.size() && path.compare(0, place.size(), place) == 0 &&
            path[place.size()] == '/');
}

// The index's own files change while it is written.
bool IsOwnFile(const std::string& name) { return name.rfind(kIndexFileName, 0) == 0; }

// Newer readers may also find something in what had nothing to read.
bool IsUnread(ReadState state, bool oldReaders) {
    return state != ReadState::Read && (oldReaders || state != ReadState::NameOnly);
}

} // namespace

FolderScan::FolderScan(IndexFile& index, const NameFilter& filter, Retry retry, KeepGoing keepGoing)
    : m_index(index), m_filter(filter), m_retry(retry), m_keepGoing(std::move(keepGoing)),
      m_findFolder(index.Db(), "SELECT id FROM folder WHERE path = ?1", sqlite::Use::Often),
      m_findFiles(index.Db(),
                  "SELECT id, file, size, modified, state, readers, kind FROM document "
                  "WHERE folder = ?1 AND parent = 0",
                  sqlite::Use::Often),
      m_findStates(index.Db(), "SELECT DISTINCT state FROM document WHERE parent = ?1 AND parent <> 0",
                   sqlite::Use::Often) {
    sqlite::Statement places(index.Db(), "SELECT path, device FROM place");
    while (places.Step())
        m_places[std::string(places.Blob(0))] = static_cast<std::uint64_t>(places.Int64(1));
}

std::uint32_t FolderScan::FolderNumber(const std::string& path) {
    if (m_folders.empty() || m_folders.back() != path)
        m_folders.push_back(path);
    return static_cast<std::uint32_t>(m_folders.size() - 1);
}

FolderScan::KnownFiles FolderScan::KnownIn(const std::string& path) {
    KnownFiles known;
    m_findFolder.BindBlob(1, path);
    if (m_findFolder.Step()) {
        m_findFiles.Bind(1, m_findFolder.Int64(0));
        while (m_findFiles.Step())
            known[std::string(m_findFiles.Blob(1))] = {
                m_findFiles.Int64(0), m_findFiles.Int64(2), m_findFiles.Int64(3),
                static_cast<ReadState>(m_findFiles.Int(4)), m_findFiles.Int(5),
                static_cast<Kind>(m_findFiles.Int(6))};
        m_findFiles.Reset();
    }
    m_findFolder.Reset();
    return known;
}

void FolderScan::AddTree(const std::string& path) {
    const auto status = platform::StatusOf(Path(path));
    if (!status || !status->IsFolder()) {
        problems.push_back({path, "the folder is not there"});
        return;
    }
    if (m_places.count(path) != 0 && PlaceIsAway(path)) {
        problems.push_back({path, "the folder is empty: its drive or share is not there"});
        return;
    }
    // The stack holds folders still to be visited, each with the device of the one above.
    std::vector<std::pair<std::string, std::uint64_t>> waiting{{path, status->device}};
    bool isRoot = true;
    while (!waiting.empty() && m_keepGoing()) {
        const auto [folder, device] = std::move(waiting.back());
        waiting.pop_back();
        std::vector<std::string> below;
        ScanFolder(folder, device, isRoot, below);
        isRoot = false;
        const std::uint64_t own = m_newPlaces.count(folder) != 0 ? m_newPlaces[folder] : device;
        for (auto each = below.rbegin(); each != below.rend(); ++each)
            waiting.emplace_back(std::move(*each), own);
    }
}

void FolderScan::ScanFolder(const std::string& path, std::uint64_t parentDevice, bool isRoot,
                            std::vector<std::string>& below) {
    if (!m_scanned.insert(path).second)
        return;
    const auto device = platform::DeviceOf(Path(path)).value_or(parentDevice);
    const platform::FolderListing listing = platform::ListFolder(Path(path));
    if (!listing.error.Ok())
        problems.push_back({path, listing.error.text.toStdString()});
    if (!listing.entries.empty() && (isRoot || device != parentDevice))
        NotePlace(path, device);
    if (!isRoot && listing.entries.empty() && m_places.count(path) != 0 && PlaceIsAway(path)) {
        problems.push_back({path, "the folder is empty: its drive or share is not there"});
        return;
    }
    KnownFiles known = KnownIn(path);
    std::vector<std::pair<std::string, const platform::FolderEntry*>> files;
    for (const platform::FolderEntry& entry : listing.entries) {
        std::string name = Bytes(entry.name);
        if (entry.kind == platform::EntryKind::Folder)
            below.push_back(Join(path, name));
        else if (entry.kind == platform::EntryKind::File)
            files.emplace_back(std::move(name), &entry);
    }
    // In the order of the names: neighbours on the disk and in the index stay neighbours.
    std::sort(files.begin(), files.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    std::sort(below.begin(), below.end());
    const std::uint32_t folder = FolderNumber(path);
    for (const auto& [name, entry] : files) {
        const auto found = known.find(name);
        const Known* old = found == known.end() ? nullptr : &found->second;
        const bool single = !m_single.empty() && m_single.count(Join(path, name)) != 0;
        if (!single && m_filter.Takes(name) && !IsOwnFile(name))
            Compare(folder, name, *entry, old);
        if (old != nullptr)
            known.erase(found);
    }
    if (listing.error.Ok())
        for (const auto& [name, gone] : known)
            deleted.push_back(gone.id);
}

void FolderScan::Compare(std::uint32_t folder, const std::string& file,
                         const platform::FileStatus& status, const Known* known) {
    const bool same = known != nullptr && known->size == status.size &&
                      known->modified == status.modifiedNs;
    if (same) {
        const bool oldReaders = known->readers < kReadersVersion;
        if ((!oldReaders && m_retry == Retry::NewReaders) || !HoldsUnread(*known, oldReaders)) {
            ++unchanged;
            if (oldReaders && MayHoldOthers(known->kind))
                nothingToGain.push_back(known->id);
            return;
        }
    }
    // A name is all that there is of some.
    const bool keepOld = same && known->state != ReadState::Unknown &&
                         known->state != ReadState::NameOnly;
    items.push_back({folder, file, status.size, status.modifiedNs,
                     known != nullptr ? known->id : 0, keepOld});
}

bool FolderScan::HoldsUnread(const Known& known, bool oldReaders) {
    bool unread = IsUnread(known.state, oldReaders);
    if (unread || !MayHoldOthers(known.kind))
        return unread;
    m_findStates.Bind(1, known.id);
    while (!unread && m_findStates.Step())
        unread = IsUnread(static_cast<ReadState>(m_findStates.Int(0)), oldReaders);
    m_findStates.Reset();
    return unread;
}

void FolderScan::AddFile(const std::string& path) {
    const auto status = platform::StatusOf(Path(path));
    const std::string folder = ParentOf(path);
    const std::string file = path.substr(path.find_last_of('/') + 1);
    if (!status || status->kind != platform::EntryKind::File) {
        problems.push_back({path, "the file is not there"});
        return;
    }
    if (WasScanned(folder, file))
        return;
    m_single.insert(path);
    const KnownFiles known = KnownIn(folder);
    const auto found = known.find(file);
    if (m_filter.Takes(file) && !IsOwnFile(file))
        Compare(FolderNumber(folder), file, *status, found == known.end() ? nullptr : &found->second);
}

bool FolderScan::WasScanned(const std::string& folder, const std::string& file) const {
    return m_scanned.count(folder) != 0 || m_single.count(Join(folder, file)) != 0;
}

void FolderScan::Know(const Places& places) {
    m_places.insert(places.begin(), places.end());
}

void FolderScan::AddKnown(const std::string& folder, const std::string& file) {
    if (WasScanned(folder, file) || !m_filter.Takes(file) || IsOwnFile(file))
        return;
    if (const std::string* place = AwayPlaceOf(folder)) {
        const auto told = [&](const ScanProblem& problem) { return problem.path == *place; };
        if (std::none_of(problems.begin(), problems.end(), told))
            problems.push_back({*place, "the folder is not there"});
        return;
    }
    const auto status = platform::StatusOf(Path(Join(folder, file)));
    if (status && status->kind == platform::EntryKind::File)
        Compare(FolderNumber(folder), file, *status, nullptr);
}

void FolderScan::FindDeleted() {
    std::vector<std::pair<std::int64_t, std::string>> folders;
    sqlite::Statement all(m_index.Db(), "SELECT id, path FROM folder");
    while (all.Step())
        if (std::string path(all.Blob(1)); m_scanned.count(path) == 0)
            folders.emplace_back(all.Int64(0), std::move(path));
    for (const auto& [id, path] : folders) {
        if (!m_keepGoing())
            return;
        if (AwayPlaceOf(path) == nullptr)
            FindDeletedIn(id, path);
    }
}

void FolderScan::FindDeletedIn(std::int64_t folderId, const std::string& path) {
    std::unordered_set<std::string> there;
    const bool exists = platform::Exists(Path(path));
    if (exists) {
        const platform::FolderListing listing = platform::ListFolder(Path(path));
        if (!listing.error.Ok()) {
            problems.push_back({path, listing.error.text.toStdString()});
            return;
        }
        for (const platform::FolderEntry& entry : listing.entries)
            there.insert(Bytes(entry.name));
    }
    m_findFiles.Bind(1, folderId);
    while (m_findFiles.Step())
        if (there.count(std::string(m_findFiles.Blob(1))) == 0)
            deleted.push_back(m_findFiles.Int64(0));
    m_findFiles.Reset();
}

const std::string* FolderScan::AwayPlaceOf(const std::string& path) {
    for (const auto& [place, device] : m_places)
        if (IsWithin(path, place) && PlaceIsAway(place))
            return &place;
    return nullptr;
}

// A drive that is not mounted leaves an empty folder on another device, or none at all. Nobody
// can tell that from a folder whose every file was deleted, unless the device is still the same.
bool FolderScan::PlaceIsAway(const std::string& place) {
    if (const auto known = m_away.find(place); known != m_away.end())
        return known->second;
    const auto device = platform::DeviceOf(Path(place));
    const bool away =
        !device || (*device != m_places[place] && platform::ListFolder(Path(place)).entries.empty());
    return m_away[place] = away;
}

void FolderScan::NotePlace(const std::string& path, std::uint64_t device) {
    m_newPlaces[path] = device;
}

void FolderScan::StorePlaces() {
    sqlite::Statement set(m_index.Db(), "INSERT OR REPLACE INTO place VALUES(?1, ?2)");
    for (const auto& [path, device] : m_newPlaces) {
        const auto known = m_places.find(path);
        if (known != m_places.end() && known->second == device)
            continue;
        set.BindBlob(1, path).Bind(2, static_cast<std::int64_t>(device)).Run();
    }
}

} // namespace engine
