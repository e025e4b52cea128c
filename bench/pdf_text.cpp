// Times the reading of PDF files against the PDF library alone, in turns in one process:
//     pdf_text FILE.pdf...
// Prints pages a second of each, of the best of some rounds, and their ratio.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MappedFile.h"
#include "engine/readers/Prepare.h"
#include "engine/readers/Reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

extern "C" {
#include <mupdf/fitz.h>
}

namespace {

constexpr int kRounds = 5;

// Takes what a reader gives and only counts it.
class CountingSink final : public engine::DocumentSink {
  public:
    int pages = 0;
    std::size_t bytes = 0;
    void Field(std::string_view /*name*/, std::string_view value) override {
        bytes += value.size();
    }
    void Text(std::string_view utf8) override { bytes += utf8.size(); }
    void Open(engine::Block block, int /*level*/) override {
        pages += block == engine::Block::Page ? 1 : 0;
    }
    void Close(engine::Block /*block*/) override {}
    void Break() override {}
    void Incomplete(std::string_view /*reason*/) override {}
};

class NoMembers final : public engine::MemberSink {
  public:
    bool Wants(std::string_view /*path*/) override { return false; }
    void Receive(const engine::Member& /*member*/) override {}
};

// Every page's text as the library lays it out, counted character by character. It leaves by
// longjmp: nothing with a destructor may live here.
int ReadBare(std::string_view bytes, std::size_t* characters) {
    fz_context* ctx = fz_new_context(nullptr, nullptr, FZ_STORE_DEFAULT);
    fz_stream* stream = nullptr;
    fz_document* document = nullptr;
    int pages = 0;
    fz_var(stream);
    fz_var(document);
    fz_var(pages);
    fz_try(ctx) {
        fz_register_document_handlers(ctx);
        stream =
            fz_open_memory(ctx, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
        document = fz_open_document_with_stream(ctx, "application/pdf", stream);
        pages = fz_count_pages(ctx, document);
        for (int i = 0; i < pages; ++i) {
            fz_stext_page* page = fz_new_stext_page_from_page_number(ctx, document, i, nullptr);
            for (fz_stext_block* block = page->first_block; block != nullptr; block = block->next)
                for (fz_stext_line* line =
                         block->type == FZ_STEXT_BLOCK_TEXT ? block->u.t.first_line : nullptr;
                     line != nullptr; line = line->next)
                    for (fz_stext_char* c = line->first_char; c != nullptr; c = c->next)
                        ++*characters;
            fz_drop_stext_page(ctx, page);
        }
    }
    fz_always(ctx) {
        fz_drop_document(ctx, document);
        fz_drop_stream(ctx, stream);
    }
    fz_catch(ctx) std::fprintf(stderr, "%s\n", fz_caught_message(ctx));
    fz_drop_context(ctx);
    return pages;
}

template <typename Work> double Seconds(const Work& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void Compare(const char* name, std::string_view bytes) {
    double reader = 1e9;
    double bare = 1e9;
    int pages = 0;
    std::size_t text = 0;
    std::size_t characters = 0;
    for (int round = 0; round < kRounds; ++round) {
        CountingSink sink;
        NoMembers members;
        reader = std::min(reader, Seconds([&] { engine::ReadPdf({bytes, name}, sink, members); }));
        text = sink.bytes;
        characters = 0;
        bare = std::min(bare, Seconds([&] { pages = ReadBare(bytes, &characters); }));
    }
    std::printf("%s: %d pages, %zu bytes of text, %zu characters\n"
                "  reader %.0f pages/s, library %.0f pages/s, ratio %.2f\n",
                name, pages, text, characters, pages / reader, pages / bare, bare / reader);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: pdf_text FILE.pdf...\n");
        return 2;
    }
    engine::PrepareReaders();
    for (int i = 1; i < argc; ++i) {
        const int file = ::open(argv[i], O_RDONLY | O_CLOEXEC);
        if (file < 0) {
            std::perror(argv[i]);
            return 1;
        }
        try {
            const engine::MappedFile mapped(file);
            Compare(argv[i], mapped.Bytes());
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s: %s\n", argv[i], error.what());
        }
        ::close(file);
    }
    return 0;
}
