// The PDF library's calls, each behind a function that holds plain data only.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/PdfFitz.h"

#include "engine/readers/Limits.h"
#include "engine/readers/PdfFitzParts.h"

#include <cstring>

namespace engine {

namespace {

// The interpreter swallows errors inside a page and says so only here. Most of its complaints are
// harmless; these mean that content is lost.
void HearComplaint(void* user, const char* message) {
    static constexpr const char* kLosses[] = {"zlib error",       "premature end",
                                              "read error",       "syntax error in content stream",
                                              "cannot load font", "cannot find XObject"};
    for (const char* loss : kLosses) {
        if (std::strstr(message, loss) != nullptr)
            static_cast<FitzPdf*>(user)->sawDamage = true;
    }
}

void HearInlineImage(fz_context* ctx, pdf_processor* /*processor*/, fz_image* /*image*/,
                     const char* /*colorspace*/) {
    static_cast<FitzPdf*>(fz_user_context(ctx))->sawInlineImage = true;
}

// Text alone is wanted: without these operators the library builds no paths and loads no images,
// shadings, patterns and masks, which takes most of the time on drawings and scans.
void LeaveOutGraphics(pdf_processor* processor) {
    processor->op_m = nullptr;
    processor->op_l = nullptr;
    processor->op_c = nullptr;
    processor->op_v = nullptr;
    processor->op_y = nullptr;
    processor->op_h = nullptr;
    processor->op_re = nullptr;
    processor->op_S = nullptr;
    processor->op_s = nullptr;
    processor->op_F = nullptr;
    processor->op_f = nullptr;
    processor->op_fstar = nullptr;
    processor->op_B = nullptr;
    processor->op_Bstar = nullptr;
    processor->op_b = nullptr;
    processor->op_bstar = nullptr;
    processor->op_n = nullptr;
    processor->op_W = nullptr;
    processor->op_Wstar = nullptr;
    processor->op_gs_SMask = nullptr;
    processor->op_SC_pattern = nullptr;
    processor->op_sc_pattern = nullptr;
    processor->op_SC_shade = nullptr;
    processor->op_sc_shade = nullptr;
    processor->op_sh = nullptr;
    processor->op_Do_image = nullptr;
    processor->op_BI = HearInlineImage;
}

bool ResourcesHoldImage(fz_context* ctx, pdf_obj* resources, int depth) {
    constexpr int kMaxDepth = 4;
    constexpr int kMaxObjects = 200;
    pdf_obj* objects = pdf_dict_get(ctx, resources, PDF_NAME(XObject));
    int count = pdf_dict_len(ctx, objects);
    if (count > kMaxObjects)
        count = kMaxObjects;
    for (int i = 0; i < count; ++i) {
        pdf_obj* object = pdf_dict_get_val(ctx, objects, i);
        pdf_obj* type = pdf_dict_get(ctx, object, PDF_NAME(Subtype));
        if (pdf_name_eq(ctx, type, PDF_NAME(Image)) != 0)
            return true;
        if (depth < kMaxDepth && pdf_name_eq(ctx, type, PDF_NAME(Form)) != 0 &&
            ResourcesHoldImage(ctx, pdf_dict_get(ctx, object, PDF_NAME(Resources)), depth + 1))
            return true;
    }
    return false;
}

// Fills pages from the tree below node, as many as there is room for. The library can look a page
// up too, but walks the tree each time (its own map of the tree leaks).
void CollectPages(FitzPdf* pdf, pdf_obj* node, pdf_mark_bits* seen, int room, int depth) {
    constexpr int kMaxDepth = 100;
    fz_context* ctx = pdf->ctx;
    pdf_obj* kids = pdf_dict_get(ctx, node, PDF_NAME(Kids));
    const int count = pdf_array_len(ctx, kids);
    for (int i = 0; i < count && pdf->knownPages < room; ++i) {
        pdf_obj* kid = pdf_array_get(ctx, kids, i);
        if (pdf_is_array(ctx, pdf_dict_get(ctx, kid, PDF_NAME(Kids))) == 0) {
            pdf->pages[pdf->knownPages++] = pdf_keep_obj(ctx, kid);
        } else if (depth < kMaxDepth &&
                   (pdf_is_indirect(ctx, kid) == 0 || pdf_mark_bits_set(ctx, seen, kid) == 0)) {
            CollectPages(pdf, kid, seen, room, depth + 1);
        }
    }
}

// Lists the pages. The number that the document tells counts only where its tree is broken: it
// may be anything. Each page needs an object.
void ListPages(FitzPdf* pdf) {
    constexpr int kMaxListed = 1'000'000;
    fz_context* ctx = pdf->ctx;
    const int told = pdf_count_pages(ctx, pdf->doc);
    const int objects = pdf_xref_len(ctx, pdf->doc);
    const int most = told > objects ? told : objects;
    const int room = most < kMaxListed ? most : kMaxListed;
    pdf_mark_bits* seen = nullptr;
    bool whole = false;
    fz_var(seen);
    fz_var(whole);
    fz_try(ctx) {
        pdf_obj* root = pdf_dict_get(ctx, pdf_trailer(ctx, pdf->doc), PDF_NAME(Root));
        seen = pdf_new_mark_bits(ctx, pdf->doc);
        pdf->pages = static_cast<pdf_obj**>(
            fz_calloc(ctx, static_cast<std::size_t>(room) + 1, sizeof(pdf_obj*)));
        CollectPages(pdf, pdf_dict_get(ctx, root, PDF_NAME(Pages)), seen, room, 0);
        whole = true;
    }
    fz_always(ctx) pdf_drop_mark_bits(ctx, seen);
    fz_catch(ctx) FitzKeepError(pdf);
    if (whole && pdf->knownPages > 0)
        pdf->pageCount = pdf->knownPages;
    else
        pdf->pageCount = told < objects ? told : objects;
}

} // namespace

void FitzKeepError(FitzPdf* pdf) {
    const char* message = fz_caught_message(pdf->ctx);
    std::strncpy(pdf->error, message == nullptr ? "" : message, sizeof pdf->error - 1);
}

pdf_obj* FitzPageObject(FitzPdf* pdf, int index) {
    if (index < pdf->knownPages)
        return pdf->pages[index];
    return pdf_lookup_page_obj(pdf->ctx, pdf->doc, index);
}

void FitzRunText(FitzPdf* pdf, pdf_obj* contents, pdf_obj* form, pdf_obj* resources, fz_matrix ctm,
                 fz_stext_page* page) {
    fz_context* ctx = pdf->ctx;
    fz_cookie cookie{};
    fz_device* device = nullptr;
    pdf_processor* processor = nullptr;
    fz_var(device);
    fz_var(processor);
    fz_try(ctx) {
        device = fz_new_stext_device(ctx, page, nullptr);
        // Without a usage no layer is hidden.
        processor = pdf_new_run_processor(ctx, device, ctm, nullptr, nullptr, nullptr, &cookie);
        LeaveOutGraphics(processor);
        if (form != nullptr)
            processor->op_Do_form(ctx, processor, "", form, resources);
        else
            pdf_process_contents(ctx, processor, pdf->doc, resources, contents, &cookie);
        pdf_close_processor(ctx, processor);
        fz_close_device(ctx, device);
    }
    fz_always(ctx) {
        pdf_drop_processor(ctx, processor);
        fz_drop_device(ctx, device);
    }
    fz_catch(ctx) fz_rethrow(ctx);
}

FitzOpened FitzOpen(FitzPdf* pdf, const unsigned char* data, std::size_t size) {
    const fz_alloc_context allocator = FitzAllocator(&pdf->memory);
    pdf->ctx = fz_new_context(&allocator, nullptr, kPdfStoreBytes);
    if (pdf->ctx == nullptr) {
        std::strncpy(pdf->error, "out of memory", sizeof pdf->error - 1);
        return FitzOpened::Failed;
    }
    fz_context* ctx = pdf->ctx;
    fz_set_user_context(ctx, pdf);
    fz_set_error_callback(ctx, HearComplaint, pdf);
    fz_set_warning_callback(ctx, HearComplaint, pdf);
    fz_disable_icc(ctx);
    FitzOpened result = FitzOpened::Failed;
    fz_var(result);
    fz_try(ctx) {
        pdf->stream = fz_open_memory(ctx, data, size);
        pdf->doc = pdf_open_document_with_stream(ctx, pdf->stream);
        // An empty user password opens what only an owner's password protects.
        if (pdf_needs_password(ctx, pdf->doc) != 0) {
            result = FitzOpened::NeedsPassword;
        } else {
            ListPages(pdf);
            result = FitzOpened::Ok;
        }
    }
    fz_catch(ctx) {
        FitzKeepError(pdf);
        // A handler or a version of encryption that is not known here.
        if (std::strstr(pdf->error, "crypt") != nullptr)
            return FitzOpened::NeedsPassword;
        return FitzOpened::Failed;
    }
    return result;
}

void FitzClose(FitzPdf* pdf) {
    if (pdf->ctx == nullptr)
        return;
    for (int i = 0; i < pdf->knownPages; ++i)
        pdf_drop_obj(pdf->ctx, pdf->pages[i]);
    fz_free(pdf->ctx, pdf->pages);
    pdf_drop_obj(pdf->ctx, pdf->files);
    pdf_drop_obj(pdf->ctx, pdf->keptTexts);
    pdf_drop_document(pdf->ctx, pdf->doc);
    fz_drop_stream(pdf->ctx, pdf->stream);
    fz_drop_context(pdf->ctx);
    pdf->ctx = nullptr;
}

fz_stext_page* FitzLoadText(FitzPdf* pdf, int index, fz_rect* box, bool* damaged) {
    fz_context* ctx = pdf->ctx;
    fz_stext_page* page = nullptr;
    fz_var(page);
    pdf->sawDamage = false;
    pdf->memory.calls = 0;
    pdf->sawInlineImage = false;
    bool failed = false;
    fz_try(ctx) {
        pdf_obj* object = FitzPageObject(pdf, index);
        fz_rect mediabox;
        fz_matrix ctm;
        pdf_page_obj_transform(ctx, object, &mediabox, &ctm);
        *box = fz_transform_rect(mediabox, ctm);
        page = fz_new_stext_page(ctx, *box);
        FitzRunText(pdf, pdf_dict_get(ctx, object, PDF_NAME(Contents)), nullptr,
                    pdf_dict_get_inheritable(ctx, object, PDF_NAME(Resources)), ctm, page);
    }
    fz_catch(ctx) {
        FitzKeepError(pdf);
        failed = true;
    }
    *damaged = failed || pdf->sawDamage;
    return page;
}

void FitzDropText(FitzPdf* pdf, fz_stext_page* page) {
    fz_drop_stext_page(pdf->ctx, page);
}

bool FitzHasImage(FitzPdf* pdf, int index) {
    fz_context* ctx = pdf->ctx;
    bool found = false;
    fz_var(found);
    fz_try(ctx) {
        pdf_obj* object = FitzPageObject(pdf, index);
        found =
            ResourcesHoldImage(ctx, pdf_dict_get_inheritable(ctx, object, PDF_NAME(Resources)), 0);
    }
    fz_catch(ctx) FitzKeepError(pdf);
    return found;
}

} // namespace engine
