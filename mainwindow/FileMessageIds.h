// The ids of the texts of the file operations.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace velmora {

inline constexpr int kPassedOver = 3537;   // %1 paths
inline constexpr int kForeignFiles = 3538; // %1 addresses
inline constexpr int kMoving = 3539;
inline constexpr int kDeleting = 3540;
inline constexpr int kCountingFiles = 3541;
inline constexpr int kFilesDone = 3542;    // %1 of %2
inline constexpr int kBytesDone = 3543;    // %1 of %2
inline constexpr int kBytesPerTime = 3544; // %1
inline constexpr int kSecondsLeft = 3545;
inline constexpr int kMinutesLeft = 3546; // %1
inline constexpr int kHoursLeft = 3547;   // %1 hours, %2 minutes
// The conflict question; %1 is the name.
inline constexpr int kConflictFile = 3551;
inline constexpr int kConflictFolder = 3552;
inline constexpr int kConflictNoReplace = 3553;
inline constexpr int kSkip = 3557;
inline constexpr int kMerge = 3559;
inline constexpr int kForAll = 3561;
inline constexpr int kContinueAnyway = 3562;
// Problems; %1 is the place.
inline constexpr int kChangedMeanwhile = 3554;
inline constexpr int kCannotRead = 3563;
inline constexpr int kCannotWrite = 3564;
inline constexpr int kCannotMakeFolder = 3565;
inline constexpr int kCannotMove = 3566;
inline constexpr int kCannotRemove = 3567;
inline constexpr int kNoSpace = 3568; // %2 needed, %3 free
inline constexpr int kIntoItself = 3569;

} // namespace velmora
