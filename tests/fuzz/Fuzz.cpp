// The fuzzer's way in. VELMORA_FUZZ_TARGET names the target.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/fuzz/Target.h"

#include "engine/readers/Prepare.h"

#include <cstdint>
#include <cstdlib>
#include <iostream>

namespace {

const fuzz::Target* g_target = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    const char* name = std::getenv("VELMORA_FUZZ_TARGET");
    g_target = name != nullptr ? fuzz::FindTarget(name) : nullptr;
    if (g_target == nullptr) {
        std::cerr << "VELMORA_FUZZ_TARGET has to be one of:";
        for (const fuzz::Target& target : fuzz::Targets())
            std::cerr << ' ' << target.name;
        std::cerr << '\n';
        std::exit(2);
    }
    engine::PrepareReaders();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    g_target->run(*g_target, {reinterpret_cast<const char*>(data), size});
    return 0;
}
