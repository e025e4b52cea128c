// The toolbox: hash of a file, temporary names, folders, attributes, dates, user and machine.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace velmora {

// BLAKE2b-160 of the file's whole bytes, 40 lower-case hexadecimal digits. An empty file, like a
// missing one, is a failure (report, empty answer).
QString GetFileHash(const QString& path);
// The same digest of bytes in memory; an empty range is allowed here.
QString GetHash(QByteArrayView bytes);

// Folder for temporary files, closing in a back-slash.
QString GetTmpPath();
// A new empty file in GetTmpPath, its name beginning with "vms".
QString GetTmpFileName();

// Whether a file (not a folder) stands there.
bool VerifyExistsFileName(const QString& path);
// Whether a name holds only letters, digits, blanks and - ( ) ' , [ ] _ . ; an empty name passes.
bool VerifyFileName(const QString& name);

// The value in a line of the form NAME="value"; the name counts without case. A missing name is
// not detected: the answer is then whatever stands behind that many characters.
QString ExtractAttribute(const QString& text, const QString& name);

// Makes all folders of a path that starts with a drive or a root.
void BuildPath(const QString& path);
// The same for \\SERVER\SHARE\…; never tries to make the server or the share. Does nothing for
// any other path.
void BuildPathLan(const QString& path);

// How a candidate folder collides with the indexed ones: 0 not at all, 1 it stands above one,
// 2 it lies below one, 3 it is one. `folder` then names the first that collides, without closing
// back-slash. A plain search, not anchored at the start: deliberate, as folders were always
// compared that way.
int IsParentOrChildFolder(const QString& path, const QStringList& folders, QString& folder);

// A date as typed in the mask of GetDateMask becomes "yyyymmdd"; the empty mask becomes "".
// A text that is no date is a failure (report, empty answer).
QString FrmtDateDb(const QString& text);
// The way back; "" gives the empty mask.
QString UnFrmtDateDb(const QString& text);

// -1 on the one old family of systems that has no domains, else 0 or 1; here always 1.
int GetWinVersion();
// The person at the machine and the domain; both empty on failure.
void GetCurrentLogon(QString& user, QString& domain);
// The name of this computer; empty on failure.
QString GetWksName();
// The folder of a special id; only 5, the user's documents, is known. Empty otherwise.
QString GetSpecialFolderPath(int folderId);

} // namespace velmora
