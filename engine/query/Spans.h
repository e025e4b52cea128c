// Exact evaluation of a request in one document: instances as spans of word numbers.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace engine {

// Word numbers from 1, both included.
struct Span {
    std::uint32_t first = 0, last = 0;
    friend auto operator<=>(const Span&, const Span&) = default;
};
using Spans = std::vector<Span>; // sorted, without repeats

// Results replace what the last argument holds, whose memory is used again.

// Instances of either side that have one of the other within distance words: the distance is
// that from the end of the earlier to the start of the later. An instance is never near itself.
void Near(const Spans& a, const Spans& b, std::uint32_t distance, Spans& scratch, Spans& near);
// Whether there are any, of two lists of single words (ascending).
[[nodiscard]] bool AreNear(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b,
                           std::uint32_t distance);
// The same where the instance of a stands before that of b.
[[nodiscard]] Spans Before(const Spans& a, const Spans& b, std::uint32_t distance);
// Instances of a without an instance of b within distance.
void NotNear(const Spans& a, const Spans& b, std::uint32_t distance, Spans& apart);
void Unite(const Spans& a, const Spans& b, Spans& all);
// Those that lie wholly inside one of the ranges.
[[nodiscard]] Spans Inside(const Spans& spans, const Spans& ranges);
// Adds one more word behind each span; spans stay whose last word is followed by a place in next.
void KeepFollowed(Spans& spans, const std::vector<std::uint32_t>& next);
// All word numbers that the spans cover, ascending, without repeats.
[[nodiscard]] std::vector<std::uint32_t> Cover(const Spans& spans);
// How many they are.
[[nodiscard]] std::size_t Covered(const Spans& spans);

} // namespace engine
