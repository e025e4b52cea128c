// What the files of the PDF library's adapter share. Functions may leave by the library's longjmp
// except where they say otherwise: call them inside fz_try.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/PdfFitz.h"

namespace engine {

// Keeps the message of the error just caught, inside fz_catch; does not throw.
void FitzKeepError(FitzPdf* pdf);

// The object of a page, index from 0; borrowed.
pdf_obj* FitzPageObject(FitzPdf* pdf, int index);

// Extracts the text of a content stream, or of a form where it is not null (as an annotation
// draws it), into page.
void FitzRunText(FitzPdf* pdf, pdf_obj* contents, pdf_obj* form, pdf_obj* resources, fz_matrix ctm,
                 fz_stext_page* page);

} // namespace engine
