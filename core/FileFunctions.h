// Walking folders, judging names, opening files with the desktop.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
// Copyfile, MoveFile, DeleteFile and RenameFile stand in ShellOperation.h.
#pragma once

#include <QString>
#include <QStringList>

namespace velmora {

// Cuts a text at its first zero character.
QString StripNulls(const QString& text);

// The process-wide list that FindFilesAPI appends to. Callers clear it before and read it after.
QStringList& FoundFiles();
// Appends to FoundFiles() every file under `folder`, at any depth, whose name matches `pattern`
// ("*" any run, "?" one character, without case; "*.*" is every file). Full logical paths. Yields
// to the event loop after each entry, so a handler may run meanwhile. A folder that cannot be
// read or is reached through a link is passed over.
void FindFilesAPI(const QString& folder, const QString& pattern);
// Whether a name matches such a pattern.
bool MatchesPattern(const QString& name, const QString& pattern);

// True means a name to REFUSE: it holds one of \ / : * ? < > | or the character of code 22. A
// double quote passes. Both are deliberate; callers rely on the sense of the answer.
bool IsValidFileName(const QString& name);

// Opens each of the paths with the desktop's program for it. With `openWith` the person is to
// choose the program; as long as the desktop offers no such chooser the usual one opens. What
// cannot be opened is told to the person, as a desktop's own shell would.
void LaunchFile(const QStringList& paths, bool openWith = false);
// The same for one text that parts its paths by `separator`. A text that as a whole names a file
// is not parted.
void LaunchFile(const QString& paths, const QString& separator, bool openWith = false);

} // namespace velmora
