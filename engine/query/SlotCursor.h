// The documents that hold any of a slot's words, ascending.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/query/Plan.h"
#include "engine/query/Postings.h"

#include <cstdint>
#include <vector>

namespace engine {

// How many of a slot's documents will be asked for.
enum class Visit : std::uint8_t { All, Few };

class SlotCursor {
  public:
    // Stands before the first document. slot is none that any word fits.
    SlotCursor(PostingIndex& index, const Slot& slot, Visit visit);

    // Goes to the first document from id on and answers it, or kNoDocument. Never goes back.
    std::int64_t Seek(std::int64_t id);
    // Of the document at hand: word numbers from 1, ascending, without repeats.
    void Places(std::vector<std::uint32_t>& places) const;
    // How many they are.
    [[nodiscard]] std::size_t Count() const;

  private:
    bool Gather(std::int64_t from);
    [[nodiscard]] bool IsGathered() const { return !m_window.empty(); }

    std::vector<PostingList> m_lists; // one for each word
    std::int64_t m_id = 0;
    // Where words and documents are many, asking each of them for every document is slow: their places are
    // gathered for a range of documents at a time, from m_windowFirst to before m_windowEnd.
    std::vector<std::vector<std::uint32_t>> m_window;
    std::int64_t m_windowFirst = 0, m_windowEnd = 0;
};

} // namespace engine
