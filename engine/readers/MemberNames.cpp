// Names of members and attachments, made harmless and unique.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MemberNames.h"

#include "engine/readers/Limits.h"

#include <functional>

namespace engine {

namespace {

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

void CutAtCharacter(std::string& text, std::size_t limit) {
    if (text.size() <= limit)
        return;
    while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0) == 0x80)
        --limit;
    text.resize(limit);
}

} // namespace

std::string CleanMemberPath(std::string_view utf8) {
    std::string path;
    while (!utf8.empty()) {
        const std::size_t slash = utf8.find('/');
        const std::string_view part = utf8.substr(0, slash);
        utf8.remove_prefix(slash == std::string_view::npos ? utf8.size() : slash + 1);
        if (part.empty() || part == "." || part == "..")
            continue;
        if (!path.empty())
            path += '/';
        for (const char c : part)
            path += IsControl(c) ? '_' : c;
    }
    CutAtCharacter(path, kMaxMemberPath);
    return path.empty() ? "unnamed" : path;
}

std::string_view LastPart(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

std::string CleanFileName(std::string_view utf8) {
    const bool isPath = utf8.starts_with('/') || utf8.starts_with('\\') || utf8.find("..") == 0 ||
                        utf8.find("/../") != std::string_view::npos ||
                        (utf8.size() > 2 && utf8[1] == ':' && (utf8[2] == '\\' || utf8[2] == '/'));
    if (isPath) {
        const std::size_t last = utf8.find_last_of("/\\");
        if (last != std::string_view::npos)
            utf8.remove_prefix(last + 1);
    }
    std::string name;
    for (const char c : utf8)
        name += IsControl(c) || c == '/' || c == '\\' ? '_' : c;
    const std::size_t begin = name.find_first_not_of(' ');
    name.erase(0, begin == std::string::npos ? name.size() : begin);
    while (!name.empty() && name.back() == ' ')
        name.pop_back();
    constexpr std::size_t kLongestName = 255;
    CutAtCharacter(name, kLongestName);
    return name == "." || name == ".." ? std::string() : name;
}

std::string UniqueNames::Add(std::string name) {
    constexpr int kFirstNumber = 2;
    const std::hash<std::string> hash;
    const std::uint64_t key = hash(name);
    if (m_seen.emplace(key, kFirstNumber).second)
        return name;
    const std::size_t slash = name.find_last_of('/');
    const std::size_t begin = slash == std::string::npos ? 0 : slash + 1;
    std::size_t dot = name.find_last_of('.');
    if (dot == std::string::npos || dot <= begin)
        dot = name.size();
    const std::string ending = name.substr(dot);
    name.resize(dot);
    for (int number = m_seen[key];; ++number) {
        std::string candidate = name;
        candidate.append(" (").append(std::to_string(number)).append(")").append(ending);
        if (m_seen.emplace(hash(candidate), kFirstNumber).second) {
            m_seen[key] = number + 1;
            return candidate;
        }
    }
}

} // namespace engine
