// A picture inside RTF.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/RtfPicture.h"

#include "engine/readers/Limits.h"

#include <utility>

namespace engine {

void RtfPicture::Begin(bool wanted) {
    *this = {};
    m_wanted = wanted;
}

void RtfPicture::Add(char byte) {
    if (m_bytes.size() > kMaxPictureBytes) {
        m_wanted = false;
        m_bytes = {};
    } else {
        m_bytes += byte;
    }
}

void RtfPicture::AddHex(std::string_view digits) {
    for (std::size_t i = 0; i < digits.size() && m_wanted; ++i) {
        const char c = digits[i];
        const char lower = static_cast<char>(c | 0x20);
        const int digit = c >= '0' && c <= '9'           ? c - '0'
                          : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10
                                                         : -1;
        if (digit < 0)
            continue;
        const int high = std::exchange(m_high, digit);
        if (high < 0)
            continue;
        Add(static_cast<char>(high * 16 + digit));
        m_high = -1;
    }
}

void RtfPicture::AddBytes(std::string_view bytes) {
    if (m_wanted && bytes.size() <= kMaxPictureBytes - m_bytes.size())
        m_bytes += bytes;
    else
        m_wanted = false;
}

std::string RtfPicture::Take(std::string& bytes) {
    const bool shown = m_wanted && !m_mime.empty() && !m_bytes.empty();
    bytes = shown ? std::move(m_bytes) : std::string();
    return shown ? std::exchange(m_mime, {}) : std::string();
}

std::string RtfPicture::TakeAlternativeText() {
    return std::exchange(m_text, {});
}

} // namespace engine
