// Open addressing over one string.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/text/TermSet.h"

#include <cstring>

namespace engine {
namespace {

constexpr std::size_t kSmallest = 1024;

std::uint64_t Hash(std::string_view term) {
    std::uint64_t hash = 0x9E3779B97F4A7C15U ^ (term.size() * 0xFF51AFD7ED558CCDU);
    const char* at = term.data();
    std::size_t left = term.size();
    for (; left >= 8; left -= 8, at += 8) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, at, 8);
        hash = (hash ^ eight) * 0x9FB21C651E98DF25U;
        hash ^= hash >> 32;
    }
    std::uint64_t rest = 0;
    std::memcpy(&rest, at, left);
    hash = (hash ^ rest) * 0x9FB21C651E98DF25U;
    hash ^= hash >> 29;
    return hash == 0 ? 1 : hash;
}

} // namespace

TermSet::TermSet() : m_slots(kSmallest) {}

std::uint32_t TermSet::Insert(std::string_view term) {
    if (2 * (std::size_t{m_size} + 1) > m_slots.size())
        Grow();
    const std::uint64_t hash = Hash(term);
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
        Slot& slot = m_slots[i];
        if (slot.hash == 0) {
            slot = {hash, static_cast<std::uint32_t>(m_joined.size()),
                    static_cast<std::uint32_t>(term.size()), m_size};
            m_joined.append(term);
            m_joined += '\n';
            return m_size++;
        }
        if (slot.hash == hash && std::string_view(m_joined).substr(slot.offset, slot.length) == term)
            return slot.number;
    }
}

void TermSet::Grow() {
    std::vector<Slot> old(m_slots.size() * 2);
    old.swap(m_slots);
    const std::size_t mask = m_slots.size() - 1;
    for (const Slot& slot : old) {
        if (slot.hash == 0)
            continue;
        std::size_t i = slot.hash & mask;
        while (m_slots[i].hash != 0)
            i = (i + 1) & mask;
        m_slots[i] = slot;
    }
}

void TermSet::Clear() {
    m_slots.assign(m_slots.size() > 16 * kSmallest ? kSmallest : m_slots.size(), Slot{});
    m_size = 0;
    m_joined.clear();
}

} // namespace engine
