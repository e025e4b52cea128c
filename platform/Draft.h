// A new file that gets its name only when it is whole and safe on the disk.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/Files.h"

#include <sys/types.h>

namespace platform {

/// The folder of a machine path, all as bytes: "/" for "/a", "." for a bare name.
[[nodiscard]] QByteArray FolderOf(const QByteArray& path);

/// Asks the system to put the names of the folder on the disk. What
/// cannot be synced (another's folder, some file systems) is no failure.
[[nodiscard]] SystemError SyncFolder(const QByteArray& folder);

/// Lies in the folder of the file that it is to become; removed at the end
/// of its life unless it has taken a name.
class Draft {
  public:
    /// Named: ".vms-….tmp", left behind by a kill. Nameless: the system removes it after a kill,
    /// where the file system can do that, else it is named.
    enum class Kind { Named, Nameless };

    Draft() = default;
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;
    ~Draft();

    [[nodiscard]] SystemError Create(const QByteArray& target, mode_t mode,
                                     Kind kind = Kind::Named);
    [[nodiscard]] SystemError Write(const char* bytes, qint64 size) const;
    /// Everything is on the disk after this, but without the target's name.
    [[nodiscard]] SystemError Finish();
    /// Replaces what stands there. Without `sync` the name itself may be lost by a failure of
    /// power: for one who syncs the folder later.
    [[nodiscard]] SystemError TakePlaceOf(const QByteArray& target, bool sync = true);
    /// EEXIST when something stands there; the draft lives on and may take another name.
    [[nodiscard]] SystemError TakeNewName(const QByteArray& target, bool sync = true);
    [[nodiscard]] int Number() const { return m_file.Number(); }
    [[nodiscard]] bool IsNameless() const { return m_nameless; }

  private:
    SystemError CreateNamed(const QByteArray& folder, mode_t mode);
    SystemError LinkNameless(const QByteArray& target) const;
    SystemError GiveTemporaryName(const QByteArray& folder);
    SystemError Placed(const QByteArray& target, bool sync);

    FileDescriptor m_file;
    QByteArray m_path; ///< empty while nameless, and after it has taken its name
    bool m_nameless = false;
};

} // namespace platform
