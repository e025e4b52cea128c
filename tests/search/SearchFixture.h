// An archive with documents and a real index over them, on the test's own machine.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/IndexJob.h"
#include "engine/SearchJob.h"
#include "store/ModDb.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <QByteArray>
#include <gmock/gmock.h>
#include <utility>
#include <vector>

namespace velmora {

// The archive lies in home/archive, the documents in home/docs.
class SearchTest : public testing::Test {
  protected:
    SearchTest();

    // Machine path of a document, and its logical path.
    static QString Docs(const QString& name = {});
    static QString LogicalDocs(const QString& name = {});
    static QString Write(const QString& name, const QByteArray& content);

    using Members = std::vector<std::pair<QByteArray, QByteArray>>; // name, content
    static QByteArray Zip(const Members& members);
    // A message of a subject, a text, and attachments as name and content.
    static QByteArray Mail(const QByteArray& subject, const QByteArray& text,
                           const Members& attachments = {});

    // Brings the archive's index in step with a folder (machine path), by default the documents.
    static void Index(const QString& folder = Docs());
    // Lays a recognised text for the document of that id, to be indexed with OcrTexts().
    static void LayOcrText(qint64 id, const QByteArray& text);
    static QString OcrTexts();
    // A row of tblocrfiles; answers its id.
    static qint64 AddOcrRow(const QString& logicalFolder, const QString& name);
    static void SetMailConfig(int client, const QString& path);

    // The whole flow from the typed text on.
    static engine::SearchResults Search(QString request, const QString& folder = {},
                                        bool includeMail = true, bool synonyms = false);
    // Display names of what is found, sorted, parted by blanks; or the fault's text.
    static std::string Found(const QString& request, const QString& folder = {},
                             bool includeMail = true, bool synonyms = false);

    ScopedGlobals program;
    ScriptedReporter reporter;
    ScriptedDialogue dialogue;
    ScopedConnection connection;
};

// An item as the engine gives it. spelling: empty for the name in lower case as a machine path.
engine::SearchItem Item(const QString& fileName, const QString& display = {}, int hits = 1,
                        const QString& spelling = {});

} // namespace velmora
