// Parses alphabet files.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/text/Alphabet.h"

#include <array>
#include <charconv>
#include <optional>
#include <utility>

namespace engine {
namespace {

constexpr std::array<std::pair<std::string_view, CharRole>, 3> kRoles{{
    {"letter", CharRole::Letter},
    {"separator", CharRole::Separator},
    {"ignored", CharRole::Ignored},
}};
constexpr char32_t kFirstSign = U' '; // what comes before are control characters
constexpr char32_t kLargestRange = 0x3000; // keeps a slip of the pen from filling memory

std::string_view Trim(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::optional<char32_t> ParseCodePoint(std::string_view text) {
    if (text.substr(0, 2) == "U+" || text.substr(0, 2) == "u+")
        text.remove_prefix(2);
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    if (error != std::errc() || end != text.data() + text.size() || value > 0x10FFFF)
        return std::nullopt;
    return value;
}

} // namespace

Alphabet Alphabet::Parse(std::string_view text) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF")
        text.remove_prefix(3);
    Alphabet alphabet;
    for (int number = 1; !text.empty(); ++number) {
        const auto end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        line = Trim(line.substr(0, line.find('#')));
        if (line.empty())
            continue;
        const auto fail = [&] {
            throw AlphabetError("line " + std::to_string(number) + ": \"" + std::string(line) + "\"");
        };
        const auto blank = line.find_first_of(" \t");
        const auto* role = kRoles.begin();
        while (role != kRoles.end() && role->first != line.substr(0, blank))
            ++role;
        if (role == kRoles.end() || blank == std::string_view::npos)
            fail();
        const std::string_view range = Trim(line.substr(blank));
        const auto dash = range.find('-');
        const auto first = ParseCodePoint(Trim(range.substr(0, dash)));
        const auto last =
            dash == std::string_view::npos ? first : ParseCodePoint(Trim(range.substr(dash + 1)));
        if (!first || !last || *last < *first || *last - *first > kLargestRange)
            fail();
        // Words are handed on line by line: a line feed within one would tear it.
        if (role->second == CharRole::Letter && *first < kFirstSign)
            fail();
        for (char32_t c = *first; c <= *last; ++c)
            alphabet.m_roles[c] = role->second;
    }
    return alphabet;
}

const CharRole* Alphabet::Find(char32_t codePoint) const {
    const auto found = m_roles.find(codePoint);
    return found == m_roles.end() ? nullptr : &found->second;
}

std::string Alphabet::Canonical() const {
    std::string text;
    for (const auto& [codePoint, role] : m_roles)
        text += std::to_string(static_cast<std::uint32_t>(codePoint)) + ":" +
                std::to_string(static_cast<int>(role)) + ";";
    return text;
}

} // namespace engine
