// A PDF file, opened from memory.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/PdfDocument.h"

#include "engine/readers/Limits.h"
#include "engine/readers/MemberNames.h"
#include "engine/readers/PdfWalk.h"
#include "engine/readers/PdfXfa.h"
#include "engine/readers/Reader.h"

#include <algorithm>

namespace engine {

struct PdfDocument::Library {
    FitzPdf fitz;
    ~Library() { FitzClose(&fitz); }
};

namespace {

// Owner of a page's text in the library.
class TextPage {
  public:
    TextPage(FitzPdf& pdf, fz_stext_page* page) : m_pdf(pdf), m_page(page) {}
    ~TextPage() { FitzDropText(&m_pdf, m_page); }
    TextPage(const TextPage&) = delete;
    TextPage& operator=(const TextPage&) = delete;
    [[nodiscard]] const fz_stext_page* get() const { return m_page; }

  private:
    FitzPdf& m_pdf;
    fz_stext_page* m_page;
};

// Owner of a buffer of the library.
class Buffer {
  public:
    Buffer(FitzPdf& pdf, fz_buffer* buffer) : m_pdf(pdf), m_buffer(buffer) {}
    ~Buffer() { FitzDropBuffer(&m_pdf, m_buffer); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    [[nodiscard]] std::string_view View() const {
        if (m_buffer == nullptr)
            return {};
        return {reinterpret_cast<const char*>(m_buffer->data), m_buffer->len};
    }

  private:
    FitzPdf& m_pdf;
    fz_buffer* m_buffer;
};

} // namespace

PdfDocument::PdfDocument(std::string_view bytes) : m_library(std::make_unique<Library>()) {
    if (bytes.empty())
        throw ReadError(ReadState::Damaged, "is empty");
    FitzPdf& fitz = m_library->fitz;
    switch (FitzOpen(&fitz, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size())) {
    case FitzOpened::Ok:
        break;
    case FitzOpened::NeedsPassword:
        throw ReadError(ReadState::Encrypted, "needs a password");
    case FitzOpened::Failed:
        throw ReadError(ReadState::Damaged, std::string("cannot be opened as PDF: ") + fitz.error);
    }
    if (fitz.pageCount <= 0)
        throw ReadError(ReadState::Damaged, "has no pages");
}

PdfDocument::~PdfDocument() = default;

int PdfDocument::PageCount() const {
    return m_library->fitz.pageCount;
}

PdfPageText PdfDocument::Page(int index, bool withCharacters) {
    FitzPdf& fitz = m_library->fitz;
    PdfPageText text;
    fz_rect box{};
    const TextPage page(fitz, FitzLoadText(&fitz, index, &box, &text.damaged));
    text.width = box.x1 - box.x0;
    text.height = box.y1 - box.y0;
    if (page.get() != nullptr)
        WalkPdfText(*page.get(), Block::Paragraph, withCharacters, text);
    if (text.knownCharacters + text.unknownCharacters == 0)
        text.isPicture = fitz.sawInlineImage || FitzHasImage(&fitz, index);
    const int notes = FitzCountNotes(&fitz, index);
    for (int i = 0; i < notes; ++i) {
        const FitzNote note = FitzGetNote(&fitz, index, i);
        const TextPage drawn(fitz, note.drawn);
        if (drawn.get() != nullptr)
            WalkPdfText(*drawn.get(), Block::Note, withCharacters, text);
        else if (note.text != nullptr)
            AppendPdfNote(note.text, note.rect, withCharacters, text);
    }
    return text;
}

std::string PdfDocument::Info(const char* key) {
    const char* text = FitzInfo(&m_library->fitz, key);
    return text == nullptr ? std::string() : std::string(text);
}

std::string PdfDocument::Metadata() {
    return std::string(Buffer(m_library->fitz, FitzMetadata(&m_library->fitz)).View());
}

std::vector<std::string> PdfDocument::FormTexts() {
    FitzPdf& fitz = m_library->fitz;
    if (FitzHasFields(&fitz))
        return {};
    std::vector<std::string> texts;
    for (const char* packet : {"template", "datasets"})
        AppendXfaTexts(Buffer(fitz, FitzXfaPacket(&fitz, packet)).View(), packet, texts);
    return texts;
}

bool PdfDocument::ReadFiles(MemberSink& files) {
    FitzPdf& fitz = m_library->fitz;
    const int count = FitzCountFiles(&fitz);
    UniqueNames names;
    std::size_t room = kMaxPdfFileBytes;
    for (int i = 0; i < count && room > 0; ++i) {
        Member member;
        const std::string name = CleanFileName(FitzFileName(&fitz, i));
        member.path = names.Add(name.empty() ? "unnamed" : name);
        if (!files.Wants(member.path))
            continue;
        const FitzFile file = FitzGetFile(&fitz, i, room);
        const Buffer content(fitz, file.content);
        member.bytes = content.View();
        member.modified = file.modified;
        member.cut = file.cut;
        if (file.damaged) {
            const bool empty = member.bytes.empty();
            member.problem =
                (empty ? "cannot be unpacked: " : "damaged: ") + std::string(fitz.error);
            member.problemState = empty ? ReadState::Damaged : ReadState::Partly;
        }
        room -= std::min(room, member.bytes.size());
        files.Receive(member);
    }
    return room > 0 && count < kMaxPdfFiles;
}

std::vector<std::string> PdfDocument::Bookmarks() {
    std::vector<std::string> titles;
    const Buffer buffer(m_library->fitz, FitzBookmarks(&m_library->fitz));
    std::string_view rest = buffer.View();
    while (!rest.empty()) {
        const std::size_t end = rest.find('\0');
        titles.emplace_back(rest.substr(0, end));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return titles;
}

} // namespace engine
