// Annotations and form fields of a PDF page, in plain data (see PdfFitz.h).
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/PdfFitzParts.h"

namespace engine {

namespace {

// The stream that draws an annotation in its present state, or null.
pdf_obj* Appearance(fz_context* ctx, pdf_obj* annotation) {
    pdf_obj* normal = pdf_dict_get(ctx, pdf_dict_get(ctx, annotation, PDF_NAME(AP)), PDF_NAME(N));
    if (pdf_is_stream(ctx, normal) == 0)
        normal = pdf_dict_get(ctx, normal, pdf_dict_get(ctx, annotation, PDF_NAME(AS)));
    return pdf_is_stream(ctx, normal) != 0 ? normal : nullptr;
}

// Fits the appearance's box, turned by its own matrix, into the annotation's rectangle.
fz_matrix AppearanceMatrix(fz_context* ctx, pdf_obj* annotation, pdf_obj* form) {
    const fz_rect box = fz_transform_rect(pdf_dict_get_rect(ctx, form, PDF_NAME(BBox)),
                                          pdf_dict_get_matrix(ctx, form, PDF_NAME(Matrix)));
    const fz_rect rect = pdf_dict_get_rect(ctx, annotation, PDF_NAME(Rect));
    const float width = box.x1 - box.x0;
    const float height = box.y1 - box.y0;
    const float x = width > 0 ? (rect.x1 - rect.x0) / width : 1;
    const float y = height > 0 ? (rect.y1 - rect.y0) / height : 1;
    return fz_make_matrix(x, 0, 0, y, rect.x0 - box.x0 * x, rect.y0 - box.y0 * y);
}

enum class NoteSource { None, Text, Drawing };

// What the form shows for a value that is chosen from a list: the document may keep another one.
pdf_obj* ShownChoice(fz_context* ctx, pdf_obj* options, pdf_obj* value) {
    constexpr int kMostOptions = 10'000;
    const int count = pdf_array_len(ctx, options);
    for (int i = 0; i < count && i < kMostOptions; ++i) {
        pdf_obj* option = pdf_array_get(ctx, options, i);
        if (pdf_array_len(ctx, option) == 2 &&
            pdf_objcmp_resolve(ctx, pdf_array_get(ctx, option, 0), value) == 0)
            return pdf_array_get(ctx, option, 1);
    }
    return value;
}

// The chosen values, one a line; it belongs to the document.
const char* ChosenText(FitzPdf* pdf, pdf_obj* field, pdf_obj* value) {
    constexpr int kMostChosen = 100;
    fz_context* ctx = pdf->ctx;
    pdf_obj* options = pdf_dict_get_inheritable(ctx, field, PDF_NAME(Opt));
    if (pdf_is_string(ctx, value) != 0)
        return pdf_to_text_string(ctx, ShownChoice(ctx, options, value));
    const char* text = "";
    fz_buffer* lines = fz_new_buffer(ctx, 256);
    fz_var(text);
    fz_try(ctx) {
        const int count = pdf_array_len(ctx, value);
        for (int i = 0; i < count && i < kMostChosen; ++i) {
            pdf_obj* shown = ShownChoice(ctx, options, pdf_array_get(ctx, value, i));
            if (lines->len > 0)
                fz_append_byte(ctx, lines, '\n');
            fz_append_string(ctx, lines, pdf_to_text_string(ctx, shown));
        }
        if (pdf->keptTexts == nullptr)
            pdf->keptTexts = pdf_new_array(ctx, pdf->doc, 8);
        pdf_array_push_drop(ctx, pdf->keptTexts,
                            pdf_new_text_string(ctx, fz_string_from_buffer(ctx, lines)));
        text = pdf_to_text_string(
            ctx, pdf_array_get(ctx, pdf->keptTexts, pdf_array_len(ctx, pdf->keptTexts) - 1));
    }
    fz_always(ctx) fz_drop_buffer(ctx, lines);
    fz_catch(ctx) fz_rethrow(ctx);
    return text;
}

// Where a form field's value is to be read.
NoteSource LookAtField(FitzPdf* pdf, pdf_obj* field, const char** text) {
    fz_context* ctx = pdf->ctx;
    pdf_obj* type = pdf_dict_get_inheritable(ctx, field, PDF_NAME(FT));
    const int flags = pdf_to_int(ctx, pdf_dict_get_inheritable(ctx, field, PDF_NAME(Ff)));
    if (pdf_name_eq(ctx, type, PDF_NAME(Btn)) != 0) // check boxes draw a tick only
        return (flags & PDF_BTN_FIELD_IS_PUSHBUTTON) != 0 ? NoteSource::Drawing : NoteSource::None;
    const bool isText = pdf_name_eq(ctx, type, PDF_NAME(Tx)) != 0;
    pdf_obj* value = pdf_dict_get_inheritable(ctx, field, PDF_NAME(V));
    if (pdf_name_eq(ctx, type, PDF_NAME(Ch)) != 0) {
        *text = ChosenText(pdf, field, value);
        return **text != '\0' ? NoteSource::Text : NoteSource::None;
    }
    if (!isText || (flags & PDF_TX_FIELD_IS_PASSWORD) != 0 || pdf_is_string(ctx, value) == 0)
        return NoteSource::None;
    *text = pdf_to_text_string(ctx, value);
    return NoteSource::Text;
}

NoteSource LookAtNote(FitzPdf* pdf, pdf_obj* annotation, const char** text) {
    fz_context* ctx = pdf->ctx;
    const int flags = pdf_dict_get_int(ctx, annotation, PDF_NAME(F));
    if ((flags & PDF_ANNOT_IS_HIDDEN) != 0)
        return NoteSource::None;
    pdf_obj* type = pdf_dict_get(ctx, annotation, PDF_NAME(Subtype));
    if (pdf_name_eq(ctx, type, PDF_NAME(Widget)) != 0)
        return LookAtField(pdf, annotation, text);
    // A pop-up only repeats its parent; a link's contents are a tool tip.
    if (pdf_name_eq(ctx, type, PDF_NAME(Popup)) != 0 || pdf_name_eq(ctx, type, PDF_NAME(Link)) != 0)
        return NoteSource::None;
    pdf_obj* contents = pdf_dict_get(ctx, annotation, PDF_NAME(Contents));
    if (pdf_is_string(ctx, contents) == 0)
        return NoteSource::Drawing;
    *text = pdf_to_text_string(ctx, contents);
    return **text != '\0' ? NoteSource::Text : NoteSource::Drawing;
}

// Fills note from an annotation of the page object.
void LoadNote(FitzPdf* pdf, pdf_obj* object, pdf_obj* annotation, FitzNote* note) {
    fz_context* ctx = pdf->ctx;
    const char* text = nullptr;
    const NoteSource source = LookAtNote(pdf, annotation, &text);
    if (source == NoteSource::None)
        return;
    fz_rect mediabox;
    fz_matrix ctm;
    pdf_page_obj_transform(ctx, object, &mediabox, &ctm);
    if (source == NoteSource::Text) {
        note->text = text;
        note->rect = fz_transform_rect(pdf_dict_get_rect(ctx, annotation, PDF_NAME(Rect)), ctm);
        return;
    }
    pdf_obj* form = Appearance(ctx, annotation);
    if (form == nullptr)
        return;
    note->drawn = fz_new_stext_page(ctx, fz_transform_rect(mediabox, ctm));
    FitzRunText(pdf, nullptr, form, pdf_dict_get_inheritable(ctx, object, PDF_NAME(Resources)),
                fz_concat(AppearanceMatrix(ctx, annotation, form), ctm), note->drawn);
}

} // namespace

int FitzCountNotes(FitzPdf* pdf, int index) {
    fz_context* ctx = pdf->ctx;
    int count = 0;
    fz_var(count);
    fz_try(ctx) {
        pdf_obj* object = FitzPageObject(pdf, index);
        count = pdf_array_len(ctx, pdf_dict_get(ctx, object, PDF_NAME(Annots)));
    }
    fz_catch(ctx) FitzKeepError(pdf);
    return count < kMaxPdfNotesPerPage ? count : kMaxPdfNotesPerPage;
}

FitzNote FitzGetNote(FitzPdf* pdf, int index, int note) {
    fz_context* ctx = pdf->ctx;
    FitzNote found;
    fz_var(found);
    fz_try(ctx) {
        pdf_obj* object = FitzPageObject(pdf, index);
        pdf_obj* annotations = pdf_dict_get(ctx, object, PDF_NAME(Annots));
        LoadNote(pdf, object, pdf_array_get(ctx, annotations, note), &found);
    }
    fz_catch(ctx) FitzKeepError(pdf); // what was drawn before the error counts
    return found;
}

} // namespace engine
