// The ids of the texts that this folder adds to the message table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace velmora {

// Help: the first line is the usage line.
inline constexpr int kHelp = 3400;
inline constexpr int kHelpInit = 3401;
inline constexpr int kHelpFolders = 3402;
inline constexpr int kHelpIndex = 3403;
inline constexpr int kHelpSearch = 3404;
inline constexpr int kHelpShow = 3405;
inline constexpr int kHelpWords = 3406;
inline constexpr int kHelpEveryCommand = 3407; // options of all commands
inline constexpr int kHelpExitStatus = 3408;   // closes every help
// What is wrong with a command line; %1 is the word that it is about.
inline constexpr int kUnknownCommand = 3410;
inline constexpr int kCommandMissing = 3411;
inline constexpr int kUnknownOption = 3412;
inline constexpr int kOptionNeedsValue = 3413;
inline constexpr int kOptionTakesNoValue = 3414;
inline constexpr int kArgumentMissing = 3415;
inline constexpr int kArgumentExtra = 3416;
inline constexpr int kNotUtf8 = 3417;
inline constexpr int kNotTogether = 3418; // %1, %2
inline constexpr int kUnknownLanguage = 3419;
inline constexpr int kNumberExpected = 3420; // %1 option, %2 least, %3 most, %4 what was given
inline constexpr int kBadUserKey = 3421;
inline constexpr int kArgumentEmpty = 3422;
inline constexpr int kFullHelp = 3423;          // %1 the command that prints it
inline constexpr int kOptionNeedsOption = 3424; // %1 goes only with %2
// What a command did or could not do; %1 is a path unless told otherwise.
inline constexpr int kNoArchive = 3430;
inline constexpr int kArchiveMade = 3431;
inline constexpr int kFolderAdded = 3432;
inline constexpr int kFolderRemoved = 3433;
inline constexpr int kFolderNotListed = 3434;
inline constexpr int kNoFolders = 3435;
inline constexpr int kIndexSummary =
    3436;                             // %1 new, %2 changed, %3 removed, %4 unchanged, %5 unreadable
inline constexpr int kProblem = 3437; // %1 path, %2 state, %3 reason
inline constexpr int kProblemUnexplained = 3438; // %1 path, %2 state
inline constexpr int kRebuildHint = 3439;
inline constexpr int kNotInIndex = 3440;
inline constexpr int kNoHitInDocument = 3441;
inline constexpr int kOutputFailed = 3442; // %1 the system's words
// Headings parted by tabs: documents, each engine::ReadState in its order, folder.
inline constexpr int kCountsHeadings = 3443;
inline constexpr int kCountsTotal = 3444;
inline constexpr int kNoneInFolder = 3445;
inline constexpr int kBestOne = 3446; // %1 found

} // namespace velmora
