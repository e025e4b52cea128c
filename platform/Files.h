// Files and folders of the machine. All paths here are machine paths (see LogicalPath.h).
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/SystemError.h"

#include <QByteArray>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

namespace platform {

enum class EntryKind {
    File,       ///< a regular file, or a symbolic link to one
    Folder,     ///< a folder
    FolderLink, ///< a symbolic link to a folder: whoever walks a tree does not descend
    Other       ///< a link that leads nowhere, a pipe, a socket, a device
};

/// What the system knows about a file without opening it.
struct FileStatus {
    EntryKind kind = EntryKind::Other;
    qint64 size = -1;      ///< bytes; -1 when the system would not tell
    qint64 modifiedNs = 0; ///< last change of the content, nanoseconds since 1970 UTC
    quint64 device = 0;    ///< the file system it lies on
    quint64 number = 0;    ///< inode: with `device`, the identity of a file
    unsigned mode = 0;     ///< permission bits

    [[nodiscard]] bool IsFolder() const {
        return kind == EntryKind::Folder || kind == EntryKind::FolderLink;
    }
};

struct FolderEntry : FileStatus {
    QString name; ///< as on the disk, without folder
};

struct FolderListing {
    std::vector<FolderEntry> entries; ///< in no particular order, without "." and ".."
    /// When not Ok, `entries` is what could be read until then: never take it for the whole folder.
    SystemError error;
};

struct FileContent {
    QByteArray bytes;
    SystemError error;
};

struct CreatedFile {
    QString path; ///< machine path, empty when refused
    SystemError error;
};

/// An open file: closes it at the end of its life.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : m_number(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_number(other.Release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { Close(); }

    [[nodiscard]] bool IsOpen() const { return m_number >= 0; }
    /// For system calls; the descriptor stays this object's. -1 when nothing is open.
    [[nodiscard]] int Number() const { return m_number; }
    /// Hands the open file over to the caller.
    int Release();
    /// The system's last word on what was written (a full or far disk tells it only here).
    SystemError Close();

  private:
    int m_number = -1;
};

/// Something stands under this name, be it a link that leads nowhere.
[[nodiscard]] bool Exists(const QString& path);
/// A regular file, or a link to one.
[[nodiscard]] bool IsFile(const QString& path);
/// A folder, or a link to one.
[[nodiscard]] bool IsFolder(const QString& path);
/// Whether this user may create files in the folder.
[[nodiscard]] bool IsWritableFolder(const QString& path);

/// Nothing when there is no such file, or `error` (may be null) tells why it could not be asked.
[[nodiscard]] std::optional<FileStatus> StatusOf(const QString& path, SystemError* error = nullptr);

/// The names in a folder with their status. Links to files are followed; a name that vanishes
/// meanwhile is left out; one whose status is refused has size -1.
[[nodiscard]] FolderListing ListFolder(const QString& path);

/// The same one by one, so that the caller can show portions or stop: it answers false to stop.
[[nodiscard]] SystemError VisitFolder(const QString& path,
                                      const std::function<bool(FolderEntry)>& visit);

/// The names of the folders in a folder, links to folders included. Files are not looked at, so
/// this is cheap where there are many. `visit` answers false to stop; it is also called, with an
/// empty name, once in a hundred files, so that it can stop there.
[[nodiscard]] SystemError VisitSubFolders(const QString& path,
                                          const std::function<bool(const QString& name)>& visit);

/// Opens a regular file for reading; anything else (a pipe would block) is refused.
[[nodiscard]] FileDescriptor OpenForReading(const QString& path, SystemError* error = nullptr);
[[nodiscard]] FileContent ReadFile(const QString& path);

/// Puts `bytes` in the file's place, or makes the file. At any moment, a kill or a full disk
/// included, the name holds either the old content or the new, and both are safe on the disk. Mode,
/// group and access list of an existing file stay; behind a symbolic link the file it leads to is
/// replaced. A file that the user may not write is refused. The folder must exist.
[[nodiscard]] SystemError ReplaceFile(const QString& path, const QByteArray& bytes);

/// Copies the content to a name that does not exist yet, whole
/// or not at all. EEXIST when it does exist.
[[nodiscard]] SystemError CopyToNewFile(const QString& from, const QString& to);

/// Removes a file or a link. A file that is not there is no failure.
[[nodiscard]] SystemError RemoveFile(const QString& path);

/// Makes the folder and all above it that are missing; no failure when it is there. `mode` is cut
/// by the user's mask; 0700 for what is private.
[[nodiscard]] SystemError CreateFolders(const QString& path, unsigned mode = 0777);

/// Bytes that this user may still write on the disk of the path, or of the deepest folder above it
/// that exists; -1 when unknown.
[[nodiscard]] qint64 FreeSpace(const QString& path);

/// Whether the path, or the deepest folder above it that exists, lies
/// on another machine (NFS, SMB, and file systems in user space unless
/// they drive a disk): locks and shared memory are not to be trusted.
[[nodiscard]] bool IsNetworkFileSystem(const QString& path);

/// The file system that the path lies on, links followed: two paths with the same answer can be
/// renamed into each other. Nothing when there is no such path.
[[nodiscard]] std::optional<quint64> DeviceOf(const QString& path);

} // namespace platform
