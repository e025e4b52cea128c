// The texts that the cells of a workbook share, one after the other in memory.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Limits.h"

#include <string>
#include <string_view>
#include <vector>

namespace engine {

class SharedTexts {
  public:
    static constexpr const char* kFullReason = "texts beyond 256 MB";

    // Begins the next text; they count from 0.
    void Begin() { m_begins.push_back(m_texts.size()); }
    // Adds to the text that was begun last.
    void Append(std::string_view utf8) {
        if (m_begins.empty())
            return;
        m_full = m_full || utf8.size() > kMaxSharedText - m_texts.size();
        if (!m_full)
            m_texts += utf8;
    }
    // Whether some of the texts had no room.
    [[nodiscard]] bool Full() const { return m_full; }
    // Empty where there is none.
    [[nodiscard]] std::string_view At(std::size_t index) const {
        if (index >= m_begins.size())
            return {};
        const bool last = index + 1 == m_begins.size();
        const std::size_t end = last ? m_texts.size() : m_begins[index + 1];
        return std::string_view(m_texts).substr(m_begins[index], end - m_begins[index]);
    }

  private:
    std::string m_texts;
    std::vector<std::size_t> m_begins;
    bool m_full = false;
};

} // namespace engine
