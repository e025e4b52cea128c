// Puts a PDF page's text into a sink.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/PdfPageText.h"

namespace engine {

void EmitPdfPage(const PdfPageText& page, int number, DocumentSink& sink) {
    const std::string_view utf8 = page.utf8;
    sink.Open(Block::Page, number);
    for (const PdfParagraph& paragraph : page.paragraphs) {
        sink.Open(paragraph.block);
        std::string_view rest = utf8.substr(paragraph.begin, paragraph.end - paragraph.begin);
        for (std::size_t end = 0; (end = rest.find('\n')) != std::string_view::npos;) {
            sink.Text(rest.substr(0, end));
            sink.Break();
            rest.remove_prefix(end + 1);
        }
        sink.Text(rest);
        sink.Close(paragraph.block);
    }
    sink.Close(Block::Page);
}

} // namespace engine
