// The worker process: reads foreign documents behind a wall.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/html/PageRole.h"
#include "engine/readers/ReadRole.h"
#include "workers/Child.h"

#include <clocale>
#include <cstdio>
#include <cstring>

int main(int argc, char** argv) {
    for (int at = 1; at < argc; ++at) {
        if (std::strcmp(argv[at], "--version") == 0) {
            std::puts("velmora-worker " VELMORA_VERSION);
            return 0;
        }
        if (std::strcmp(argv[at], "--help") == 0) {
            std::puts("velmora-worker is started by PrjVelmora and velmora to read documents.\n"
                      "It is of no use by itself.");
            return 0;
        }
    }
    // Names in archives need a UTF-8 locale; numbers keep their full stop.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    return workers::RunWorker(
        {{engine::kReadRole, engine::MakeReadRole()}, {engine::kPageRole, engine::MakePageRole()}});
}
