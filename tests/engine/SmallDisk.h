// A disk of its own for a test: of a few megabytes, and full or read-only at will.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

namespace engine_test {

// Mounted over an existing folder in a name space that only this process sees, for which the kernel
// has to allow name spaces; nobody need be root. Unmounted at the end.
class SmallDisk {
  public:
    SmallDisk(QString folder, int megabytes);
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    // False: this system lets nobody mount.
    [[nodiscard]] bool IsMounted() const { return m_mounted; }
    // Leaves so many bytes free, as far as the disk counts in pages.
    void LeaveFree(qint64 bytes) const;
    void GiveBack() const; // what LeaveFree took
    void SetReadOnly(bool readOnly) const;

  private:
    [[nodiscard]] QString Ballast() const;

    QString m_folder;
    bool m_mounted = false;
};

} // namespace engine_test
