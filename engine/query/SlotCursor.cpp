// Merging of word lists.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/query/SlotCursor.h"

#include <algorithm>
#include <functional>

namespace engine {
namespace {

constexpr std::size_t kFewWords = 8;
constexpr std::int64_t kWindow = 16'384; // documents; bounds the places in memory

void SortUnique(std::vector<std::uint32_t>& places) {
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
}

} // namespace

SlotCursor::SlotCursor(PostingIndex& index, const Slot& slot, Visit visit) {
    m_lists.reserve(slot.words.size());
    for (const std::string& word : slot.words)
        m_lists.emplace_back(index, word);
    if (visit == Visit::All && m_lists.size() > kFewWords)
        m_window.resize(static_cast<std::size_t>(kWindow));
}

// Fills the window with the documents from the first one on that is not before from; false where
// there is none.
bool SlotCursor::Gather(std::int64_t from) {
    std::int64_t first = kNoDocument;
    for (PostingList& list : m_lists)
        first = std::min(first, list.Seek(from));
    if (first == kNoDocument)
        return false;
    m_windowFirst = first;
    m_windowEnd = first + kWindow;
    for (std::vector<std::uint32_t>& places : m_window)
        places.clear();
    for (PostingList& list : m_lists)
        for (std::int64_t id = list.Id(); id < m_windowEnd; id = list.Seek(id + 1))
            list.Places(m_window[static_cast<std::size_t>(id - first)]);
    for (std::vector<std::uint32_t>& places : m_window)
        if (std::adjacent_find(places.begin(), places.end(), std::greater_equal<>()) != places.end())
            SortUnique(places);
    return true;
}

std::int64_t SlotCursor::Seek(std::int64_t id) {
    if (id <= m_id)
        return m_id;
    m_id = kNoDocument;
    if (!IsGathered()) {
        for (PostingList& list : m_lists)
            m_id = std::min(m_id, list.Seek(id));
        return m_id;
    }
    for (;;) {
        for (std::int64_t at = std::max(id, m_windowFirst); at < m_windowEnd; ++at)
            if (!m_window[static_cast<std::size_t>(at - m_windowFirst)].empty())
                return m_id = at;
        if (!Gather(std::max(id, m_windowEnd)))
            return m_id;
    }
}

void SlotCursor::Places(std::vector<std::uint32_t>& places) const {
    places.clear();
    if (IsGathered()) {
        places = m_window[static_cast<std::size_t>(m_id - m_windowFirst)];
        return;
    }
    for (const PostingList& list : m_lists)
        if (list.Id() == m_id)
            list.Places(places);
    if (m_lists.size() > 1)
        SortUnique(places);
}

std::size_t SlotCursor::Count() const {
    if (m_lists.size() == 1)
        return m_lists.front().Count();
    if (IsGathered())
        return m_window[static_cast<std::size_t>(m_id - m_windowFirst)].size();
    std::vector<std::uint32_t> places;
    Places(places);
    return places.size();
}

} // namespace engine
