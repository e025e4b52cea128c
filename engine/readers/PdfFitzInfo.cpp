// What a PDF tells of itself: information, metadata, bookmarks; in plain data (see PdfFitz.h).
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/PdfFitzParts.h"

#include <cstring>

namespace engine {

namespace {

// Depth first over First and Next; seen keeps from going in circles.
void CollectTitles(fz_context* ctx, pdf_obj* outlines, pdf_mark_bits* seen, fz_buffer* titles) {
    constexpr int kMaxDepth = 64;
    pdf_obj* later[kMaxDepth]; // where to go on, a level up each
    int depth = 0;
    int count = 0;
    pdf_obj* entry = pdf_dict_get(ctx, outlines, PDF_NAME(First));
    while (entry != nullptr && count < kMaxPdfBookmarks) {
        pdf_obj* next = nullptr;
        if (pdf_is_dict(ctx, entry) != 0 && pdf_mark_bits_set(ctx, seen, entry) == 0) {
            ++count;
            const char* title = pdf_dict_get_text_string(ctx, entry, PDF_NAME(Title));
            if (title != nullptr && *title != '\0')
                fz_append_data(ctx, titles, title, std::strlen(title) + 1);
            next = pdf_dict_get(ctx, entry, PDF_NAME(Next));
            pdf_obj* child = pdf_dict_get(ctx, entry, PDF_NAME(First));
            if (child != nullptr && depth < kMaxDepth) {
                later[depth++] = next;
                next = child;
            }
        }
        while (next == nullptr && depth > 0)
            next = later[--depth];
        entry = next;
    }
}

} // namespace

const char* FitzInfo(FitzPdf* pdf, const char* key) {
    fz_context* ctx = pdf->ctx;
    const char* text = nullptr;
    fz_var(text);
    fz_try(ctx) {
        pdf_obj* info = pdf_dict_get(ctx, pdf_trailer(ctx, pdf->doc), PDF_NAME(Info));
        pdf_obj* value = pdf_dict_gets(ctx, info, key);
        if (pdf_is_string(ctx, value) != 0)
            text = pdf_to_text_string(ctx, value);
    }
    fz_catch(ctx) FitzKeepError(pdf);
    return text;
}

fz_buffer* FitzMetadata(FitzPdf* pdf) {
    constexpr std::size_t kChunk = 16'384;
    fz_context* ctx = pdf->ctx;
    fz_stream* stream = nullptr;
    fz_buffer* packet = nullptr;
    fz_var(stream);
    fz_var(packet);
    fz_try(ctx) {
        pdf_obj* root = pdf_dict_get(ctx, pdf_trailer(ctx, pdf->doc), PDF_NAME(Root));
        pdf_obj* object = pdf_dict_get(ctx, root, PDF_NAME(Metadata));
        if (pdf_is_stream(ctx, object) != 0) {
            stream = pdf_open_stream(ctx, object);
            packet = fz_new_buffer(ctx, kChunk);
            unsigned char chunk[kChunk];
            std::size_t got = 0;
            while (packet->len < kMaxPdfXmpBytes &&
                   (got = fz_read(ctx, stream, chunk, sizeof chunk)) > 0)
                fz_append_data(ctx, packet, chunk, got);
        }
    }
    fz_always(ctx) fz_drop_stream(ctx, stream);
    fz_catch(ctx) FitzKeepError(pdf); // what came before the damage may do
    return packet;
}

fz_buffer* FitzBookmarks(FitzPdf* pdf) {
    fz_context* ctx = pdf->ctx;
    fz_buffer* titles = nullptr;
    pdf_mark_bits* seen = nullptr;
    fz_var(titles);
    fz_var(seen);
    fz_try(ctx) {
        pdf_obj* root = pdf_dict_get(ctx, pdf_trailer(ctx, pdf->doc), PDF_NAME(Root));
        pdf_obj* outlines = pdf_dict_get(ctx, root, PDF_NAME(Outlines));
        if (pdf_is_dict(ctx, outlines) != 0) {
            titles = fz_new_buffer(ctx, 1024);
            seen = pdf_new_mark_bits(ctx, pdf->doc);
            CollectTitles(ctx, outlines, seen, titles);
        }
    }
    fz_always(ctx) pdf_drop_mark_bits(ctx, seen);
    fz_catch(ctx) FitzKeepError(pdf);
    return titles;
}

void FitzDropBuffer(FitzPdf* pdf, fz_buffer* buffer) {
    fz_drop_buffer(pdf->ctx, buffer);
}

} // namespace engine
