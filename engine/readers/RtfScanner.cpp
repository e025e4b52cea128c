// Cuts RTF into groups, control words and text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/RtfScanner.h"

#include <algorithm>
#include <array>
#include <limits>

namespace engine {
namespace {

constexpr std::array<bool, 256> kEndsText = [] {
    std::array<bool, 256> ends{};
    for (const char c : {'\\', '{', '}', '\r', '\n', '\0'})
        ends[static_cast<unsigned char>(c)] = true;
    return ends;
}();

bool IsLetter(char c) {
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'z';
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

int HexDigit(char c) {
    if (IsDigit(c))
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

RtfScanner::What RtfScanner::Next() {
    while (m_at < m_rtf.size()) {
        switch (m_rtf[m_at]) {
        case '{':
            ++m_at;
            return What::Open;
        case '}':
            ++m_at;
            return What::Close;
        case '\\':
            ++m_at;
            return ReadControl();
        case '\r':
        case '\n':
        case '\0':
            ++m_at;
            break;
        default: {
            const std::size_t from = m_at;
            while (m_at < m_rtf.size() && !kEndsText[static_cast<unsigned char>(m_rtf[m_at])])
                ++m_at;
            m_text = m_rtf.substr(from, m_at - from);
            return What::Text;
        }
        }
    }
    return What::End;
}

RtfScanner::What RtfScanner::ReadControl() {
    if (m_at == m_rtf.size())
        return What::End;
    if (IsLetter(m_rtf[m_at])) {
        ReadWord();
        if (m_text != "bin")
            return What::Word;
        SkipBinary();
        return What::Binary;
    }
    m_character = m_rtf[m_at++];
    if (m_character != '\'')
        return What::Symbol;
    if (m_rtf.size() - m_at < 2 || HexDigit(m_rtf[m_at]) < 0 || HexDigit(m_rtf[m_at + 1]) < 0) {
        m_text = {};
        return What::Text;
    }
    m_character = static_cast<char>(HexDigit(m_rtf[m_at]) * 16 + HexDigit(m_rtf[m_at + 1]));
    m_at += 2;
    return What::Byte;
}

void RtfScanner::ReadWord() {
    const std::size_t from = m_at;
    while (m_at < m_rtf.size() && IsLetter(m_rtf[m_at]))
        ++m_at;
    m_text = m_rtf.substr(from, m_at - from);
    ReadNumber();
    if (m_at < m_rtf.size() && m_rtf[m_at] == ' ')
        ++m_at;
}

void RtfScanner::ReadNumber() {
    std::size_t at = m_at;
    const bool negative = at < m_rtf.size() && m_rtf[at] == '-';
    at += negative ? 1 : 0;
    m_hasNumber = at < m_rtf.size() && IsDigit(m_rtf[at]);
    if (!m_hasNumber)
        return;
    long long value = 0;
    for (; at < m_rtf.size() && IsDigit(m_rtf[at]); ++at)
        value = std::min(value * 10 + (m_rtf[at] - '0'),
                         static_cast<long long>(std::numeric_limits<int>::max()));
    m_number = static_cast<int>(negative ? -value : value);
    m_at = at;
}

void RtfScanner::SkipBinary() {
    const std::size_t length =
        std::min(static_cast<std::size_t>(std::max(Number(0), 0)), m_rtf.size() - m_at);
    m_text = m_rtf.substr(m_at, length);
    m_at += length;
}

void RtfScanner::SkipGroup() {
    std::size_t depth = 1;
    while (m_at < m_rtf.size()) {
        const char c = m_rtf[m_at++];
        if (c == '{') {
            ++depth;
        } else if (c == '}') {
            if (--depth == 0)
                return;
        } else if (c == '\\') {
            ReadControl(); // an escaped brace, or bytes that contain any
        }
    }
}

bool RtfScanner::TakeTrailByte(char& byte) {
    // An escape is read as such; only then would a writer that knows none leave a single mark.
    const std::string_view rest = Rest();
    const bool escape = rest.size() >= 2 && rest[0] == '\\' &&
                        (rest[1] == '\\' || rest[1] == '{' || rest[1] == '}' || rest[1] == '\'');
    if (rest.empty() || escape || (rest[0] != '\\' && rest[0] != '{' && rest[0] != '}'))
        return false;
    byte = rest[0];
    ++m_at;
    return true;
}

} // namespace engine
