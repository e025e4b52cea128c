// One row of the result list, and the classes by which rows are filtered.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/SearchJob.h"
#include "search/OcrDocuments.h"

#include <QDateTime>
#include <QString>
#include <optional>

namespace velmora {

// The type filter: one of the classes, or everything.
enum class TypeFilter {
    ALL,
    IMG, // scanned documents, found through their recognised text
    EML, // messages and bodies of mails
    ATC, // attachments of mails
    ZIP, // members of archives that lie in no mail
    OTH  // every other file
};

// What a row stands for, for the one who opens it.
enum class RowKind { StoreMessage = -1, File = 0, Mail = 1, ZipMember = 2 };

struct ResultRow {
    QDateTime DATE;    // invalid when unknown
    QString FILEDESCR; // what a person calls it
    int position = 0;  // of the item in the results, from 0
    int HITCOUNT = 0;
    RowKind kind = RowKind::File;
    QString PATH;        // where it lies, as a person reads it
    QString HITS;        // word numbers, each closed by a blank
    QString FILENAME;    // logical name in capitals, of the document itself for a recognised text
    QString OCRFILENAME; // the engine's name in capitals
    QString DATETOSORT;  // yyyymmdd; empty when unknown

    QString Spelling; // the engine's, of OCRFILENAME; may be empty
    qint64 Id = 0;    // of the document in the index
    QString File;     // machine path of the real file, as spelled: a member's outermost container
    bool IsMember = false;      // inside an archive or a mail
    bool IsMailMessage = false; // shown with the picture of a mail
};

// What all rows of one search have in common.
struct ResultScope {
    // folder: that was searched, empty for everything. ocr must outlive the scope.
    ResultScope(const QString& folder, const OcrDocuments& ocr);

    QString folder;
    // Logical, in capitals, with a closing back-slash.
    QString ocrTexts, mailCopies;
    // Of the person, as machine paths.
    QString desktop, documents;
    const OcrDocuments& ocr;
};

// The row of a found document, or nothing when the filter does not show it or it belongs to a
// document that is gone or lies outside the scope.
std::optional<ResultRow> MakeRow(const engine::SearchItem& item, TypeFilter filter,
                                 const ResultScope& scope);

// A machine path with the person's Desktop and documents folders by their names.
QString ReadablePath(const QString& machinePath, const ResultScope& scope);

} // namespace velmora
