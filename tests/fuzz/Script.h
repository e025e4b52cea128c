// A fuzzer's bytes as numbers and texts, one after the other.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace fuzz {

// Takes numbers and texts from the front; zero and empty at the end.
class Script {
  public:
    explicit Script(std::string_view bytes) : m_rest(bytes) {}
    [[nodiscard]] bool AtEnd() const { return m_rest.empty(); }
    std::uint8_t Byte() {
        if (m_rest.empty())
            return 0;
        const auto byte = static_cast<std::uint8_t>(m_rest.front());
        m_rest.remove_prefix(1);
        return byte;
    }
    // Up to the next byte 0xFF, which stands in no text.
    std::string_view Text() {
        const std::size_t end = std::min(m_rest.find('\xFF'), m_rest.size());
        const std::string_view text = m_rest.substr(0, end);
        m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
        return text;
    }

  private:
    std::string_view m_rest;
};

} // namespace fuzz
