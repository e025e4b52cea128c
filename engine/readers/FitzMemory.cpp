// Counted memory of the library that reads PDF and XPS.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/FitzMemory.h"

#include "engine/readers/Limits.h"

#include <algorithm>
#include <cstdlib>
#include <malloc.h>

namespace engine {
namespace {

constexpr std::size_t kGrowBytes = 64 * 1024; // blocks larger than this grow by half

void* Resize(void* user, void* old, std::size_t size) {
    auto& memory = *static_cast<FitzMemory*>(user);
    if (++memory.calls > kFitzCallsPerPage)
        return nullptr;
    const std::size_t before = malloc_usable_size(old);
    if (size > before && before > kGrowBytes)
        size = std::max(size, before + before / 2);
    else if (size <= before && size >= before / 2)
        return old;
    if (memory.bytes - before + size > kFitzMemoryBytes)
        return nullptr;
    void* block = std::realloc(old, size);
    if (block != nullptr)
        memory.bytes += malloc_usable_size(block) - before;
    return block;
}

void* Allocate(void* user, std::size_t size) {
    return Resize(user, nullptr, size);
}

void Free(void* user, void* block) {
    static_cast<FitzMemory*>(user)->bytes -= malloc_usable_size(block);
    std::free(block);
}

} // namespace

fz_alloc_context FitzAllocator(FitzMemory* memory) {
    return {memory, Allocate, Resize, Free};
}

} // namespace engine
