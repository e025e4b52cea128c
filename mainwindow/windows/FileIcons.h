// The icons of the folder tree and the file list.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/FolderFiles.h"

#include <QHash>
#include <QIcon>
#include <QMimeDatabase>

namespace velmora {

// Those of the desktop's theme where it has them, else the program's own. By the name alone:
// nothing is opened.
class FileIcons {
  public:
    // With the flag the document has been recognised: its icon bears a mark.
    [[nodiscard]] QIcon IconOf(const FileRow& row, bool hasOcr);
    // Forgets the kinds of file that were met.
    void Clear() { m_icons.clear(); }

    // The icon of a fixed key: DSK, DOCS, MYCMP, HDD, NETHDD, FLDCL, FLDOP, DEF, _TIF_OCR_; that of
    // FLDCL for any other.
    static QIcon StdIcon(const QString& key);

  private:
    [[nodiscard]] QIcon IconOfKind(const QString& ending, const FileRow& row) const;

    QMimeDatabase m_kinds;
    QHash<QString, QIcon> m_icons;
};

} // namespace velmora
