// From the text of the search box to the engine's results.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/SearchJob.h"

#include <QString>
#include <QStringList>

namespace velmora {

// Most documents that one search gives.
inline constexpr int kMaxResults = 300;

// Folder of the index of the open archive, of the recognised texts in it, and of the copies of
// mails; all logical paths with a closing back-slash.
QString IndexFolder();
QString OcrFolder();
QString MailCopyFolder();
// The alphabet of every index; the file may be missing.
QString AlphabetFile();

// The text as the engine is asked: in lower case, each of à è é ì ò ù a "?". As long as the text,
// so that a place in one is the same place in the other.
void ParseRequest(const QString& text, QString& result);

// The file conditions of a search, of which a document must satisfy one; none: all documents.
// folder: logical path of a folder or file, empty for the whole archive.
QStringList FileConditions(const QString& folder, bool includeMail);

// The job as it is given to the engine, without file conditions. request: as ParseRequest gives it.
engine::SearchJob MakeSearchJob(const QString& request, bool synonyms);

// Searches the index of the open archive. request is changed in place by ParseRequest. What went
// wrong stands in results.
void ExecuteSearch(QString& request, const QString& folder, bool includeMail, bool synonyms,
                   engine::SearchResults& results);

} // namespace velmora
