// A PDF file, opened from memory. The only place that knows the PDF library.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"
#include "engine/readers/PdfPageText.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

// No script of the document runs and nothing is fetched. One object belongs to one thread.
class PdfDocument {
  public:
    // Opens bytes, which must outlive the object, and repairs them where that is needed. Throws
    // ReadError: Encrypted where a password is needed to read, Damaged where nothing helps.
    explicit PdfDocument(std::string_view bytes);
    ~PdfDocument();
    PdfDocument(const PdfDocument&) = delete;
    PdfDocument& operator=(const PdfDocument&) = delete;

    [[nodiscard]] int PageCount() const;
    // The text of a page, index from 0. A page that cannot be read at all is empty and damaged.
    [[nodiscard]] PdfPageText Page(int index, bool withCharacters);

    // An entry of the document information such as "Title", UTF-8; empty where there is none.
    [[nodiscard]] std::string Info(const char* key);
    // The XMP packet (XML); empty where there is none.
    [[nodiscard]] std::string Metadata();
    // Texts of a form that stands in an XML description beside the pages; empty where the fields
    // stand on the pages, too.
    [[nodiscard]] std::vector<std::string> FormTexts();
    // Hands out the embedded files, each under a name of its own. False: a cap was reached.
    [[nodiscard]] bool ReadFiles(MemberSink& files);
    // The bookmarks' titles, in order.
    [[nodiscard]] std::vector<std::string> Bookmarks();

  private:
    struct Library;
    std::unique_ptr<Library> m_library;
};

} // namespace engine
