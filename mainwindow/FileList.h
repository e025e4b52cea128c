// A list of files as the clipboard and drag and drop carry it, in the desktop's own formats.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QStringList>
#include <memory>

class QMimeData;

namespace velmora {

// Files and folders to copy, or to move after a cut.
//   QDrag: drag->setMimeData(ToMimeData({paths, false}).release());
struct FileList {
    QStringList paths; // logical, names in the spelling of the disk
    bool move = false; // they were cut; of no meaning in a drag, where the drop's action decides

    [[nodiscard]] bool IsEmpty() const { return paths.isEmpty(); }
};

// The list in all formats that file managers read: text/uri-list, x-special/gnome-copied-files,
// application/x-kde-cutselection, and the paths as plain text. A path without a place on this
// computer is left out. Names of any bytes survive.
[[nodiscard]] std::unique_ptr<QMimeData> ToMimeData(const FileList& list);

// Whether a file list is in there; quick enough for every mouse move of a drag.
[[nodiscard]] bool HasFileList(const QMimeData& data);

// The files of this computer that are in there, each once. Addresses that lead elsewhere ("smb:",
// a file of another host) are answered in `foreign` as a person may read them.
[[nodiscard]] FileList FromMimeData(const QMimeData& data, QStringList* foreign = nullptr);

} // namespace velmora
