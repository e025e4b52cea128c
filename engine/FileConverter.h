// Renders a found document as HTML with its hits marked.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/IndexFile.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace engine {

enum class PageOrigin : std::uint8_t {
    Document,   // the file as it stands on the disk
    StoredText, // the index's own copy: the file is gone, has changed or cannot be read
};

struct ConvertedPage {
    QString html;
    PageOrigin origin = PageOrigin::Document;
    QString reason; // why it is not the file, a short English clause
    std::optional<IndexFault> fault; // set: there is no page
    QString faultText;
};

struct FileConverter {
    QString IndexPath;    // logical path of the index's folder
    QString AlphabetFile;
    QString InputFile;    // name of the document as a search gives it (FileName)
    QString Spelling;     // as a search gives it: tells two names apart that differ only by case
    std::vector<std::uint32_t> Hits; // word numbers from 1, ascending
    QString BeforeHit;    // HTML; "%%ThisHit%%" becomes the number of the hit from 1
    QString AfterHit;
    QString Footer;       // HTML
    // Plain text at the top of a page made from the stored text: %1 is the reason.
    QString StoredTextNote;
    QString WorkerProgram; // machine path; empty: beside this program

    // Re-reads the document in a worker; where it is gone, has changed or cannot be read, takes
    // the stored text and says so at the top. Never throws.
    [[nodiscard]] ConvertedPage Execute() const;
    // Splits a hits string: numbers parted by blanks.
    static std::vector<std::uint32_t> ParseHits(const QString& hits);
};

// The plain text of a document as the index keeps it. Throws IndexError.
[[nodiscard]] QString StoredDocumentText(const QString& indexPath, const QString& alphabetFile,
                                         const QString& fileName, const QString& spelling);

} // namespace engine
