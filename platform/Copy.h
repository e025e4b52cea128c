// Copying and moving one file, link or folder entry, with all that belongs to it.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
// All paths are machine paths. Names never hold half a content: a copy gets its name when it is
// whole and on the disk.
#pragma once

#include "platform/SystemError.h"

#include <QString>
#include <functional>
#include <memory>
#include <optional>

namespace platform {

enum class OwnKind { File, Folder, Link, Special };

/// What an entry itself is: links are not followed.
struct OwnStatus {
    OwnKind kind = OwnKind::Special;
    qint64 size = 0;       ///< bytes
    qint64 allocated = 0;  ///< bytes of the disk that it takes
    qint64 modifiedNs = 0; ///< nanoseconds since 1970 UTC
    quint64 device = 0;
    quint64 number = 0; ///< inode: with `device`, the identity

    [[nodiscard]] bool IsSameEntry(const OwnStatus& other) const {
        return device == other.device && number == other.number;
    }
    /// The same entry, and nobody has written to it meanwhile.
    [[nodiscard]] bool IsUnchanged(const OwnStatus& other) const {
        return IsSameEntry(other) && size == other.size && modifiedNs == other.modifiedNs;
    }
};

/// Nothing when there is no such name, or `error` (may be null) tells why it could not be asked.
[[nodiscard]] std::optional<OwnStatus> OwnStatusOf(const QString& path,
                                                   SystemError* error = nullptr);

struct CopyOptions {
    /// The copy is to take the place of this entry; of any other one it is EEXIST.
    std::optional<OwnStatus> replaces;
    /// The source will be removed: its owner goes along where that is allowed, the name is synced,
    /// and a source that changes meanwhile is a failure (ESTALE).
    bool forMove = false;
    /// Told the bytes as they are done; false stops the copy (ECANCELED), nothing stays of it.
    std::function<bool(qint64 bytes)> progress;
};

struct CopyOutcome {
    SystemError error;
    bool atTarget = false; ///< the failure lies on the target's side

    [[nodiscard]] bool Ok() const { return error.Ok(); }
};

class Draft;

/// The copy of a regular file in steps, so that many small ones share the wait for the disk: Fill,
/// Sync, Place. Without the last nothing stays of it.
class FileCopy {
  public:
    FileCopy();
    ~FileCopy();
    FileCopy(const FileCopy&) = delete;
    FileCopy& operator=(const FileCopy&) = delete;

    /// Content and all that belongs to it, without a name.
    [[nodiscard]] CopyOutcome Fill(const QString& from, const QString& to,
                                   const CopyOptions& options);
    [[nodiscard]] SystemError Sync();
    /// Puts all that waits for this disk on it, this copy and its like included. False when the
    /// disk cannot vouch for them: Sync each.
    [[nodiscard]] bool SyncDisk() const;
    /// EEXIST when the name is taken. With `sync` the name is on the disk too.
    [[nodiscard]] SystemError Place(const QString& to, const CopyOptions& options, bool sync);

  private:
    std::unique_ptr<Draft> m_draft;
};

/// Copies a regular file: content (holes stay holes, and the disk shares the bytes where it can),
/// times, mode, extended attributes and access lists. EEXIST when the name is taken.
[[nodiscard]] CopyOutcome CopyFileEntry(const QString& from, const QString& to,
                                        const CopyOptions& options);
/// Makes a link with the same text as the link `from`.
[[nodiscard]] CopyOutcome CopyLinkEntry(const QString& from, const QString& to,
                                        const CopyOptions& options);
/// Makes a folder, by default closed to all others; EEXIST when the name is taken. The mode is cut
/// by the user's mask.
[[nodiscard]] SystemError MakeFolder(const QString& path, unsigned mode = 0700);
/// Gives a new folder the rights and times of `from`, after its content is there, and syncs it.
[[nodiscard]] CopyOutcome FinishFolder(const QString& from, const QString& to, bool forMove);

/// Moves an entry within its file system: EXDEV when `to` lies on another, EEXIST when the name is
/// taken by anything but what `options` says.
[[nodiscard]] SystemError MoveEntry(const QString& from, const QString& to,
                                    const CopyOptions& options);
/// Removes a file, link or special file, or an empty folder; no failure when it is gone already.
[[nodiscard]] SystemError RemoveEntry(const QString& path, bool isFolder);

/// Whether `folder` is `path` or lies below it, whatever links lead there.
[[nodiscard]] bool IsWithin(const QString& folder, const QString& path);

} // namespace platform
