// The ids of the texts that this folder adds to the message table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace velmora {

// Failures; %1 is the place.
inline constexpr int kMissingMessage = 3000;
inline constexpr int kEmptyFile = 3001;
inline constexpr int kLineBreakInSetting = 3002;
inline constexpr int kNoDate = 3003;
inline constexpr int kNoDocumentsFolder = 3004;
inline constexpr int kNetworkPath = 3005;
inline constexpr int kOutOfMemory = 3006;
inline constexpr int kUnknownFailure = 3007;
inline constexpr int kNoSuchPlace = 3008;
inline constexpr int kBadStoredDate = 3009;
// Buttons of message boxes.
inline constexpr int kYes = 3010;
inline constexpr int kNo = 3011;
inline constexpr int kClose = 3012;
// The lesser windows.
inline constexpr int kPleaseWait = 3013;
inline constexpr int kTagLine = 3014;
inline constexpr int kVersion = 3015;
inline constexpr int kLicence = 3016;
inline constexpr int kAbout = 3017;
inline constexpr int kFirstStepsTitle = 3020;
inline constexpr int kFirstStepsIntro = 3021;
// Heading and text of step N of four: plus 2 x (N - 1).
inline constexpr int kFirstStepHeading = 3022;
inline constexpr int kFirstStepText = 3023;
// The help.
inline constexpr int kHelpTitle = 3650;
inline constexpr int kNoHelpPages = 3657;
inline constexpr int kCannotOpenAddress = 3658;
// Shell operations.
inline constexpr int kTrashOne = 3530;     // %1 name
inline constexpr int kTrashSeveral = 3531; // %1 how many
inline constexpr int kDeleteTitle = 3532;
inline constexpr int kNoTrashOne = 3533;     // %1 name
inline constexpr int kNoTrashSeveral = 3534; // %1 how many
inline constexpr int kNameTaken = 3535;      // %1 name
inline constexpr int kCannotRename = 3536;   // %1 path

} // namespace velmora
