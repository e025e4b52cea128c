// One target for each reader: any bytes give a proper tree of blocks, or a clear refusal.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/fuzz/CheckedSinks.h"
#include "tests/fuzz/Packages.h"
#include "tests/fuzz/Target.h"

namespace fuzz {
namespace {

// Every eighth input is left in the middle, at a place that depends on it.
std::uint64_t PlaceToStop(std::string_view input) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char c : input)
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    hash ^= hash >> 32;
    return hash % 8 == 0 ? 1 + hash / 8 % 40 : 0;
}

} // namespace

void FuzzReader(const Target& self, std::string_view input) {
    const auto kind = static_cast<engine::Kind>(self.detail);
    const std::string document = DocumentOf(kind, input);
    CheckedSink sink(PlaceToStop(input));
    CheckedMembers members;
    if (MayFail([&] { engine::ReadDocument(kind, {document, NameOf(kind)}, sink, members); }))
        sink.RequireAllClosed();
}

void FuzzMembers(const Target& self, std::string_view input) {
    const auto kind = static_cast<engine::Kind>(self.detail);
    CheckedMembers members;
    MayFail([&] {
        if (kind == engine::Kind::Mbox)
            engine::ReadMbox({input, NameOf(kind)}, members);
        else
            engine::ReadArchive({input, NameOf(kind)}, members);
    });
}

} // namespace fuzz
