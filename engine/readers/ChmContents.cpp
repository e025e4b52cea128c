// The table of contents of compiled help.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/ChmContents.h"

#include "engine/readers/HtmlScanner.h"

#include <algorithm>

namespace engine {
namespace {

constexpr int kLowestLevel = 6;

// The file that an address means: without the help file it is said to be in, without a place
// inside it, and without "%20" and the like.
std::string FileOf(std::string_view address) {
    if (const std::size_t inside = address.find("::"); inside != std::string_view::npos)
        address.remove_prefix(inside + 2);
    address = address.substr(0, address.find('#'));
    const auto digit = [](char c) {
        const char lower = static_cast<char>(c | 0x20);
        return c >= '0' && c <= '9'           ? c - '0'
               : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10
                                              : -1;
    };
    std::string plain;
    for (std::size_t i = 0; i < address.size(); ++i) {
        const bool escape = address[i] == '%' && i + 2 < address.size() &&
                            digit(address[i + 1]) >= 0 && digit(address[i + 2]) >= 0;
        plain += escape ? static_cast<char>(digit(address[i + 1]) * 16 + digit(address[i + 2]))
                        : address[i];
        i += escape ? 2 : 0;
    }
    return plain;
}

} // namespace

std::vector<ChmContentsEntry> ReadChmContents(std::string_view utf8) {
    std::vector<ChmContentsEntry> entries;
    ChmContentsEntry entry;
    bool inEntry = false;
    int depth = 0;
    HtmlScanner scanner(utf8);
    for (auto what = scanner.Next(); what != HtmlScanner::What::End; what = scanner.Next()) {
        const std::string_view name = scanner.Name();
        if (what == HtmlScanner::What::StartTag && name == "ul") {
            ++depth;
        } else if (what == HtmlScanner::What::EndTag && name == "ul") {
            depth = std::max(depth - 1, 0);
        } else if (what == HtmlScanner::What::StartTag && name == "object") {
            inEntry = scanner.Attribute("type") == "text/sitemap";
            entry = {};
        } else if (what == HtmlScanner::What::StartTag && name == "param" && inEntry) {
            std::string key = scanner.Attribute("name");
            std::transform(key.begin(), key.end(), key.begin(), [](char c) {
                return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
            });
            if (key == "name" && entry.title.empty())
                entry.title = scanner.Attribute("value");
            else if (key == "local" && entry.address.empty())
                entry.address = FileOf(scanner.Attribute("value"));
        } else if (what == HtmlScanner::What::EndTag && name == "object" && inEntry) {
            inEntry = false;
            entry.level = std::clamp(depth, 1, kLowestLevel);
            if (!entry.title.empty() || !entry.address.empty())
                entries.push_back(entry);
        }
    }
    return entries;
}

} // namespace engine
