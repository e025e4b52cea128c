// Where the desktop, the documents and the program's own files lie.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
// All paths are machine paths without a closing slash.
#pragma once

#include "platform/SystemError.h"

#include <QString>
#include <QStringList>

namespace platform {

constexpr int kDesktopFolder = 0;
constexpr int kDocumentsFolder = 5;

/// The user's desktop (0) or documents (5) folder, as the desktop's settings name it; empty for
/// other ids. The folder may not exist yet.
[[nodiscard]] QString SpecialFolder(int id);

/// What the choice of the program folder depends on.
struct ProgramPlaces {
    QString executableFolder;
    QString homeOverride;     ///< VELMORA_HOME; empty when not set
    QString userDataFolder;   ///< "velmora" under the user's XDG data folder
    QStringList shareFolders; ///< where an installation keeps what it lays, best first
};

/// The places of the running program.
[[nodiscard]] ProgramPlaces PlacesOfThisProgram();

/// The program folder: the override; else the executable's folder when the user may write there and
/// it holds the program's files (a portable copy, the build tree); else the user's data folder.
[[nodiscard]] QString ChooseProgramFolder(const ProgramPlaces& places);

/// Lays into the folder what the first of the share folders that exists holds of db.mdb,
/// default.abc, lib and graphics, and makes an empty "indexes". What is there already is left
/// alone; a kill leaves no half file.
[[nodiscard]] SystemError LayProgramFolder(const QString& folder, const QStringList& shareFolders);

/// The program folder of this process, chosen and laid at the first call.
[[nodiscard]] QString ProgramFolder();

/// What went wrong when ProgramFolder laid the folder.
[[nodiscard]] SystemError ProgramFolderError();

/// The executable of the worker processes: VELMORA_WORKER, beside the program, or where
/// installations keep helper programs. Empty when there is none.
[[nodiscard]] QString WorkerProgram();

} // namespace platform
