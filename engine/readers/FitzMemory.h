// The memory of the library that reads PDF and XPS.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>

extern "C" {
#include <mupdf/fitz.h>
}

namespace engine {

// What one context takes. The calls are counted too, since the library runs on and on over some
// lists of glyphs that do not end as they should; the owner sets them back for each page.
struct FitzMemory {
    std::size_t bytes = 0;
    std::size_t calls = 0;
};

// An allocator that refuses beyond kFitzMemoryBytes and kFitzCallsPerPage, where the library ends
// with an error; memory outlives the context. Blocks grow in large steps: the library lengthens a
// line of text by a few glyphs at a time.
[[nodiscard]] fz_alloc_context FitzAllocator(FitzMemory* memory);

} // namespace engine
