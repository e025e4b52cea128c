// Cached folder listings that answer which names a folder holds in any case.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <atomic>
#include <memory>
#include <mutex>

namespace platform {

class FolderNames;

/// May be called from any thread. A folder is read once and again only when its time stamp changed,
/// or when the stamp is too coarse or too young to tell a change.
class FolderCache {
  public:
    FolderCache();
    ~FolderCache();

    /// All spellings of `name` that the folder has, by code point; all as bytes. `readable` becomes
    /// false when the folder exists but its names may not be read.
    [[nodiscard]] QList<QByteArray> Spellings(const QByteArray& folder, const QByteArray& name,
                                              bool& readable);

    [[nodiscard]] qint64 Reads() const { return m_reads; }

  private:
    struct Slot {
        std::shared_ptr<const FolderNames> names;
        quint64 lastUse = 0;
    };
    [[nodiscard]] std::shared_ptr<const FolderNames> Known(const QByteArray& folder);
    void Keep(const QByteArray& folder, std::shared_ptr<const FolderNames> names);
    void DropOldestHalf();

    std::mutex m_mutex; ///< guards the slots, never held while a folder is read
    QHash<QByteArray, Slot> m_slots;
    qsizetype m_nameCount = 0;
    quint64 m_useCount = 0;
    std::atomic<qint64> m_reads = 0;
};

} // namespace platform
