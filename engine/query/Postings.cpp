// Decoding of the full-text table's leaf pages (format 4 of FTS5's storage).
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/Postings.h"

#include "sqlite/Error.h"

#include <sqlite3.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace engine {
namespace {

constexpr std::int64_t kStructureId = 10;
constexpr int kSegmentShift = 37; // a page's id: its segment above this bit, its number below
constexpr std::int64_t kLargestSegment = 0xFFFF;
constexpr std::int64_t kLargestPage = 0x7FFFFFFF;
constexpr std::size_t kPageHead = 4;
constexpr char kMainIndex = '0'; // stands before every word of the table's main index

[[noreturn]] void Corrupt() {
    throw sqlite::Error(SQLITE_CORRUPT_VTAB, "the full-text index is damaged");
}

// Reads numbers of one to nine bytes, seven bits each, the highest first.
class Reader {
  public:
    Reader(std::string_view bytes, std::size_t at) : m_bytes(bytes), m_at(at) {}
    [[nodiscard]] std::size_t At() const { return m_at; }
    [[nodiscard]] bool AtEnd() const { return m_at >= m_bytes.size(); }

    std::uint64_t Number() {
        if (m_at >= m_bytes.size())
            Corrupt();
        const auto first = static_cast<unsigned char>(m_bytes[m_at]);
        if (first < 0x80) {
            ++m_at;
            return first;
        }
        std::uint64_t value = 0;
        for (int i = 0; i < 9; ++i) {
            if (m_at >= m_bytes.size())
                Corrupt();
            const auto byte = static_cast<unsigned char>(m_bytes[m_at++]);
            if (i == 8)
                return value << 8 | byte;
            value = value << 7 | (byte & 0x7F);
            if (byte < 0x80)
                break;
        }
        return value;
    }
    std::size_t Size() {
        const std::uint64_t size = Number();
        if (size > m_bytes.size())
            Corrupt();
        return static_cast<std::size_t>(size);
    }
    std::string_view Bytes(std::size_t size) {
        if (size > m_bytes.size() - m_at)
            Corrupt();
        m_at += size;
        return m_bytes.substr(m_at - size, size);
    }

  private:
    std::string_view m_bytes;
    std::size_t m_at;
};

// The parts of a leaf page: its head, the rows, and behind them where its terms begin.
struct Leaf {
    std::string_view bytes;
    std::size_t firstRow = 0; // 0: no row begins here
    std::size_t end = 0;      // of the rows
    std::size_t firstTerm = 0; // 0: no term begins here

    explicit Leaf(std::string_view page) : bytes(page) {
        if (page.size() < kPageHead)
            Corrupt();
        const auto at = [page](std::size_t i) {
            return static_cast<std::size_t>(static_cast<unsigned char>(page[i]));
        };
        firstRow = at(0) << 8 | at(1);
        end = at(2) << 8 | at(3);
        if (end < kPageHead || end > page.size() || firstRow > end)
            Corrupt();
        if (end < page.size())
            firstTerm = Reader(page, end).Size();
        if (firstTerm > end || (firstTerm != 0 && firstTerm < kPageHead))
            Corrupt();
    }
    // The part that belongs to the term of the page before.
    [[nodiscard]] std::size_t RestEnd() const { return firstTerm != 0 ? firstTerm : end; }
};

} // namespace

PostingIndex::PostingIndex(sqlite::Database& database)
    : m_read(database, "SELECT block FROM words_data WHERE id = ?1", sqlite::Use::Often),
      m_find(database,
             "SELECT pgno FROM words_idx WHERE segid = ?1 AND term <= ?2 ORDER BY term DESC LIMIT 1",
             sqlite::Use::Often),
      m_findBehind(database,
                   "SELECT pgno FROM words_idx WHERE segid = ?1 AND term > ?2 ORDER BY term LIMIT 1",
                   sqlite::Use::Often) {
    m_read.Bind(1, kStructureId);
    if (!m_read.Step())
        Corrupt();
    ReadStructure(m_read.Blob(0));
    m_read.Reset();
}

void PostingIndex::ReadStructure(std::string_view record) {
    constexpr std::size_t kCookie = 4;
    constexpr std::size_t kMostLevels = 2000;
    if (record.size() < kCookie || record[0] == '\xFF') // other formats mark themselves so
        Corrupt();
    Reader reader(record, kCookie);
    const auto number = [&reader](std::int64_t largest) {
        const std::uint64_t value = reader.Number();
        if (value > static_cast<std::uint64_t>(largest))
            Corrupt();
        return static_cast<std::int64_t>(value);
    };
    const std::size_t levels = reader.Size();
    (void)reader.Number(); // segments altogether
    (void)reader.Number(); // pages written ever
    if (levels > kMostLevels)
        Corrupt();
    for (std::size_t level = 0; level < levels; ++level) {
        (void)reader.Number(); // how many are being merged
        std::vector<Segment> segments(reader.Size());
        for (Segment& segment : segments) {
            segment.id = number(kLargestSegment);
            segment.first = number(kLargestPage);
            segment.last = number(kLargestPage);
        }
        // Levels come with the newest first, the segments of one with the oldest first.
        std::reverse(segments.begin(), segments.end());
        for (Segment& segment : segments)
            if (segment.first > 0) // else all of it has gone into another one
                m_segments.push_back(std::move(segment));
    }
}

std::string_view PostingIndex::Page(const Segment& segment, std::int64_t number) {
    m_read.Reset();
    m_read.Bind(1, (segment.id << kSegmentShift) + number);
    if (number > segment.last || !m_read.Step())
        Corrupt();
    return m_read.Blob(0);
}

std::int64_t PostingIndex::PageOf(const Segment& segment, std::string_view term) {
    m_find.Bind(1, segment.id).BindBlobStatic(2, term);
    const std::int64_t page = m_find.Step() ? m_find.Int64(0) >> 1 : segment.first;
    m_find.Reset();
    return std::max(page, segment.first);
}

void PostingIndex::Parse(Segment& segment, std::int64_t number) {
    segment.parsed = 0;
    segment.terms.clear();
    segment.page = Page(segment, number);
    m_read.Reset();
    const Leaf leaf(segment.page);
    Reader offsets(segment.page, leaf.end);
    std::string word;
    for (std::size_t begin = 0; !offsets.AtEnd();) {
        const std::size_t step = offsets.Size();
        begin += step;
        if (step == 0 || begin >= leaf.end)
            Corrupt();
        Reader reader(std::string_view(segment.page).substr(0, leaf.end), begin);
        const std::size_t kept = segment.terms.empty() ? 0 : reader.Size();
        if (kept > word.size())
            Corrupt();
        word.resize(kept);
        word += reader.Bytes(reader.Size());
        if (!segment.terms.empty())
            segment.terms.back().end = begin;
        segment.terms.push_back({word, reader.At(), leaf.end});
    }
    segment.parsed = number;
}

bool PostingIndex::FindWord(std::size_t which, std::string_view word, std::int64_t& number,
                            PostingPage& page) {
    Segment& segment = m_segments[which];
    const std::string term = kMainIndex + std::string(word);
    const bool here = segment.parsed != 0 && !segment.terms.empty() &&
                      segment.terms.front().word <= term && term <= segment.terms.back().word;
    if (!here)
        if (const std::int64_t found = PageOf(segment, term); found != segment.parsed)
            Parse(segment, found);
    const auto at =
        std::lower_bound(segment.terms.begin(), segment.terms.end(), term,
                         [](const Term& each, const std::string& text) { return each.word < text; });
    if (at == segment.terms.end() || at->word != term)
        return false;
    number = segment.parsed;
    page.bytes.assign(segment.page, at->begin, at->end - at->begin);
    page.firstRow = 0;
    page.last = at + 1 != segment.terms.end() || segment.parsed == segment.last;
    return true;
}

void PostingIndex::ReadNext(std::size_t which, std::int64_t number, PostingPage& page) {
    const Segment& segment = m_segments[which];
    const Leaf leaf(Page(segment, number + 1));
    const std::size_t end = leaf.RestEnd();
    page.bytes.assign(leaf.bytes.substr(kPageHead, end - kPageHead));
    const bool hasRow = leaf.firstRow >= kPageHead && leaf.firstRow < end;
    page.firstRow = (hasRow ? leaf.firstRow : end) - kPageHead;
    page.last = leaf.firstTerm != 0 || number + 1 == segment.last;
}

std::int64_t PostingIndex::PageBehind(std::size_t which, std::string_view word) {
    const Segment& segment = m_segments[which];
    const std::string term = kMainIndex + std::string(word);
    m_findBehind.Bind(1, segment.id).BindBlobStatic(2, term);
    const std::int64_t page = m_findBehind.Step() ? m_findBehind.Int64(0) >> 1 : segment.last + 1;
    m_findBehind.Reset();
    return page;
}

std::int64_t PostingIndex::FirstDocument(std::size_t which, std::int64_t number) {
    const Leaf leaf(Page(m_segments[which], number));
    if (leaf.firstTerm != 0 || leaf.firstRow < kPageHead)
        return kNoDocument;
    return static_cast<std::int64_t>(Reader(leaf.bytes, leaf.firstRow).Number());
}

bool SegmentPostings::Begin(std::string_view word) {
    if (!m_index->FindWord(m_segment, word, m_number, m_page))
        return false;
    m_word = word;
    m_at = 0;
    m_absolute = true;
    if (m_at == m_page.bytes.size() && !m_page.last)
        NextPage(0);
    else
        Advance();
    return m_id != kNoDocument;
}

// To the next row of this page, or to the end.
void SegmentPostings::Advance() {
    if (m_at >= m_page.bytes.size()) {
        m_id = kNoDocument;
        return;
    }
    Reader reader(m_page.bytes, m_at);
    const std::uint64_t step = reader.Number();
    const std::uint64_t next = m_absolute ? step : static_cast<std::uint64_t>(m_id) + step;
    if (next >= static_cast<std::uint64_t>(kNoDocument) || static_cast<std::int64_t>(next) <= m_id)
        Corrupt();
    m_id = static_cast<std::int64_t>(next);
    if (m_absolute)
        m_pageFirst = m_id;
    m_absolute = false;
    const std::uint64_t size = reader.Number() >> 1; // the lowest bit only matters to writers
    m_at = reader.At();
    if (size <= m_page.bytes.size() - m_at) {
        m_spilled = false;
        m_codedAt = m_at;
        m_codedSize = static_cast<std::size_t>(size);
        m_at += m_codedSize;
    } else {
        TakePlaces(static_cast<std::size_t>(size));
    }
}

// Places that go on behind this page.
void SegmentPostings::TakePlaces(std::size_t size) {
    m_spilled = true;
    m_spill.assign(m_page.bytes, m_at);
    m_at = m_page.bytes.size();
    while (m_spill.size() < size) {
        if (m_page.last)
            Corrupt();
        m_index->ReadNext(m_segment, m_number++, m_page);
        m_at = std::min(size - m_spill.size(), m_page.firstRow);
        m_spill.append(m_page.bytes, 0, m_at);
        m_absolute = true;
        if (m_spill.size() < size && m_page.firstRow < m_page.bytes.size())
            Corrupt();
    }
}

// Where the document lies farther ahead than this page reached, pages are passed over in growing
// steps.
void SegmentPostings::NextPage(std::int64_t id) {
    const auto isBefore = [&](std::int64_t pages) {
        return m_number + pages < m_behind &&
               m_index->FirstDocument(m_segment, m_number + pages) <= id;
    };
    if (m_behind == 0)
        m_behind = m_index->PageBehind(m_segment, m_word);
    if (id - m_id > m_id - m_pageFirst) {
        std::int64_t ahead = 1; // the next page is read in any case
        std::int64_t step = 1;
        for (; isBefore(ahead + step); step *= 2)
            ahead += step;
        for (step /= 2; step > 0; step /= 2)
            if (isBefore(ahead + step))
                ahead += step;
        m_number += ahead - 1;
    }
    m_index->ReadNext(m_segment, m_number++, m_page);
    m_at = m_page.firstRow;
    m_absolute = true;
    if (m_at < m_page.bytes.size() || m_page.last)
        Advance();
}

PostingList::PostingList(PostingIndex& index, std::string_view word) {
    for (std::size_t i = 0; i < index.SegmentCount(); ++i) {
        SegmentPostings segment(index, i);
        if (segment.Begin(word))
            m_segments.push_back(std::move(segment));
    }
}

std::int64_t PostingList::Seek(std::int64_t id) {
    if (id <= m_id)
        return m_id;
    for (;; id = m_id + 1) {
        m_id = kNoDocument;
        for (std::size_t i = 0; i < m_segments.size(); ++i) {
            m_segments[i].Seek(id);
            if (m_segments[i].Id() < m_id) { // of equals the newest counts
                m_id = m_segments[i].Id();
                m_current = i;
            }
        }
        if (m_id == kNoDocument || !m_segments[m_current].Coded().empty())
            return m_id;
    }
}

std::size_t PostingList::Count() const {
    // Each number ends with the one byte that has no high bit.
    const std::string_view coded = m_segments[m_current].Coded();
    return static_cast<std::size_t>(std::count_if(coded.begin(), coded.end(), [](char c) {
        return static_cast<signed char>(c) >= 0;
    }));
}

void PostingList::Places(std::vector<std::uint32_t>& places) const {
    constexpr std::uint64_t kLastPlace = std::numeric_limits<std::uint32_t>::max();
    const std::string_view coded = m_segments[m_current].Coded();
    const std::size_t before = places.size();
    places.resize(before + coded.size()); // no more of them than bytes
    std::uint32_t* out = places.data() + before;
    std::uint64_t place = 1;
    for (std::size_t at = 0; at < coded.size();) {
        std::uint64_t step = static_cast<unsigned char>(coded[at]);
        if (step < 0x80) {
            ++at;
        } else {
            Reader reader(coded, at);
            step = reader.Number();
            at = reader.At();
        }
        if (step < 2 || step > kLastPlace) // there is one column only
            Corrupt();
        place += step - 2;
        *out++ = static_cast<std::uint32_t>(place);
    }
    if (place > kLastPlace)
        Corrupt();
    places.resize(static_cast<std::size_t>(out - places.data()));
}

} // namespace engine
