// Files embedded in a PDF, and the packets of its XFA form, in plain data (see PdfFitz.h).
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Limits.h"
#include "engine/readers/PdfFitzParts.h"

#include <cstring>

namespace engine {

namespace {

// The stream of a file specification, or null: it only names a file elsewhere.
pdf_obj* EmbeddedStream(fz_context* ctx, pdf_obj* specification) {
    pdf_obj* streams = pdf_dict_get(ctx, specification, PDF_NAME(EF));
    pdf_obj* keys[] = {PDF_NAME(UF), PDF_NAME(F), PDF_NAME(Unix), PDF_NAME(DOS), PDF_NAME(Mac)};
    for (pdf_obj* key : keys) {
        pdf_obj* stream = pdf_dict_get(ctx, streams, key);
        if (pdf_is_stream(ctx, stream) != 0)
            return stream;
    }
    return nullptr;
}

const char* FileName(fz_context* ctx, pdf_obj* specification) {
    pdf_obj* keys[] = {PDF_NAME(UF), PDF_NAME(F), PDF_NAME(Unix), PDF_NAME(DOS), PDF_NAME(Mac)};
    for (pdf_obj* key : keys) {
        pdf_obj* name = pdf_dict_get(ctx, specification, key);
        if (pdf_is_string(ctx, name) != 0 && *pdf_to_text_string(ctx, name) != '\0')
            return pdf_to_text_string(ctx, name);
    }
    return "";
}

// What a walk over names and annotations keeps track of.
struct Gathering {
    FitzPdf* pdf;
    pdf_mark_bits* trees; // nodes of name trees that were met
    pdf_mark_bits* files; // streams that were met: the same file is often named in two places
};

void AddFile(Gathering* gathering, pdf_obj* specification) {
    fz_context* ctx = gathering->pdf->ctx;
    pdf_obj* stream = EmbeddedStream(ctx, specification);
    if (stream == nullptr || pdf_array_len(ctx, gathering->pdf->files) >= kMaxPdfFiles ||
        pdf_mark_bits_set(ctx, gathering->files, stream) != 0)
        return;
    pdf_array_push(ctx, gathering->pdf->files, specification);
}

void AddTree(Gathering* gathering, pdf_obj* node, int depth) {
    constexpr int kMaxDepth = 32;
    fz_context* ctx = gathering->pdf->ctx;
    if (pdf_is_dict(ctx, node) == 0 || depth > kMaxDepth ||
        (pdf_is_indirect(ctx, node) != 0 && pdf_mark_bits_set(ctx, gathering->trees, node) != 0))
        return;
    pdf_obj* names = pdf_dict_get(ctx, node, PDF_NAME(Names));
    const int count = pdf_array_len(ctx, names);
    for (int i = 1; i < count && i / 2 < kMaxPdfFiles; i += 2)
        AddFile(gathering, pdf_array_get(ctx, names, i));
    pdf_obj* kids = pdf_dict_get(ctx, node, PDF_NAME(Kids));
    const int kidCount = pdf_array_len(ctx, kids);
    for (int i = 0; i < kidCount; ++i)
        AddTree(gathering, pdf_array_get(ctx, kids, i), depth + 1);
}

void AddArray(Gathering* gathering, pdf_obj* specifications) {
    fz_context* ctx = gathering->pdf->ctx;
    const int count = pdf_array_len(ctx, specifications);
    for (int i = 0; i < count && i < kMaxPdfFiles; ++i)
        AddFile(gathering, pdf_array_get(ctx, specifications, i));
}

void AddAnnotations(Gathering* gathering, pdf_obj* page) {
    fz_context* ctx = gathering->pdf->ctx;
    pdf_obj* annotations = pdf_dict_get(ctx, page, PDF_NAME(Annots));
    int count = pdf_array_len(ctx, annotations);
    if (count > kMaxPdfNotesPerPage)
        count = kMaxPdfNotesPerPage;
    for (int i = 0; i < count; ++i) {
        pdf_obj* annotation = pdf_array_get(ctx, annotations, i);
        AddFile(gathering, pdf_dict_get(ctx, annotation, PDF_NAME(FS)));
        AddArray(gathering, pdf_dict_gets(ctx, annotation, "AF"));
        pdf_obj* media = pdf_dict_gets(ctx, annotation, "RichMediaContent");
        if (media != nullptr)
            AddTree(gathering, pdf_dict_gets(ctx, media, "Assets"), 0);
    }
    AddArray(gathering, pdf_dict_gets(ctx, page, "AF"));
}

// Appends a stream's content to buffer; true: there is more than limit.
bool Append(fz_context* ctx, pdf_obj* object, fz_buffer* buffer, std::size_t limit) {
    constexpr std::size_t kChunk = 65'536;
    fz_stream* stream = nullptr;
    bool cut = false;
    fz_var(stream);
    fz_var(cut);
    fz_try(ctx) {
        stream = pdf_open_stream(ctx, object);
        while (!cut) {
            const std::size_t ready = fz_available(ctx, stream, kChunk);
            if (ready == 0)
                break;
            const std::size_t room = limit > buffer->len ? limit - buffer->len : 0;
            cut = ready > room;
            const std::size_t taken = cut ? room : ready;
            fz_append_data(ctx, buffer, stream->rp, taken);
            stream->rp += taken;
        }
    }
    fz_always(ctx) fz_drop_stream(ctx, stream);
    fz_catch(ctx) fz_rethrow(ctx);
    return cut;
}

pdf_obj* Catalog(FitzPdf* pdf) {
    return pdf_dict_get(pdf->ctx, pdf_trailer(pdf->ctx, pdf->doc), PDF_NAME(Root));
}

} // namespace

int FitzCountFiles(FitzPdf* pdf) {
    fz_context* ctx = pdf->ctx;
    Gathering gathering{pdf, nullptr, nullptr};
    int count = 0;
    fz_var(gathering);
    fz_var(count);
    fz_try(ctx) {
        if (pdf->files == nullptr) {
            pdf->files = pdf_new_array(ctx, pdf->doc, 8);
            gathering.trees = pdf_new_mark_bits(ctx, pdf->doc);
            gathering.files = pdf_new_mark_bits(ctx, pdf->doc);
            pdf_obj* names = pdf_dict_get(ctx, Catalog(pdf), PDF_NAME(Names));
            AddTree(&gathering, pdf_dict_get(ctx, names, PDF_NAME(EmbeddedFiles)), 0);
            AddArray(&gathering, pdf_dict_gets(ctx, Catalog(pdf), "AF"));
            for (int i = 0; i < pdf->knownPages; ++i)
                AddAnnotations(&gathering, pdf->pages[i]);
        }
    }
    fz_always(ctx) {
        pdf_drop_mark_bits(ctx, gathering.trees);
        pdf_drop_mark_bits(ctx, gathering.files);
    }
    fz_catch(ctx) FitzKeepError(pdf); // what was found before counts
    fz_try(ctx) count = pdf_array_len(ctx, pdf->files);
    fz_catch(ctx) FitzKeepError(pdf);
    return count;
}

const char* FitzFileName(FitzPdf* pdf, int index) {
    fz_context* ctx = pdf->ctx;
    const char* name = "";
    fz_var(name);
    fz_try(ctx) name = FileName(ctx, pdf_array_get(ctx, pdf->files, index));
    fz_catch(ctx) FitzKeepError(pdf);
    return name;
}

FitzFile FitzGetFile(FitzPdf* pdf, int index, std::size_t limit) {
    fz_context* ctx = pdf->ctx;
    FitzFile file;
    fz_var(file);
    pdf->sawDamage = false;
    fz_try(ctx) {
        pdf_obj* stream = EmbeddedStream(ctx, pdf_array_get(ctx, pdf->files, index));
        file.content = fz_new_buffer(ctx, 1024);
        pdf_obj* parameters = pdf_dict_get(ctx, stream, PDF_NAME(Params));
        const std::int64_t modified = pdf_dict_get_date(ctx, parameters, PDF_NAME(ModDate));
        file.modified = modified > 0 ? modified : 0;
        file.cut = Append(ctx, stream, file.content, limit);
        if (pdf->sawDamage) // the library only complains and goes on
            fz_throw(ctx, FZ_ERROR_GENERIC, "broken data");
    }
    fz_catch(ctx) {
        FitzKeepError(pdf);
        file.damaged = true;
    }
    return file;
}

fz_buffer* FitzXfaPacket(FitzPdf* pdf, const char* name) {
    fz_context* ctx = pdf->ctx;
    fz_buffer* packet = nullptr;
    fz_var(packet);
    fz_try(ctx) {
        pdf_obj* form = pdf_dict_get(ctx, Catalog(pdf), PDF_NAME(AcroForm));
        pdf_obj* xfa = pdf_dict_get(ctx, form, PDF_NAME(XFA));
        const int count = pdf_array_len(ctx, xfa);
        // Either one stream with all packets, or an array of names and streams.
        for (int i = 0; i + 1 < count && i < kMaxPdfFiles; i += 2)
            if (std::strcmp(pdf_to_str_buf(ctx, pdf_array_get(ctx, xfa, i)), name) == 0)
                xfa = pdf_array_get(ctx, xfa, i + 1);
        if (pdf_is_stream(ctx, xfa) != 0) {
            packet = fz_new_buffer(ctx, 1024);
            Append(ctx, xfa, packet, kMaxPdfXfaBytes);
        }
    }
    fz_catch(ctx) FitzKeepError(pdf); // what came before the damage may do
    return packet;
}

bool FitzHasFields(FitzPdf* pdf) {
    fz_context* ctx = pdf->ctx;
    bool has = false;
    fz_var(has);
    fz_try(ctx) {
        pdf_obj* form = pdf_dict_get(ctx, Catalog(pdf), PDF_NAME(AcroForm));
        has = pdf_array_len(ctx, pdf_dict_get(ctx, form, PDF_NAME(Fields))) > 0;
    }
    fz_catch(ctx) FitzKeepError(pdf);
    return has;
}

} // namespace engine
