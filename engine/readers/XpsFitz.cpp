// The calls for XPS of the library that reads PDF.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/XpsFitz.h"

#include "engine/readers/Limits.h"

#include <cstring>

// Of the handlers that the library has, naming just this one keeps the others out of the program.
extern "C" {
extern fz_document_handler xps_document_handler;
}

namespace engine {

namespace {

// Text is lost where its font is, since the font tells how wide its characters are.
void HearComplaint(void* user, const char* message) {
    static constexpr const char* kLosses[] = {"font",          "glyph",       "zlib error",
                                              "premature end", "cannot find", "syntax error"};
    for (const char* loss : kLosses) {
        if (std::strstr(message, loss) != nullptr)
            static_cast<FitzXps*>(user)->sawDamage = true;
    }
}

void KeepError(FitzXps* xps) {
    std::strncpy(xps->error, fz_caught_message(xps->ctx), sizeof xps->error - 1);
    xps->error[sizeof xps->error - 1] = '\0';
}

} // namespace

bool XpsOpen(FitzXps* xps, const unsigned char* data, std::size_t size) {
    const fz_alloc_context allocator = FitzAllocator(&xps->memory);
    xps->ctx = fz_new_context(&allocator, nullptr, kPdfStoreBytes);
    if (xps->ctx == nullptr) {
        std::strncpy(xps->error, "out of memory", sizeof xps->error - 1);
        return false;
    }
    fz_context* ctx = xps->ctx;
    fz_set_error_callback(ctx, HearComplaint, xps);
    fz_set_warning_callback(ctx, HearComplaint, xps);
    fz_disable_icc(ctx);
    bool opened = false;
    fz_var(opened);
    fz_try(ctx) {
        fz_register_document_handler(ctx, &xps_document_handler);
        xps->stream = fz_open_memory(ctx, data, size);
        xps->doc = fz_open_document_with_stream(ctx, "application/vnd.ms-xpsdocument", xps->stream);
        xps->pageCount = fz_count_pages(ctx, xps->doc);
        opened = true;
    }
    fz_catch(ctx) KeepError(xps);
    return opened;
}

void XpsClose(FitzXps* xps) {
    if (xps->ctx == nullptr)
        return;
    fz_drop_document(xps->ctx, xps->doc);
    fz_drop_stream(xps->ctx, xps->stream);
    fz_drop_context(xps->ctx);
    xps->ctx = nullptr;
}

fz_stext_page* XpsLoadText(FitzXps* xps, int index, bool* damaged) {
    fz_context* ctx = xps->ctx;
    fz_page* page = nullptr;
    fz_device* device = nullptr;
    fz_stext_page* text = nullptr;
    bool failed = false;
    fz_var(page);
    fz_var(device);
    fz_var(text);
    fz_var(failed);
    xps->sawDamage = false;
    xps->memory.calls = 0;
    fz_try(ctx) {
        page = fz_load_page(ctx, xps->doc, index);
        text = fz_new_stext_page(ctx, fz_bound_page(ctx, page));
        device = fz_new_stext_device(ctx, text, nullptr);
        fz_run_page_contents(ctx, page, device, fz_identity, nullptr);
        fz_close_device(ctx, device);
    }
    fz_always(ctx) {
        fz_drop_device(ctx, device);
        fz_drop_page(ctx, page);
    }
    fz_catch(ctx) {
        KeepError(xps);
        failed = true;
    }
    *damaged = failed || xps->sawDamage;
    return text;
}

void XpsDropText(FitzXps* xps, fz_stext_page* page) {
    fz_drop_stext_page(xps->ctx, page);
}

} // namespace engine
