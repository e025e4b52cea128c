// Compares the disk with the index: what is new, changed, gone, and what cannot be reached now.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"
#include "engine/index/NameFilter.h"
#include "engine/readers/Reader.h"
#include "platform/Files.h"

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace engine {

// A file that has to be read. Paths are machine paths, as bytes.
struct ScanItem {
    std::uint32_t folder = 0;  // index into FolderScan::Folders
    std::string file;
    std::int64_t size = 0;
    std::int64_t modified = 0; // nanoseconds since 1970
    std::int64_t oldId = 0;    // the document it replaces, 0 for a new one
    bool keepOld = false;      // what is known of it still holds: nothing new is no news
};

// A folder or file of the request that could not be looked at.
struct ScanProblem {
    std::string path;
    std::string reason;
};

// Listed folders and mount points, with the device that they were last on.
using Places = std::unordered_map<std::string, std::uint64_t>;

// Which unchanged files are read again.
enum class Retry : std::uint8_t {
    NewReaders, // what older readers could not read, or only in part
    Unread,     // and what these readers could not, as a person asks for it
};

class FolderScan {
  public:
    using KeepGoing = std::function<bool()>;
    // keepGoing is asked often; false ends the scan early, with what was found so far.
    FolderScan(IndexFile& index, const NameFilter& filter, Retry retry, KeepGoing keepGoing);

    // Looks at a folder with all below it, or at one file.
    void AddTree(const std::string& path);
    void AddFile(const std::string& path);
    // Looks, last of all, at a file that a replaced index knew: what is gone is passed over.
    void AddKnown(const std::string& folder, const std::string& file);
    // Adds what a replaced index remembered of listed folders and mount points.
    void Know(const Places& places);
    // Looks for documents whose files are gone, in the whole index. What lies under a place that
    // is not there now (a share, a drive, a listed folder) stays.
    void FindDeleted();

    std::vector<ScanItem> items;
    std::vector<std::int64_t> deleted;
    // Unchanged containers of older readers that need not be asked for their members once more.
    std::vector<std::int64_t> nothingToGain;
    std::vector<ScanProblem> problems;
    std::uint64_t unchanged = 0;
    [[nodiscard]] const std::string& FolderPath(const ScanItem& item) const {
        return m_folders[item.folder];
    }
    // Remembers which listed folders and mount points there are, for the next FindDeleted.
    void StorePlaces();

  private:
    struct Known {
        std::int64_t id, size, modified;
        ReadState state;
        int readers;
        Kind kind;
    };
    using KnownFiles = std::unordered_map<std::string, Known>;

    void ScanFolder(const std::string& path, std::uint64_t parentDevice, bool isRoot,
                    std::vector<std::string>& below);
    KnownFiles KnownIn(const std::string& path);
    void Compare(std::uint32_t folder, const std::string& file, const platform::FileStatus& status,
                 const Known* known);
    [[nodiscard]] bool HoldsUnread(const Known& known, bool oldReaders);
    void FindDeletedIn(std::int64_t folderId, const std::string& path);
    [[nodiscard]] bool WasScanned(const std::string& folder, const std::string& file) const;
    [[nodiscard]] const std::string* AwayPlaceOf(const std::string& path);
    [[nodiscard]] bool PlaceIsAway(const std::string& place);
    void NotePlace(const std::string& path, std::uint64_t device);
    std::uint32_t FolderNumber(const std::string& path);

    IndexFile& m_index;
    const NameFilter& m_filter;
    Retry m_retry;
    KeepGoing m_keepGoing;
    std::vector<std::string> m_folders;
    std::unordered_set<std::string> m_scanned;
    std::unordered_set<std::string> m_single; // listed as files, not through a folder
    Places m_places;
    std::unordered_map<std::string, bool> m_away;
    Places m_newPlaces;
    sqlite::Statement m_findFolder, m_findFiles, m_findStates;
};

} // namespace engine
