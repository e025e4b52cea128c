// The ids of the texts that this folder adds to the message table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace velmora {

inline constexpr int kNoFolders = 3183;
inline constexpr int kFolderCounts = 3184; // %1 folders, %2 files
inline constexpr int kSearchOperators = 3185;
inline constexpr int kNoDisplay = 3186;
inline constexpr int kCannotSwitchOff = 3187;
inline constexpr int kSearchBar = 3189;
inline constexpr int kToolBar = 3190;
inline constexpr int kHelp = 3191; // of the program's command line
inline constexpr int kFolderColumn = 3500;
inline constexpr int kFolderReadInPart = 3501; // %1 folder, %2 the system's words
inline constexpr int kFoundCount = 3502;
inline constexpr int kReadingFolder = 3503;
inline constexpr int kEmptyFolder = 3504;

inline constexpr int kToCome = 3642;

} // namespace velmora
