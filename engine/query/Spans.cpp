// Merging and measuring of spans; all in one pass over sorted lists.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Spans.h"

#include <algorithm>
#include <iterator>

namespace engine {
namespace {

// For each span of a, whether b has a span within distance. Of those that start no earlier the
// nearest is the first; of those that start earlier it is the one that reaches farthest.
std::vector<bool> HasNeighbour(const Spans& a, const Spans& b, std::uint32_t distance) {
    std::vector<bool> near(a.size());
    std::size_t later = 0;
    std::uint32_t reach = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        while (later < b.size() && b[later].first < a[i].first)
            reach = std::max(reach, b[later++].last);
        const bool before = later > 0 && std::uint64_t{reach} + distance >= a[i].first;
        std::size_t next = later;
        if (next < b.size() && b[next] == a[i])
            ++next;
        const bool after =
            next < b.size() && b[next].first <= std::uint64_t{a[i].last} + distance;
        near[i] = before || after;
    }
    return near;
}

Spans Pick(const Spans& spans, const std::vector<bool>& chosen, bool wanted) {
    Spans picked;
    for (std::size_t i = 0; i < spans.size(); ++i)
        if (chosen[i] == wanted)
            picked.push_back(spans[i]);
    return picked;
}

} // namespace

Spans Union(const Spans& a, const Spans& b) {
    Spans all;
    all.reserve(a.size() + b.size());
    std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(all));
    return all;
}

Spans Near(const Spans& a, const Spans& b, std::uint32_t distance) {
    return Union(Pick(a, HasNeighbour(a, b, distance), true),
                 Pick(b, HasNeighbour(b, a, distance), true));
}

Spans NotNear(const Spans& a, const Spans& b, std::uint32_t distance) {
    return Pick(a, HasNeighbour(a, b, distance), false);
}

Spans Before(const Spans& a, const Spans& b, std::uint32_t distance) {
    Spans found;
    for (const Span& left : a) {
        const auto right = std::upper_bound(
            b.begin(), b.end(), left.last,
            [](std::uint32_t last, const Span& span) { return last < span.first; });
        if (right != b.end() && right->first - left.last <= distance)
            found.push_back(left);
    }
    std::vector<std::uint32_t> ends;
    for (const Span& left : a)
        ends.push_back(left.last);
    std::sort(ends.begin(), ends.end());
    Spans right;
    for (const Span& span : b) {
        const auto end = std::lower_bound(ends.begin(), ends.end(), span.first);
        if (end != ends.begin() && span.first - *std::prev(end) <= distance)
            right.push_back(span);
    }
    return Union(found, right);
}

Spans Inside(const Spans& spans, const Spans& ranges) {
    Spans inside;
    for (const Span& span : spans)
        for (const Span& range : ranges)
            if (span.first >= range.first && span.last <= range.last) {
                inside.push_back(span);
                break;
            }
    return inside;
}

Spans Followed(const Spans& spans, const std::vector<std::uint32_t>& next) {
    Spans longer;
    std::size_t at = 0;
    for (const Span& span : spans) {
        while (at < next.size() && next[at] <= span.last)
            ++at;
        if (at < next.size() && next[at] == span.last + 1)
            longer.push_back({span.first, span.last + 1});
    }
    return longer;
}

std::vector<std::uint32_t> Cover(const Spans& spans) {
    std::vector<std::uint32_t> words;
    std::uint32_t done = 0;
    for (const Span& span : spans)
        for (std::uint32_t word = std::max(span.first, done + 1); word <= span.last; ++word)
            words.push_back(done = word);
    return words;
}

} // namespace engine
