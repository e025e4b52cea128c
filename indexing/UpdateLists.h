// The two text files that tell the engine what to add and what to remove in a run.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "indexing/UpdateIndex.h"

#include <QStringList>

namespace velmora {

// A temporary file that goes away with its owner: it tells what a person keeps where.
class ListFile {
  public:
    ListFile() = default;
    ListFile(ListFile&& other) noexcept : m_name(std::exchange(other.m_name, {})) {}
    ListFile& operator=(ListFile&& other) noexcept;
    ListFile(const ListFile&) = delete;
    ListFile& operator=(const ListFile&) = delete;
    ~ListFile() { Remove(); }

    // Makes the empty file. False, after a report, when that cannot be done.
    [[nodiscard]] bool Create();
    void Remove();
    // Logical path; empty before Create.
    [[nodiscard]] const QString& Name() const { return m_name; }

  private:
    QString m_name;
};

// The first row of the mail configuration; whether there is one.
struct MailConfig {
    bool configured = false;
    qint32 iclient = 0;
    QString smailpath;
};
// Throws velmora::Error.
MailConfig ReadMailConfig();

struct UpdateLists {
    ListFile add;
    ListFile remove; // without a name: there is none
    // Folders to remove whose files cannot be listed: they are gone from the disk, not mounted, or
    // hold names that do not fit on a line.
    QStringList removeFolders;
    bool compress = false;
};

// Fills empty lists for a run that makes a new index or not; adds the folder of the mail copies to
// members.FileOrFolderToRemove when mail is to be read. False when there is no place for the lists;
// that is reported. Throws velmora::Error.
[[nodiscard]] bool WriteLists(UpdateLists& lists, UpdateMembers& members, bool create,
                              const MailConfig& mail, UpdateView& view);

// Folder of the index of the open archive; logical, without a closing back-slash.
QString ArchiveIndexPath();

} // namespace velmora
