// The ids of the texts that this folder adds to the message table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace velmora {

// Why an index cannot be used.
inline constexpr int kIndexMissing = 3100;
inline constexpr int kIndexDamaged = 3101;
inline constexpr int kIndexBusy = 3102;
inline constexpr int kIndexDiskFull = 3103;
inline constexpr int kIndexNoRights = 3104;
inline constexpr int kIndexUnsuitable = 3105;
inline constexpr int kIndexRequest = 3106;
inline constexpr int kIndexOther = 3107;
inline constexpr int kRebuildNow = 3108;
// How far a document could be read.
inline constexpr int kStateRead = 3110;
inline constexpr int kStatePartly = 3111;
inline constexpr int kStateEncrypted = 3112;
inline constexpr int kStateDamaged = 3113;
inline constexpr int kStateUnknown = 3114;
inline constexpr int kStateNameOnly = 3115;
inline constexpr int kStateFailed = 3116;
// A run of the update and what came of it.
inline constexpr int kIndexCounts = 3117; // %1 new, %2 changed, %3 removed, %4 unchanged
inline constexpr int kIndexCancelled = 3118;
inline constexpr int kUnreadCount = 3119; // %1
inline constexpr int kStateHeading = 3120;
inline constexpr int kReasonHeading = 3121;
inline constexpr int kQuoteAndQuestionMark = 3122; // closes a question about a name
inline constexpr int kLineBreakInName = 3123;
inline constexpr int kIndexingFailed = 3124;
inline constexpr int kCancelling = 3125;
inline constexpr int kCopyList = 3126;
// The list of indexed folders.
inline constexpr int kAddFolder = 3180;
inline constexpr int kRemoveFolder = 3181;
inline constexpr int kChooseFolder = 3182;
// A damaged index that was made anew.
inline constexpr int kIndexMended = 3192; // %1 where the damaged one is kept
inline constexpr int kOthersMissing = 3193;
inline constexpr int kUpdateAllNow = 3194;
// The folders of this machine.
inline constexpr int kFolderSilent = 3583;
inline constexpr int kFileSystem = 3584;
// How long a run still takes: %1 minutes; %1 hours, %2 minutes.
inline constexpr int kMinutesLeft = 3585;
inline constexpr int kHoursLeft = 3586;
inline constexpr int kSecondsLeft = 3587;
// What could not be read, of the whole index.
inline constexpr int kAllUnread = 3588;
inline constexpr int kLedgerCount = 3589; // %1
inline constexpr int kFolderHeading = 3590;
// 3130 to 3177, 3195 to 3198, 3577 to 3579: reasons, see EngineWords.cpp. 3183 to 3191:
// mainwindow/MessageIds.h.

} // namespace velmora
