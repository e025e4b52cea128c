// A worker that misbehaves over files whose names ask for it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/html/PageRole.h"
#include "engine/readers/ReadRole.h"
#include "workers/Child.h"

#include <clocale>
#include <cstdlib>
#include <stdexcept>
#include <string>

int main() {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    workers::Role read = engine::MakeReadRole();
    const auto serve = read.serve;
    read.serve = [serve](int file, std::string_view request, workers::Answer& answer) {
        const auto asks = [&](const char* what) {
            return request.find(what) != std::string_view::npos;
        };
        if (asks("crash-late"))
            serve(file, request, answer);
        if (asks("crash"))
            std::abort();
        if (asks("refuse"))
            throw std::runtime_error("the reader does not like it");
        for (volatile bool hang = asks("hang"); hang;) {
        }
        serve(file, request, answer);
    };
    return workers::RunWorker(
        {{engine::kReadRole, std::move(read)}, {engine::kPageRole, engine::MakePageRole()}});
}
