// The ids of the texts that this folder adds to the message table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace velmora {

// Opening and making a database; %1 is its file or folder, %2 the system's own words.
inline constexpr int kDatabaseMissing = 3050;
inline constexpr int kNotADatabase = 3051;
inline constexpr int kJetDatabase = 3052;
inline constexpr int kDatabaseDamaged = 3053;
inline constexpr int kDatabaseLocked = 3054;
inline constexpr int kDiskFull = 3055;
inline constexpr int kDatabaseReadOnly = 3056;
inline constexpr int kDatabaseNotOpened = 3057;
inline constexpr int kDatabaseIo = 3058;
inline constexpr int kDatabaseExists = 3059;
inline constexpr int kFolderNotMade = 3060;
inline constexpr int kDatabaseClosed = 3061;
inline constexpr int kFolderMissing = 3071;
inline constexpr int kDatabaseNotMade = 3072;
// Records. kDuplicateRecord: %1 the columns. kValueTooLong: field, characters, the most allowed.
// kValueMismatch: field, value. kNoSuchField: field. kBadCondition: the condition.
inline constexpr int kDuplicateRecord = 3062;
inline constexpr int kValueTooLong = 3063;
inline constexpr int kValueMismatch = 3064;
inline constexpr int kRecordChanged = 3065;
inline constexpr int kNoCurrentRecord = 3066;
inline constexpr int kNoRecordSet = 3067;
inline constexpr int kNoSuchField = 3068;
inline constexpr int kNotUpdatable = 3069;
inline constexpr int kBadCondition = 3070;

// Archives. kLocksNowhere: %1 the folder; kLocksThisMachine: folder, mount option or file system.
inline constexpr int kDefaultArchive = 3570;
inline constexpr int kLocksNowhere = 3575;
inline constexpr int kLocksThisMachine = 3576;

} // namespace velmora
