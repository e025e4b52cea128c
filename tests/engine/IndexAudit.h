// Looks at an index from below: what it holds, and whether its tables agree.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace engine_test {

// Everything that a person can ask of the index, one fact a line, in an order of its own: documents
// with state, reason, fields and text, each word with its places, the list of words. Equal for two
// indexes that answer alike, however they came to be. folder: machine path.
[[nodiscard]] std::vector<std::string> ContentOf(const QString& folder);

// The lines that only one of the two has, the first few; empty when they are equal.
[[nodiscard]] std::string Difference(const std::vector<std::string>& have,
                                     const std::vector<std::string>& want);

// What is wrong inside: the database's own checks, rows without their document, counts of words,
// words that are not those of the stored text. Empty: all is well.
[[nodiscard]] std::string FaultsIn(const QString& folder);

// Row ids of all documents.
[[nodiscard]] std::set<std::int64_t> DocumentIds(const QString& folder);

} // namespace engine_test
