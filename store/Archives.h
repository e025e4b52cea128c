// The shared archives that this installation knows: the list, its changes, and choosing one.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

namespace velmora {

struct SharedArchive {
    QString path; // logical, in any case, without a closing back-slash
    QString description;
    friend bool operator==(const SharedArchive&, const SharedArchive&) = default;
};

// The list of "SharedArchives.xml" in the program folder, in its order; empty without that file.
// Entries without a path are left out.
QList<SharedArchive> ReadArchives();
// Puts the list in the file's place in one step: a kill leaves the old list or the new one. False
// after a report.
[[nodiscard]] bool SaveArchives(const QList<SharedArchive>& archives);

// What people are shown: the path as this system writes it; description and path. Neither asks
// the disk, which may lie on a share that is not there.
QString ShownArchivePath(const QString& path);
QString ArchiveText(const SharedArchive& archive);

// Appends an archive to the list, as it stands in the file by then. `typedPath` is a path of this
// system or a network path "\\server\share\folder". Tells what is missing; where there is no
// archive yet it asks, and makes one. False when the list stays as it was.
[[nodiscard]] bool AddArchive(const QString& typedPath, const QString& description);
// Takes an archive off the list, once that is confirmed; its folder stays. False when it stays.
[[nodiscard]] bool RemoveArchive(const SharedArchive& archive);

// Entries that a person chooses from: the default archive at index 0, the list behind it.
// The index chosen last; 0 when there is no such entry any more.
int LastSelectedArchive(qsizetype entries);
// Whether the archive can be opened (an empty path, the default one, always); if not, that is told.
// A share that does not answer for ten seconds counts as not reachable; events run meanwhile.
[[nodiscard]] bool IsArchiveReachable(const QString& path);
void RememberSelectedArchive(int index);

} // namespace velmora
