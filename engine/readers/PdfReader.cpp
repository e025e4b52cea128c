// Reads a PDF: its properties, its pages, its bookmarks, what is embedded in it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/PdfDocument.h"
#include "engine/readers/PdfXmp.h"
#include "engine/readers/Reader.h"

namespace engine {

namespace {

void EmitProperties(PdfDocument& pdf, DocumentSink& sink) {
    std::string title = pdf.Info("Title");
    std::string author = pdf.Info("Author");
    std::string subject = pdf.Info("Subject");
    std::string keywords = pdf.Info("Keywords");
    if (title.empty() || author.empty() || subject.empty() || keywords.empty()) {
        const XmpProperties xmp = ReadXmp(pdf.Metadata());
        const auto fill = [](std::string& value, const std::string& from) {
            if (value.empty())
                value = from;
        };
        fill(title, xmp.title);
        fill(author, xmp.author);
        fill(subject, xmp.subject);
        fill(keywords, xmp.keywords);
    }
    sink.Field("title", title);
    sink.Field("author", author);
    sink.Field("subject", subject);
    sink.Field("keywords", keywords);
}

void EmitNote(const std::vector<std::string>& paragraphs, DocumentSink& sink) {
    if (paragraphs.empty())
        return;
    sink.Open(Block::Note);
    for (const std::string& paragraph : paragraphs) {
        sink.Open(Block::Paragraph);
        sink.Text(paragraph);
        sink.Close(Block::Paragraph);
    }
    sink.Close(Block::Note);
}

std::string CountOf(int damaged, int pages) {
    return std::to_string(damaged) + " of " + std::to_string(pages) +
           (pages == 1 ? " page is damaged" : " pages are damaged");
}

} // namespace

void ReadPdf(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    PdfDocument pdf(source.bytes);
    EmitProperties(pdf, sink);
    const int pages = pdf.PageCount();
    int damaged = 0;
    bool hasPicture = false;
    std::uint64_t known = 0;
    std::uint64_t unknown = 0;
    for (int i = 0; i < pages; ++i) {
        const PdfPageText page = pdf.Page(i, false);
        damaged += page.damaged ? 1 : 0;
        known += page.knownCharacters;
        unknown += page.unknownCharacters;
        hasPicture = hasPicture || page.isPicture;
        EmitPdfPage(page, i + 1, sink);
    }
    EmitNote(pdf.FormTexts(), sink);
    EmitNote(pdf.Bookmarks(), sink);
    if (!pdf.ReadFiles(attachments))
        sink.Incomplete("its embedded files are larger than what is unpacked");
    if (damaged > 0)
        sink.Incomplete(CountOf(damaged, pages));
    if (known + unknown == 0 && hasPicture)
        sink.Incomplete("pages are pictures without text");
    if (unknown > known)
        sink.Incomplete("its fonts do not tell what most characters mean");
}

} // namespace engine
