// Reads XPS and OpenXPS: documents of fixed pages.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/OpenXml.h"
#include "engine/readers/PdfPageText.h"
#include "engine/readers/PdfWalk.h"
#include "engine/readers/Reader.h"
#include "engine/readers/XpsFitz.h"

#include <algorithm>
#include <memory>

namespace engine {
namespace {

class XpsDocument {
  public:
    explicit XpsDocument(std::string_view bytes) {
        const auto* const data = reinterpret_cast<const unsigned char*>(bytes.data());
        if (!XpsOpen(&m_fitz, data, bytes.size())) {
            const std::string reason = m_fitz.error;
            XpsClose(&m_fitz);
            throw ReadError(ReadState::Damaged, "cannot be opened as XPS: " + reason);
        }
    }
    ~XpsDocument() { XpsClose(&m_fitz); }
    XpsDocument(const XpsDocument&) = delete;
    XpsDocument& operator=(const XpsDocument&) = delete;

    [[nodiscard]] int PageCount() const { return m_fitz.pageCount; }
    [[nodiscard]] PdfPageText Page(int index) {
        PdfPageText text;
        const auto drop = [this](fz_stext_page* page) { XpsDropText(&m_fitz, page); };
        const std::unique_ptr<fz_stext_page, decltype(drop)> page(
            XpsLoadText(&m_fitz, index, &text.damaged), drop);
        if (page == nullptr)
            return text;
        text.width = page->mediabox.x1 - page->mediabox.x0;
        text.height = page->mediabox.y1 - page->mediabox.y0;
        WalkPdfText(*page, Block::Paragraph, false, text);
        return text;
    }

  private:
    FitzXps m_fitz;
};

bool HoldsPictures(std::string_view bytes) {
    const ZipFile zip(bytes);
    return std::any_of(zip.Members().begin(), zip.Members().end(), [](const ZipMember& member) {
        const std::string_view name = member.name;
        constexpr std::string_view kEndings[] = {".png", ".jpg", ".jpeg", ".tif", ".tiff", ".wdp"};
        return std::any_of(std::begin(kEndings), std::end(kEndings),
                           [&](std::string_view ending) { return name.ends_with(ending); });
    });
}

} // namespace

void ReadXps(const Source& source, DocumentSink& sink) {
    OpenXmlPackage(source, sink).ReadProperties();
    XpsDocument document(source.bytes);
    const int pages = document.PageCount();
    if (pages <= 0)
        throw ReadError(ReadState::Damaged, "has no pages");
    int damaged = 0;
    std::uint64_t characters = 0;
    for (int i = 0; i < pages; ++i) {
        const PdfPageText page = document.Page(i);
        damaged += page.damaged ? 1 : 0;
        characters += page.knownCharacters + page.unknownCharacters;
        EmitPdfPage(page, i + 1, sink);
    }
    if (damaged > 0)
        sink.Incomplete(std::to_string(damaged) + " of " + std::to_string(pages) +
                        (pages == 1 ? " page is damaged" : " pages are damaged"));
    if (characters == 0 && damaged == 0 && HoldsPictures(source.bytes))
        sink.Incomplete("pages are pictures without text");
}

} // namespace engine
