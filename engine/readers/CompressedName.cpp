// The name of what is in a compressed file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CompressedName.h"

#include "engine/readers/Charset.h"
#include "engine/readers/MemberNames.h"
#include "engine/readers/NameCharset.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace engine {

namespace {

using namespace std::string_view_literals;

unsigned Byte(std::string_view bytes, std::size_t at) {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

// The name in a gzip header; empty where there is none.
std::string_view GzipName(std::string_view bytes) {
    constexpr unsigned kHasExtra = 4, kHasName = 8;
    constexpr std::size_t kHeader = 10, kLongestName = 4096;
    if ((Byte(bytes, 3) & kHasName) == 0)
        return {};
    std::size_t at = kHeader;
    if ((Byte(bytes, 3) & kHasExtra) != 0)
        at += 2 + Byte(bytes, at) + (Byte(bytes, at + 1) << 8);
    if (at >= bytes.size())
        return {};
    const std::string_view rest = bytes.substr(at, kLongestName);
    const std::size_t end = rest.find('\0');
    return end == std::string_view::npos ? std::string_view() : rest.substr(0, end);
}

std::string WithoutEnding(std::string_view name) {
    // An ending that stands for two is replaced by the first of them.
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 24> kEndings{
        {{".gz", ""},      {".gzip", ""},      {".bz2", ""},      {".bz", ""},
         {".xz", ""},      {".lzma", ""},      {".zst", ""},      {".zstd", ""},
         {".lz4", ""},     {".z", ""},         {".lz", ""},       {".tgz", ".tar"},
         {".taz", ".tar"}, {".tbz", ".tar"},   {".tbz2", ".tar"}, {".txz", ".tar"},
         {".tlz", ".tar"}, {".tzst", ".tar"},  {".svgz", ".svg"}, {".emz", ".emf"},
         {".wmz", ".wmf"}, {".cpgz", ".cpio"}, {".adz", ".adf"},  {".zabw", ".abw"}}};
    for (const auto& [ending, instead] : kEndings) {
        if (name.size() <= ending.size())
            continue;
        const std::string_view last = name.substr(name.size() - ending.size());
        if (std::equal(last.begin(), last.end(), ending.begin(), [](unsigned char a, char b) {
                return static_cast<char>(std::tolower(a)) == b;
            }))
            return std::string(name.substr(0, name.size() - ending.size())).append(instead);
    }
    return std::string(name);
}

} // namespace

CompressedName NameOfContent(const Source& source, Packing packing) {
    CompressedName content;
    if (packing == Packing::Gzip) {
        for (std::size_t i = 0; i < 4; ++i)
            content.modified |= std::int64_t{Byte(source.bytes, 4 + i)} << (8 * i);
        content.name = CleanFileName(NameCharset().Decode(GzipName(source.bytes)));
    }
    if (content.name.empty()) {
        const std::string_view name = source.name;
        content.name = CleanFileName(
            NameCharset().Decode(WithoutEnding(name.substr(name.find_last_of('/') + 1))));
    }
    if (content.name.empty())
        content.name = "unnamed";
    return content;
}

} // namespace engine
