// Finds documents: one request against one index.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"
#include "engine/query/Request.h"

#include <QDateTime>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace engine {

// A document that was found.
struct SearchItem {
    QString FileName;    // logical name in capitals; members as FILE>…|MEMBER
    QString Spelling;    // machine path as spelled on the disk; members as path>…|member
    QString DisplayName; // what a person calls it
    QDateTime Date;      // last change; invalid when unknown
    qint64 Size = 0;     // bytes
    std::int64_t Id = 0; // of the document in this index
    std::vector<std::uint32_t> Hits; // word numbers from 1, ascending
    [[nodiscard]] QString HitsString() const; // numbers, each closed by a blank
};

struct SearchResults {
    std::vector<SearchItem> items; // most hits first, then by name
    std::uint64_t found = 0;       // documents that satisfy the request, beyond the cap too
    // Set when nothing could be searched.
    std::optional<IndexFault> fault;
    QString faultText;             // the system's words, or a short English clause
    // Set with fault Request.
    RequestError::Reason requestFault{};
    std::size_t position = 0;      // in characters of the request, from 1
    QString token;                 // the piece of the request that it is about
};

struct SearchJob {
    QString IndexPath;      // logical path of the index's folder
    QString Request;        // in the request language; empty finds nothing
    QString FileConditions; // xfilter(...) parts, may be empty
    QString AlphabetFile;   // as used by the index
    int MaxFiles = 300;
    // Synonyms for every plain word; without them "&" behind a word asks for its own.
    bool Synonyms = false;
    QString ThesaurusFile;   // user thesaurus, logical path; may be missing
    bool UseWordNet = false; // the built-in word net instead of the user thesaurus
    QString StemLanguage = QStringLiteral("english"); // for "~"

    // Never throws.
    [[nodiscard]] SearchResults Execute() const;
};

} // namespace engine
