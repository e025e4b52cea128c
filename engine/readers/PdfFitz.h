// The PDF library's calls, each behind a function that holds plain data only. The library leaves
// by longjmp when it fails; nothing with a destructor may stand in its way, so that no C++ object
// lives in PdfFitz.cpp and no exception passes through it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/FitzMemory.h"

#include <cstddef>
#include <cstdint>

extern "C" {
#include <mupdf/fitz.h>
#include <mupdf/pdf.h>
}

namespace engine {

// An open document. All functions below take one that FitzOpen has filled.
struct FitzPdf {
    fz_context* ctx = nullptr;
    FitzMemory memory;
    fz_stream* stream = nullptr;
    pdf_document* doc = nullptr;
    int pageCount = 0;
    pdf_obj** pages = nullptr; // the first knownPages are listed
    int knownPages = 0;
    pdf_obj* keptTexts = nullptr; // texts put together here, which live as long
    pdf_obj* files = nullptr;     // specifications of embedded files, once they were counted
    bool sawInlineImage = false;  // since the last FitzLoadText
    bool sawDamage = false;       // the library has complained of lost content, likewise
    char error[256] = "";         // of the last function that failed
};

// What an annotation or a form field has to read, which may be nothing: its contents or value, or
// else what it draws (a stamp, a button).
struct FitzNote {
    const char* text = nullptr;     // UTF-8, belongs to the document
    fz_rect rect{};                 // of the text: on the page, points, y downwards
    fz_stext_page* drawn = nullptr; // to be dropped with FitzDropText
};

// What is embedded in the document.
struct FitzFile {
    fz_buffer* content = nullptr; // to be dropped with FitzDropBuffer; null where it failed
    std::int64_t modified = 0;    // seconds since 1970; 0 unknown
    bool cut = false;             // there is more than what was asked for
    bool damaged = false;         // content holds what came before the damage
};

enum class FitzOpened { Ok, NeedsPassword, Failed };

// data must outlive the document. FitzClose is called whatever comes out.
FitzOpened FitzOpen(FitzPdf* pdf, const unsigned char* data, std::size_t size);
void FitzClose(FitzPdf* pdf);

// The page's text, to be dropped with FitzDropText; null where it failed. *damaged is set where
// part of the page is lost; box is the page's as shown, its origin at 0, 0.
fz_stext_page* FitzLoadText(FitzPdf* pdf, int index, fz_rect* box, bool* damaged);
void FitzDropText(FitzPdf* pdf, fz_stext_page* page);

// Annotations of a page: how many, and each one.
int FitzCountNotes(FitzPdf* pdf, int index);
FitzNote FitzGetNote(FitzPdf* pdf, int index, int note);

// Whether the page's resources hold an image.
bool FitzHasImage(FitzPdf* pdf, int index);

// Whether the document has form fields that stand on its pages.
bool FitzHasFields(FitzPdf* pdf);

// Embedded files, wherever the document names them: how many, and each one's name (UTF-8, belongs
// to the document, may be empty) and content, of which at most limit bytes are taken.
int FitzCountFiles(FitzPdf* pdf);
const char* FitzFileName(FitzPdf* pdf, int index);
FitzFile FitzGetFile(FitzPdf* pdf, int index, std::size_t limit);

// A text of the document information; belongs to the document, null where there is none.
const char* FitzInfo(FitzPdf* pdf, const char* key);
// Buffers to be dropped with FitzDropBuffer, or null: the XMP packet; the bookmarks' titles, each
// ended by a zero byte.
fz_buffer* FitzMetadata(FitzPdf* pdf);
fz_buffer* FitzBookmarks(FitzPdf* pdf);
// A packet of the form's XFA description, such as "datasets", or all of them where they are one
// stream.
fz_buffer* FitzXfaPacket(FitzPdf* pdf, const char* name);
void FitzDropBuffer(FitzPdf* pdf, fz_buffer* buffer);

} // namespace engine
