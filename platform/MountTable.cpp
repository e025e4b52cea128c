// The mount table: on which folder a network share lies, and what kind of file system a device is.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/MountTable.h"

#include "platform/Files.h"
#include "platform/LogicalPath.h"

#include <QStringList>
#include <algorithm>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace platform {

namespace {

/// Blanks, tabs, line ends and back-slashes stand in the table
/// as a back-slash and three octal digits.
QByteArray Unescape(const QByteArray& text) {
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size(); ++i) {
        bool octal = false;
        const int code = text[i] == '\\' ? text.mid(i + 1, 3).toInt(&octal, 8) : 0;
        bytes += octal ? static_cast<char>(code) : text[i];
        i += octal ? 3 : 0;
    }
    return bytes;
}

QStringList Parts(const QString& path) {
    return path.split(u'\\', Qt::SkipEmptyParts);
}

QString NetworkPath(const QByteArray& server, const QByteArray& path) {
    const QString folder = ToLogical(DecodeName('/' + path));
    return QLatin1String("\\\\") + DecodeName(server) + (folder.size() > 1 ? folder : QString());
}

/// "//server/share/sub". Where a folder of the share is mounted, `root` names it; some kernels
/// repeat in it the folder that the source names already.
QString SmbShare(QByteArray source, const QByteArray& root) {
    source.replace('\\', '/');
    while (source.endsWith('/')) {
        source.chop(1);
    }
    const qsizetype serverEnd = source.indexOf('/', 2);
    if (!source.startsWith("//") || serverEnd < 0) {
        return {};
    }
    const qsizetype shareEnd = source.indexOf('/', serverEnd + 1);
    const QByteArray share = shareEnd < 0 ? source : source.left(shareEnd);
    QByteArray folder = source.mid(share.size());
    if (root.size() > 1 && root != folder) {
        folder = root.startsWith(folder + '/') ? root : folder + root;
    }
    return NetworkPath(share.mid(2, serverEnd - 2), share.mid(serverEnd) + folder);
}

/// "server:/export", "[fe80::1]:/export"
QString NfsShare(const QByteArray& source) {
    const qsizetype colon = source.indexOf(":/");
    if (colon <= 0) {
        return {};
    }
    QByteArray server = source.left(colon);
    if (server.startsWith('[') && server.endsWith(']')) {
        server = server.mid(1, server.size() - 2);
    }
    return NetworkPath(server, source.mid(colon + 1));
}

QString ShareOf(const QByteArray& type, const QByteArray& source, const QByteArray& root) {
    if (type == "cifs" || type == "smb3") {
        return SmbShare(source, root);
    }
    return type == "nfs" || type == "nfs4" ? NfsShare(source) : QString();
}

/// The table as text, kept until the kernel reports a change on the open file.
class WatchedTable {
  public:
    std::vector<Mount> Mounts() {
        const std::lock_guard lock(m_mutex);
        if (!m_file.IsOpen()) {
            m_file = FileDescriptor(open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
            m_mounts = ParseMountTable(Read());
        } else if (HasChanged()) {
            m_mounts = ParseMountTable(Read());
        }
        return m_mounts;
    }

  private:
    bool HasChanged() const {
        pollfd request{m_file.Number(), POLLPRI, 0};
        return poll(&request, 1, 0) != 0;
    }

    QByteArray Read() const {
        QByteArray text;
        char buffer[16384];
        ssize_t got = 0;
        while ((got = pread(m_file.Number(), buffer, sizeof buffer, text.size())) > 0) {
            text.append(buffer, got);
        }
        return text;
    }

    std::mutex m_mutex;
    FileDescriptor m_file;
    std::vector<Mount> m_mounts;
};

} // namespace

std::vector<Mount> ParseMountTable(const QByteArray& text) {
    std::vector<Mount> mounts;
    for (const QByteArray& line : text.split('\n')) {
        // id parent major:minor root mount-point options … - type source super-options
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype dash = fields.indexOf("-", 6);
        if (dash < 0 || fields.size() < dash + 3) {
            continue;
        }
        const QList<QByteArray> numbers = fields[2].split(':');
        Mount mount;
        mount.mountPoint = Unescape(fields[4]);
        mount.type = fields[dash + 1];
        mount.share = ShareOf(mount.type, Unescape(fields[dash + 2]), Unescape(fields[3]));
        mount.source = Unescape(fields[dash + 2]);
        mount.options = fields.value(dash + 3);
        if (numbers.size() == 2) {
            mount.device = makedev(numbers[0].toUInt(), numbers[1].toUInt());
        }
        mounts.push_back(std::move(mount));
    }
    return mounts;
}

std::vector<Mount> CurrentMounts() {
    static WatchedTable table;
    return table.Mounts();
}

SharePlace FindShare(const std::vector<Mount>& mounts, const QString& networkPath) {
    const QStringList wanted = Parts(networkPath);
    const QStringList capitals = Parts(Capitals(networkPath));
    SharePlace best;
    qsizetype bestLength = 0;
    for (const Mount& mount : mounts) {
        const QStringList share = Parts(Capitals(mount.share));
        if (share.size() >= std::max<qsizetype>(bestLength, 1) &&
            share == capitals.mid(0, share.size())) {
            bestLength = share.size();
            best = {mount.mountPoint, wanted.mid(bestLength).join(u'\\')};
        }
    }
    return best;
}

} // namespace platform
