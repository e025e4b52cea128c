// Who uses the machine: account, computer name, a second copy of the program.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/User.h"

#include "platform/Names.h"
#include "platform/Temporary.h"

#include <QCryptographicHash>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

QString AccountName() {
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(16 * 1024);
    getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found);
    return found ? QString::fromLocal8Bit(found->pw_name) : qEnvironmentVariable("USER");
}

bool Lock(const FileDescriptor& file, int command, short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_len = 1;
    return fcntl(file.Number(), command, &lock) == 0;
}

QString RuntimeFolder() {
    const QString folder = DecodeName(qgetenv("XDG_RUNTIME_DIR"));
    return folder.startsWith(u'/') && IsWritableFolder(folder) ? folder : TemporaryFolder();
}

FileDescriptor OpenLockFile(const QString& executable, const QString& folder) {
    const QByteArray key =
        QCryptographicHash::hash(EncodeName(executable), QCryptographicHash::Sha1).toHex();
    const QByteArray path = EncodeName(folder.isEmpty() ? RuntimeFolder() : folder) + "/velmora-" +
                            QByteArray::number(geteuid()) + '-' + key.left(16) + ".lock";
    FileDescriptor file(open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    struct stat status {};
    // Somebody else's file could keep this user's program from ever starting.
    const bool ours =
        file.IsOpen() && fstat(file.Number(), &status) == 0 && status.st_uid == geteuid();
    return ours ? std::move(file) : FileDescriptor();
}

} // namespace

Logon SplitAccountName(const QString& account) {
    if (const qsizetype slash = account.indexOf(u'\\'); slash >= 0) {
        return {account.mid(slash + 1), account.left(slash)};
    }
    const qsizetype at = account.lastIndexOf(u'@');
    return at > 0 ? Logon{account.left(at), account.mid(at + 1)} : Logon{account, QString()};
}

Logon CurrentLogon() {
    Logon logon = SplitAccountName(AccountName());
    utsname system{};
    if (logon.domain.isEmpty() && uname(&system) == 0) {
        const QString domain = QString::fromLocal8Bit(system.domainname);
        logon.domain = domain == QLatin1String("(none)") ? QString() : domain;
    }
    return logon;
}

QString ComputerName() {
    utsname system{};
    return uname(&system) == 0 ? QString::fromLocal8Bit(system.nodename).section(u'.', 0, 0)
                               : QString();
}

SingleCopy::SingleCopy(const QString& executable, const QString& folder)
    : m_lock(OpenLockFile(executable, folder)) {
    if (!m_lock.IsOpen()) {
        return;
    }
    // Every running copy holds a shared lock, so that the exclusive one is had only by a copy that
    // is alone. Turning it into a shared one is a single step for locks of the open file, and
    // leaves no gap for a second first copy.
    m_othersRunning = !Lock(m_lock, F_OFD_SETLK, F_WRLCK) && (errno == EAGAIN || errno == EACCES);
    Lock(m_lock, F_OFD_SETLKW, F_RDLCK);
}

QString SingleCopy::OwnExecutable() {
    char path[PATH_MAX];
    const ssize_t size = readlink("/proc/self/exe", path, sizeof path);
    QString executable = DecodeName(QByteArray(path, std::max<ssize_t>(size, 0)));
    // An update may have replaced the file under the running program; the name is the same one.
    const QString deleted = QStringLiteral(" (deleted)");
    if (executable.endsWith(deleted) && !Exists(executable)) {
        executable.chop(deleted.size());
    }
    return executable;
}

} // namespace platform
