// Logical paths, the form in which the program holds every path, and the way to the machine's form.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
// A logical path has back-slashes and is compared without case; in tables it stands in capitals and
// without a closing back-slash. "\home\anna\Docs" is /home/anna/Docs, "\\server\share\x" is x where
// that share is mounted. A machine path is an absolute path of this system, as text of Names.h:
// hand it to the system through EncodeName, or use the functions of Files.h; QFile does not find
// names that are not UTF-8. All functions may be called from any thread.
#pragma once

#include "platform/Names.h"

#include <QString>

namespace platform {

/// Stands in a logical path for a back-slash inside a name of the disk.
constexpr char16_t kBackslashInName = 0xF05C;

/// The path in capitals, as tables hold it. By Unicode's full mapping, the same in every locale;
/// the length may change ("ß" gives "SS"). Capitals of capitals are the same text.
[[nodiscard]] QString Capitals(const QString& text);

/// Whether two logical paths are the same without regard to
/// case; a closing back-slash does not count.
[[nodiscard]] bool SamePath(const QString& a, const QString& b);

/// The logical form of a machine path, its spelling kept: "/home/anna/Docs" gives
/// "\home\anna\Docs". A back-slash inside a name becomes U+F05C. Runs of slashes count as one, so
/// that the answer never is a network path; a closing one is kept.
[[nodiscard]] QString ToLogical(const QString& machinePath);

/// The machine path of a logical path in any case, without a closing slash (the root is "/").
///
/// A spelling that exists wins. Otherwise the path is looked up folder by folder without regard to
/// case; of several names that differ only by case the exact one comes first, then the first by
/// code point, and one under which the rest of the path exists goes before one under which it does
/// not. What does not exist keeps the given spelling under the deepest existing part. Listings are
/// cached and re-read only after the folder changed: one who creates many new files in one folder
/// resolves the folder once.
///
/// Empty when there is no such place on this machine: a share that is not mounted, a drive letter,
/// a path that does not begin with a back-slash.
[[nodiscard]] QString ToMachine(const QString& logicalPath);

/// The same for the one entry of exactly this spelling, be it there or not: the folder above is
/// found in any case, the last name is taken as it stands. For those who change the disk: "a.txt"
/// must not stand in for an "A.TXT" that went away meanwhile.
[[nodiscard]] QString ToMachineAsSpelled(const QString& logicalPath);

/// What a person is shown: the machine form with each existing part as
/// it is spelled on the disk, even on a file system that takes any case.
/// A path without a place on this machine is answered as it was given.
[[nodiscard]] QString DisplayPath(const QString& logicalPath);

/// With exactly one back-slash added when there is none at the end; "" stays "".
[[nodiscard]] QString WithBackslash(const QString& logicalPath);

/// Without closing back-slashes; the root "\" stays.
[[nodiscard]] QString WithoutBackslash(const QString& logicalPath);

/// Folder and name with one back-slash between them: JoinPath("\", "a") is "\a".
[[nodiscard]] QString JoinPath(const QString& folder, const QString& name);

/// The folder that holds the file or folder, without a closing back-slash. Empty for the root, for
/// "\\server\share" and for a bare name.
[[nodiscard]] QString ParentFolder(const QString& logicalPath);

/// The last part of the path: "b.txt" of "\a\b.txt" and of "\a\b.txt\"; empty for the root.
[[nodiscard]] QString FileName(const QString& logicalPath);

} // namespace platform
