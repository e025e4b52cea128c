// Wildcard matching of names.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/NameFilter.h"

#include <algorithm>
#include <sstream>

namespace engine {
namespace {

std::string Upper(std::string_view text) {
    std::string upper(text);
    for (char& c : upper)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return upper;
}

std::vector<std::string> Patterns(std::string_view text) {
    std::istringstream stream(Upper(text));
    std::vector<std::string> patterns;
    for (std::string pattern; stream >> pattern;)
        patterns.push_back(pattern == "*.*" ? "*" : pattern);
    return patterns;
}

std::size_t NextCharacter(std::string_view text, std::size_t at) {
    do
        ++at;
    while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80);
    return at;
}

} // namespace

bool MatchesPattern(std::string_view pattern, std::string_view text) {
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t star = std::string_view::npos; // the last star, and where its match ends so far
    std::size_t starText = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            starText = t;
        } else if (p < pattern.size() && pattern[p] == '?') {
            ++p;
            t = NextCharacter(text, t);
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = starText = NextCharacter(text, starText);
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

NameFilter::NameFilter(std::string_view include, std::string_view exclude)
    : m_include(Patterns(include)), m_exclude(Patterns(exclude)) {}

bool NameFilter::Takes(std::string_view fileName) const {
    const std::string name = Upper(fileName);
    const auto matches = [&](const std::string& pattern) { return MatchesPattern(pattern, name); };
    return std::any_of(m_include.begin(), m_include.end(), matches) &&
           std::none_of(m_exclude.begin(), m_exclude.end(), matches);
}

} // namespace engine
