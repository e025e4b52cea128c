// A file system in memory, mounted where nobody else sees it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "SmallDisk.h"

#include <QFile>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace engine_test {
namespace {

void WriteTo(const char* path, const std::string& text) {
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    if (file < 0)
        return;
    (void)!write(file, text.data(), text.size()); // mounting tells whether it went well
    close(file);
}

// Once for the process; a user who is not root becomes one there.
bool EnterOwnNameSpace() {
    static const bool entered = [] {
        const auto user = std::to_string(geteuid());
        const auto group = std::to_string(getegid());
        if (geteuid() != 0) {
            if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
                return false;
            WriteTo("/proc/self/setgroups", "deny");
            WriteTo("/proc/self/uid_map", "0 " + user + " 1");
            WriteTo("/proc/self/gid_map", "0 " + group + " 1");
        } else if (unshare(CLONE_NEWNS) != 0) {
            return false;
        }
        return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    }();
    return entered;
}

} // namespace

SmallDisk::SmallDisk(QString folder, int megabytes) : m_folder(std::move(folder)) {
    const std::string options = "mode=0755,size=" + std::to_string(megabytes) + "m";
    m_mounted = EnterOwnNameSpace() && mount("small-disk", m_folder.toUtf8().constData(), "tmpfs",
                                             0, options.c_str()) == 0;
}

SmallDisk::~SmallDisk() {
    if (m_mounted)
        umount2(m_folder.toUtf8().constData(), MNT_DETACH);
}

QString SmallDisk::Ballast() const {
    return m_folder + QStringLiteral("/ballast");
}

void SmallDisk::LeaveFree(qint64 bytes) const {
    GiveBack();
    struct statvfs disk {};
    statvfs(m_folder.toUtf8().constData(), &disk);
    const qint64 free = static_cast<qint64>(disk.f_bavail) * static_cast<qint64>(disk.f_frsize);
    QFile file(Ballast());
    if (!file.open(QIODevice::WriteOnly))
        throw std::runtime_error("no ballast can be loaded");
    if (posix_fallocate(file.handle(), 0, std::max<qint64>(free - bytes, 1)) != 0)
        throw std::runtime_error("no ballast can be loaded");
}

void SmallDisk::GiveBack() const {
    QFile::remove(Ballast());
}

void SmallDisk::SetReadOnly(bool readOnly) const {
    if (mount(nullptr, m_folder.toUtf8().constData(), nullptr,
              MS_REMOUNT | (readOnly ? MS_RDONLY : 0), nullptr) != 0)
        throw std::runtime_error("the disk cannot be mounted otherwise");
}

} // namespace engine_test
