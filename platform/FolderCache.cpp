// Cached folder listings that answer which names a folder holds in any case.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/FolderCache.h"

#include "platform/FileSystemKind.h"
#include "platform/LogicalPath.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

constexpr qsizetype kMostNames = 1'000'000; // some 40 bytes each
constexpr qsizetype kMostFolders = 4096;
constexpr qint64 kSecond = 1'000'000'000;
constexpr qint64 kCoarseMargin = 3 * kSecond; // FAT counts in steps of two seconds
constexpr qint64 kFarLifetime = 3 * kSecond;  // until then another machine's change may go unseen

qint64 Nanoseconds(const timespec& time) {
    return time.tv_sec * kSecond + time.tv_nsec;
}

qint64 Now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return Nanoseconds(time);
}

/// What changes when a name enters or leaves a folder. The
/// status change time cannot be set back by hand.
struct Stamp {
    quint64 device = 0;
    quint64 number = 0;
    qint64 modified = 0;
    qint64 changed = 0;

    explicit Stamp(const struct stat& status)
        : device(status.st_dev), number(status.st_ino), modified(Nanoseconds(status.st_mtim)),
          changed(Nanoseconds(status.st_ctim)) {}
    bool operator==(const Stamp&) const = default;
};

quint32 HashOf(const QString& capitals) {
    return static_cast<quint32>(qHash(capitals, 0));
}

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

} // namespace

/// The names of one folder as they were read at one moment.
class FolderNames {
  public:
    static std::shared_ptr<const FolderNames> Read(const QByteArray& folder);

    QList<QByteArray> Spellings(const QString& capitals) const;
    qsizetype Count() const { return static_cast<qsizetype>(m_index.size()); }
    bool IsOf(const Stamp& stamp) const { return m_stamp == stamp; }
    /// No name can have come or gone under this stamp without changing it.
    bool IsSettled() const;
    /// The stamp moves with every change made on this machine, at the clock's own pace.
    bool IsPrecise() const { return m_precise; }

  private:
    struct Entry {
        quint32 hash;
        quint32 offset;
    };
    explicit FolderNames(const Stamp& stamp) : m_stamp(stamp) {}
    void Add(const char* name);

    QByteArray m_text; ///< the names, each with its closing zero
    std::vector<Entry> m_index;
    Stamp m_stamp;
    qint64 m_readAt = 0; ///< by the clock that stamps files
    qint64 m_readAtMonotonic = 0;
    bool m_precise = false;
    bool m_far = false;
};

std::shared_ptr<const FolderNames> FolderNames::Read(const QByteArray& folder) {
    const qint64 readAt =
        Now(CLOCK_REALTIME_COARSE); // before the stamp: what comes later bears a later one
    std::unique_ptr<DIR, CloseFolder> handle(opendir(folder.constData()));
    struct stat status {};
    if (!handle || fstat(dirfd(handle.get()), &status) != 0) {
        return nullptr;
    }
    std::shared_ptr<FolderNames> names(new FolderNames(Stamp(status)));
    while (const dirent* entry = readdir(handle.get())) {
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
            names->Add(entry->d_name);
        }
    }
    std::sort(names->m_index.begin(), names->m_index.end(),
              [](const Entry& a, const Entry& b) { return a.hash < b.hash; });
    struct statfs system {};
    names->m_far = fstatfs(dirfd(handle.get()), &system) != 0 || IsNetworkMagic(system.f_type);
    // File systems that count in seconds or hundredths leave zeros at the end.
    names->m_precise = !names->m_far && names->m_stamp.changed % 1'000'000 != 0;
    names->m_readAt = readAt;
    names->m_readAtMonotonic = Now(CLOCK_MONOTONIC);
    return names;
}

void FolderNames::Add(const char* name) {
    const auto length = static_cast<qsizetype>(std::strlen(name));
    const QString capitals = Capitals(DecodeName(QByteArray::fromRawData(name, length)));
    m_index.push_back({HashOf(capitals), static_cast<quint32>(m_text.size())});
    m_text.append(name, length + 1);
}

QList<QByteArray> FolderNames::Spellings(const QString& capitals) const {
    QList<QByteArray> found;
    const quint32 hash = HashOf(capitals);
    auto entry = std::lower_bound(m_index.begin(), m_index.end(), hash,
                                  [](const Entry& e, quint32 wanted) { return e.hash < wanted; });
    for (; entry != m_index.end() && entry->hash == hash; ++entry) {
        const QByteArray name(m_text.constData() + entry->offset);
        if (Capitals(DecodeName(name)) == capitals) {
            found += name;
        }
    }
    std::sort(found.begin(), found.end()); // the order of UTF-8 bytes is that of code points
    return found;
}

bool FolderNames::IsSettled() const {
    const qint64 age = m_readAt - std::max(m_stamp.modified, m_stamp.changed);
    const bool fresh = !m_far || Now(CLOCK_MONOTONIC) - m_readAtMonotonic < kFarLifetime;
    return fresh && age > (m_precise ? 0 : kCoarseMargin);
}

FolderCache::FolderCache() = default;
FolderCache::~FolderCache() = default;

QList<QByteArray> FolderCache::Spellings(const QByteArray& folder, const QByteArray& name,
                                         bool& readable) {
    readable = true;
    const QString capitals = Capitals(DecodeName(name));
    const QByteArray path = folder.isEmpty() ? QByteArray("/") : folder;
    struct stat status {};
    if (stat(path.constData(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return {};
    }
    if (const auto known = Known(path); known && known->IsOf(Stamp(status))) {
        const QList<QByteArray> spellings = known->Spellings(capitals);
        // A coarse stamp never settles soon enough for a walk over a
        // fresh folder: there a hit is believed.
        if (known->IsSettled() || (!known->IsPrecise() && !spellings.isEmpty())) {
            return spellings;
        }
    }
    ++m_reads;
    const auto names = FolderNames::Read(path);
    if (!names) {
        readable = errno != EACCES;
        return {};
    }
    Keep(path, names);
    return names->Spellings(capitals);
}

std::shared_ptr<const FolderNames> FolderCache::Known(const QByteArray& folder) {
    const std::lock_guard lock(m_mutex);
    const auto slot = m_slots.find(folder);
    if (slot == m_slots.end()) {
        return nullptr;
    }
    slot->lastUse = ++m_useCount;
    return slot->names;
}

void FolderCache::Keep(const QByteArray& folder, std::shared_ptr<const FolderNames> names) {
    const std::lock_guard lock(m_mutex);
    Slot& slot = m_slots[folder];
    m_nameCount += names->Count() - (slot.names ? slot.names->Count() : 0);
    slot = {std::move(names), ++m_useCount};
    if (m_nameCount > kMostNames || m_slots.size() > kMostFolders) {
        DropOldestHalf();
    }
}

void FolderCache::DropOldestHalf() {
    std::vector<quint64> uses;
    for (const Slot& slot : std::as_const(m_slots)) {
        uses.push_back(slot.lastUse);
    }
    const auto middle = uses.begin() + static_cast<std::ptrdiff_t>(uses.size() / 2);
    std::nth_element(uses.begin(), middle, uses.end());
    const quint64 oldestKept = *middle;
    m_slots.removeIf(
        [&](QHash<QByteArray, Slot>::iterator slot) { return slot->lastUse < oldestKept; });
    m_nameCount = 0;
    for (const Slot& slot : std::as_const(m_slots)) {
        m_nameCount += slot.names->Count();
    }
}

} // namespace platform
