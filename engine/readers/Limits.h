// How much of a hostile or huge document the readers take before they stop and say so.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

namespace engine {

inline constexpr std::uint64_t kMiB = std::uint64_t{1024} * 1024;
inline constexpr std::uint64_t kGiB = 1024 * kMiB;

// Archives. A ratio is only looked at beyond a size that any machine can bear.
inline constexpr std::uint64_t kMaxMemberBytes = 256 * kMiB;   // unpacked, one member
inline constexpr std::uint64_t kMaxArchiveBytes = 4 * kGiB;    // unpacked, all members together
inline constexpr std::uint64_t kMaxUnpackRatio = 1000;         // unpacked to packed
inline constexpr std::uint64_t kRatioFreeBytes = 64 * kMiB;    // unpacked bytes without a ratio
inline constexpr std::uint64_t kMaxArchiveEntries = 1'000'000; // folders and links too
inline constexpr std::size_t kMaxMemberPath = 4096;            // bytes of a member's path
inline constexpr int kMaxArchiveRestarts = 100;                // after damaged zip members
inline constexpr std::uint64_t kMaxZipOverlap = 4; // packed bytes of all members to the archive's

// PDF and XPS.
inline constexpr std::size_t kFitzMemoryBytes = 768 * kMiB; // all that the library holds
inline constexpr std::size_t kFitzCallsPerPage = 3'000'000; // for memory
inline constexpr std::size_t kPdfStoreBytes = 64 * kMiB;     // the library's cache
inline constexpr int kMaxPdfBookmarks = 100'000;             // titles read from the outline
inline constexpr int kMaxPdfNotesPerPage = 10'000;           // annotations and form fields
inline constexpr std::size_t kMaxPdfXmpBytes = 4 * kMiB;     // metadata packet
inline constexpr std::size_t kMaxPdfXfaBytes = 16 * kMiB;    // packet of a form
inline constexpr int kMaxPdfFiles = 10'000;                  // embedded
inline constexpr std::size_t kMaxPdfFileBytes = 256 * kMiB;  // unpacked, all of them together
inline constexpr std::size_t kMaxPdfLinesForHyphens = 5'000; // beyond: hyphens stay

// Pictures, sound, films.
inline constexpr std::size_t kMaxMediaTagBytes = 4 * kMiB; // all that a file says of itself
inline constexpr int kMaxMediaElements = 1'000'000;        // boxes and the like that are looked at

// Mail.
inline constexpr std::uint64_t kMaxMailBytes = kGiB; // of one message
inline constexpr int kMaxMailParts = 10'000;
inline constexpr int kMaxMailDepth = 64; // parts within parts

// Office documents, XML and HTML.
inline constexpr std::uint64_t kMaxPackageBytes = kGiB;    // unpacked, all parts of a document
inline constexpr int kMaxXmlDepth = 2000;                  // elements within elements
inline constexpr std::size_t kMaxBlockDepth = 128;         // blocks within blocks
inline constexpr std::size_t kMaxAsideDepth = 8;           // text boxes within text boxes
inline constexpr std::size_t kMaxSharedText = 256 * kMiB;  // texts that a workbook's cells share
inline constexpr std::size_t kMaxPictureBytes = 16 * kMiB; // one picture shown in a page

// Compound files.
inline constexpr std::size_t kMaxCompoundEntries = 500'000; // streams and storages
inline constexpr std::size_t kMaxPropertyBytes = 4 * kMiB;   // one set of properties

inline constexpr std::size_t kMaxRtfDepth = 10'000;         // groups within groups
inline constexpr std::uint64_t kMaxChmBytes = 384 * kMiB;   // unpacked, all topics of a help file

} // namespace engine
