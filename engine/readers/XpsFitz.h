// The calls for XPS of the library that reads PDF, held to the same rules as those in PdfFitz.h:
// plain data only, since it leaves by longjmp.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/FitzMemory.h"

#include <cstddef>

extern "C" {
#include <mupdf/fitz.h>
}

namespace engine {

// An open document. All functions below take one that XpsOpen has filled.
struct FitzXps {
    fz_context* ctx = nullptr;
    FitzMemory memory;
    fz_stream* stream = nullptr;
    fz_document* doc = nullptr;
    int pageCount = 0;
    bool sawDamage = false; // the library has complained of lost content since the last page began
    char error[256] = "";   // of the last function that failed
};

// data must outlive the document. XpsClose is called whatever comes out.
bool XpsOpen(FitzXps* xps, const unsigned char* data, std::size_t size);
void XpsClose(FitzXps* xps);

// The page's text, index from 0, to be dropped with XpsDropText; null where it failed. *damaged is
// set where part of the page is lost.
fz_stext_page* XpsLoadText(FitzXps* xps, int index, bool* damaged);
void XpsDropText(FitzXps* xps, fz_stext_page* page);

} // namespace engine
