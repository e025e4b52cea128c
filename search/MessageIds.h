// The ids of the texts that this folder adds to the message table.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace velmora {

// What is wrong with a request; %1 is the character, %2 the piece it is about.
inline constexpr int kWordMissing = 3200;
inline constexpr int kWordMissingAtEnd = 3201;
inline constexpr int kOperatorMissing = 3202;
inline constexpr int kParenthesisOpen = 3203;
inline constexpr int kParenthesisExtra = 3204;
inline constexpr int kQuoteOpen = 3205;
inline constexpr int kNumberMissing = 3206;
inline constexpr int kFilterMalformed = 3207;
inline constexpr int kNotBesideNear = 3208;
inline constexpr int kRequestTooLong = 3209;
inline constexpr int kTooManyWords = 3210;
// Top of a page that is made from the stored text; %1 is the reason.
inline constexpr int kStoredText = 3211;
// The result window.
inline constexpr int kMemberNotOpened = 3212;
inline constexpr int kPath = 3213;
inline constexpr int kBestOf = 3214; // %1 shown, %2 found
inline constexpr int kHitOf = 3215;  // %1 current, %2 all
inline constexpr int kNothingOfKind = 3216;
inline constexpr int kDocumentHits = 3217; // %1 all
inline constexpr int kOneHit = 3218;
inline constexpr int kOpenDocument = 3219;
// The word list.
inline constexpr int kWordsOfIndex = 3659;

} // namespace velmora
