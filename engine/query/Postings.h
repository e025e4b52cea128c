// Where words stand: reads the word lists that the full-text table keeps, page by page.
//
// The table's own requests cost some thousand instructions for each document they pass; a word
// that stands in every one of a million documents took seconds. The lists themselves are a few
// bytes for each document, and here that is what passing one costs.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "sqlite/Database.h"
#include "sqlite/Statement.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

inline constexpr std::int64_t kNoDocument = std::numeric_limits<std::int64_t>::max();

// One leaf page of the tree, as far as it concerns one word: rows of documents, each with the
// places where the word stands.
struct PostingPage {
    std::string bytes;        // from the first row on, or the rest of the one before
    std::size_t firstRow = 0; // offset of the first row; bytes.size() where there is none
    bool last = false;        // the word's list ends on this page
};

// The segments of the tree, newest first. All reads belong to one transaction of the caller.
class PostingIndex {
  public:
    // Throws sqlite::Error, Corrupt where the tree is not as it should be.
    explicit PostingIndex(sqlite::Database& database);
    PostingIndex(const PostingIndex&) = delete;
    PostingIndex& operator=(const PostingIndex&) = delete;

    [[nodiscard]] std::size_t SegmentCount() const { return m_segments.size(); }
    // The page where the word's list begins in a segment, with its number. False: it is not there.
    // Quickest when words come in ascending order.
    bool FindWord(std::size_t segment, std::string_view word, std::int64_t& number, PostingPage& page);
    // The page behind number, for a list that reaches beyond it.
    void ReadNext(std::size_t segment, std::int64_t number, PostingPage& page);
    // The first page behind the word's first one on which another word begins.
    [[nodiscard]] std::int64_t PageBehind(std::size_t segment, std::string_view word);
    // The document of the first row of a page without a word of its own; kNoDocument: it has none.
    [[nodiscard]] std::int64_t FirstDocument(std::size_t segment, std::int64_t number);

  private:
    struct Term {
        std::string word;
        std::size_t begin = 0, end = 0; // its rows in the page
    };
    struct Segment {
        std::int64_t id = 0, first = 0, last = 0; // numbers of its pages
        std::int64_t parsed = 0;                  // number of the page in terms; 0: none
        std::string page;
        std::vector<Term> terms;
    };
    void ReadStructure(std::string_view record);
    [[nodiscard]] std::string_view Page(const Segment& segment, std::int64_t number);
    [[nodiscard]] std::int64_t PageOf(const Segment& segment, std::string_view term);
    void Parse(Segment& segment, std::int64_t number);

    sqlite::Statement m_read, m_find, m_findBehind;
    std::vector<Segment> m_segments;
};

// The documents that hold one word, ascending, in one segment.
class SegmentPostings {
  public:
    SegmentPostings(PostingIndex& index, std::size_t segment) : m_index(&index), m_segment(segment) {}
    // Goes to the word's first document; false: the segment does not hold it.
    bool Begin(std::string_view word);
    [[nodiscard]] std::int64_t Id() const { return m_id; } // kNoDocument: at the end
    // Goes to the first document from id on.
    void Seek(std::int64_t id) {
        while (m_id < id)
            if (m_at < m_page.bytes.size() || m_page.last)
                Advance();
            else
                NextPage(id);
    }
    // Coded places; empty where the document has left this list.
    [[nodiscard]] std::string_view Coded() const {
        return m_spilled ? std::string_view(m_spill)
                         : std::string_view(m_page.bytes).substr(m_codedAt, m_codedSize);
    }

  private:
    void Advance();
    void NextPage(std::int64_t id);
    void TakePlaces(std::size_t size);

    PostingIndex* m_index;
    std::size_t m_segment;
    std::string m_word;
    std::int64_t m_number = 0; // of m_page
    std::int64_t m_behind = 0; // as PageBehind; 0: not asked for yet
    PostingPage m_page;
    std::size_t m_at = 0;      // in m_page.bytes
    bool m_absolute = true;    // the next row names its document in full
    std::int64_t m_id = 0;
    std::int64_t m_pageFirst = 0; // first document met on this page
    std::size_t m_codedAt = 0, m_codedSize = 0;
    std::string m_spill;       // places that reach over pages
    bool m_spilled = false;
};

// The documents that hold one word, ascending.
class PostingList {
  public:
    // Stands before the first document.
    PostingList(PostingIndex& index, std::string_view word);
    PostingList(PostingList&&) = default;
    PostingList& operator=(PostingList&&) = default;

    // Goes to the first document from id on and answers it, or kNoDocument.
    std::int64_t Seek(std::int64_t id);
    [[nodiscard]] std::int64_t Id() const { return m_id; }
    // How often the word stands in the document at hand.
    [[nodiscard]] std::size_t Count() const;
    // Appends the word numbers, from 1, ascending.
    void Places(std::vector<std::uint32_t>& places) const;

  private:
    std::vector<SegmentPostings> m_segments; // newest first
    std::size_t m_current = 0;
    std::int64_t m_id = 0;
};

} // namespace engine
