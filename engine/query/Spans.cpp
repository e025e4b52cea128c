// Merging and measuring of spans; all in one pass over sorted lists.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Spans.h"

#include <algorithm>
#include <iterator>

namespace engine {
namespace {

// Appends the spans of a that have a span of b within distance, or those that have none. Of those
// that start no earlier the nearest is the first; of those that start earlier it is the one that
// reaches farthest.
void Pick(const Spans& a, const Spans& b, std::uint32_t distance, bool wanted, Spans& picked) {
    std::size_t later = 0;
    std::uint64_t reach = 0;
    for (const Span& span : a) {
        while (later < b.size() && b[later].first < span.first)
            reach = std::max<std::uint64_t>(reach, b[later++].last);
        const std::size_t next = later < b.size() && b[later] == span ? later + 1 : later;
        const bool near = (later > 0 && reach + distance >= span.first) ||
                          (next < b.size() && b[next].first <= std::uint64_t{span.last} + distance);
        if (near == wanted)
            picked.push_back(span);
    }
}

} // namespace

void Unite(const Spans& a, const Spans& b, Spans& all) {
    all.clear();
    std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(all));
}

void Near(const Spans& a, const Spans& b, std::uint32_t distance, Spans& scratch, Spans& near) {
    scratch.clear();
    Pick(a, b, distance, true, scratch);
    near.clear();
    if (scratch.empty())
        return; // nearness is mutual
    const auto ofA = static_cast<std::ptrdiff_t>(scratch.size());
    Pick(b, a, distance, true, scratch);
    std::set_union(scratch.begin(), scratch.begin() + ofA, scratch.begin() + ofA, scratch.end(),
                   std::back_inserter(near));
}

bool AreNear(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b,
             std::uint32_t distance) {
    const auto reaches = [distance](std::uint32_t earlier, std::uint32_t later) {
        return later - earlier <= distance;
    };
    for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
        if (a[i] == b[j]) { // one instance, not near itself
            if ((i + 1 < a.size() && reaches(b[j], a[i + 1])) ||
                (j + 1 < b.size() && reaches(a[i], b[j + 1])))
                return true;
            ++i;
            ++j;
        } else if (a[i] < b[j]) {
            if (reaches(a[i++], b[j]))
                return true;
        } else if (reaches(b[j++], a[i])) {
            return true;
        }
    }
    return false;
}

void NotNear(const Spans& a, const Spans& b, std::uint32_t distance, Spans& apart) {
    apart.clear();
    Pick(a, b, distance, false, apart);
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
    Spans both;
    Unite(found, right, both);
    return both;
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

void KeepFollowed(Spans& spans, const std::vector<std::uint32_t>& next) {
    std::size_t at = 0;
    std::size_t kept = 0;
    for (const Span& span : spans) {
        while (at < next.size() && next[at] <= span.last)
            ++at;
        if (at < next.size() && next[at] == span.last + 1)
            spans[kept++] = {span.first, span.last + 1};
    }
    spans.resize(kept);
}

std::vector<std::uint32_t> Cover(const Spans& spans) {
    std::vector<std::uint32_t> words;
    std::uint32_t done = 0;
    for (const Span& span : spans)
        for (std::uint32_t word = std::max(span.first, done + 1); word <= span.last; ++word)
            words.push_back(done = word);
    return words;
}

std::size_t Covered(const Spans& spans) {
    std::size_t count = 0;
    std::uint32_t done = 0;
    for (const Span& span : spans)
        if (span.last > done) {
            count += span.last - std::max(span.first, done + 1) + 1;
            done = span.last;
        }
    return count;
}

} // namespace engine
