// Temporary files, private to the user.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Temporary.h"

#include "platform/Names.h"

#include <cstdlib>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

QByteArray SystemFolder() {
    QByteArray folder = qgetenv("TMPDIR");
    while (folder.size() > 1 && folder.endsWith('/')) {
        folder.chop(1);
    }
    const bool usable = folder.startsWith('/') && IsWritableFolder(DecodeName(folder));
    return usable ? folder : QByteArray("/tmp");
}

/// In a folder that everybody writes to, somebody may have laid
/// a folder or a link of this name before us.
bool IsPrivate(const QByteArray& folder) {
    struct stat status {};
    return lstat(folder.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid() && (status.st_mode & 077) == 0;
}

/// Made anew when somebody cleaned it away. Where no folder can be made, the answer is a name that
/// does not exist: whoever creates a file there gets a refusal, and no file lands where others can
/// reach it.
QByteArray FolderOfThisProcess() {
    static std::mutex mutex;
    static QByteArray folder;
    const std::lock_guard lock(mutex);
    if (!IsPrivate(folder)) {
        folder = SystemFolder() + "/velmora-XXXXXX";
        mkdtemp(folder.data());
    }
    return folder;
}

} // namespace

QString TemporaryFolder() {
    const QByteArray folder = SystemFolder() + "/velmora-" + QByteArray::number(geteuid());
    mkdir(folder.constData(), 0700);
    return DecodeName(IsPrivate(folder) ? folder : FolderOfThisProcess());
}

CreatedFile CreateTemporaryFile(const QString& folder) {
    QByteArray path = EncodeName(folder) + "/vmsXXXXXX.tmp";
    const FileDescriptor file(mkostemps(path.data(), 4, O_CLOEXEC)); // mode 0600
    if (!file.IsOpen()) {
        return {QString(), SystemError::Last()};
    }
    return {DecodeName(path), {}};
}

} // namespace platform
