// A small scanner that knows only what the writer may write, and libxml2's parser for the text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/fuzz/HtmlCheck.h"

#include "engine/text/Utf8.h"
#include "tests/fuzz/Target.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace fuzz {
namespace {

constexpr std::array<std::string_view, 20> kPlainTags{
    "html", "head", "title", "body", "p",  "i",  "h1", "h2",  "h3",  "h4",
    "h5",   "h6",   "ul",    "ol",   "li", "tr", "td", "pre", "div", "blockquote"};
constexpr std::array<std::string_view, 5> kEntities{"&lt;", "&gt;", "&amp;", "&quot;", "&#39;"};
constexpr std::string_view kTable = "table border=\"1\" cellspacing=\"0\" cellpadding=\"3\"";
constexpr std::string_view kMeta =
    "meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\"";

template <class List> bool Has(const List& list, std::string_view name) {
    return std::find(list.begin(), list.end(), name) != list.end();
}

void CheckText(std::string_view text) {
    for (std::size_t at = text.find_first_of("<>&\"'"); at != std::string_view::npos;
         at = text.find_first_of("<>&\"'", at + 1))
        Require(std::any_of(
                    kEntities.begin(), kEntities.end(),
                    [&](std::string_view entity) { return text.substr(at).starts_with(entity); }),
                "a sign that is not escaped", text.substr(at));
}

void CheckPicture(std::string_view tag) {
    static constexpr std::array<std::string_view, 6> kKinds{
        "image/png", "image/jpeg", "image/gif", "image/bmp", "image/webp", "image/x-icon"};
    constexpr std::string_view kBegin = "img src=\"data:";
    constexpr std::string_view kData = ";base64,";
    Require(tag.starts_with(kBegin), "a picture from another place", tag);
    tag.remove_prefix(kBegin.size());
    const std::size_t data = tag.find(kData);
    Require(data != std::string_view::npos && Has(kKinds, tag.substr(0, data)),
            "no kind of picture", tag);
    tag.remove_prefix(data + kData.size());
    const std::size_t quote =
        tag.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=");
    constexpr std::string_view kAlt = "\" alt=\"";
    Require(quote != std::string_view::npos && tag.substr(quote).starts_with(kAlt),
            "no proper picture", tag);
    tag.remove_prefix(quote + kAlt.size());
    Require(tag.ends_with('"'), "an attribute without its end", tag);
    CheckText(tag.substr(0, tag.size() - 1));
}

} // namespace

std::size_t CheckHtml(std::string_view html) {
    constexpr std::string_view kType = "<!DOCTYPE html>";
    Require(html.starts_with(kType), "no document type");
    html.remove_prefix(kType.size());
    std::vector<std::string_view> open;
    std::size_t anchors = 0;
    while (!html.empty()) {
        const std::size_t begin = std::min(html.find('<'), html.size());
        CheckText(html.substr(0, begin));
        if (begin == html.size())
            break;
        const std::size_t end = html.find('>', begin);
        Require(end != std::string_view::npos, "a tag without its end");
        const std::string_view tag = html.substr(begin + 1, end - begin - 1);
        html.remove_prefix(end + 1);
        if (tag.starts_with('/')) {
            Require(!open.empty() && open.back() == tag.substr(1), "tags that are not balanced",
                    tag);
            open.pop_back();
        } else if (tag == kTable) {
            open.push_back("table");
        } else if (tag.starts_with("a name=")) {
            Require(tag == "a name=\"h" + std::to_string(++anchors) + "\"", "anchors out of order",
                    tag);
            open.push_back("a");
        } else if (tag.starts_with("img ")) {
            CheckPicture(tag);
        } else if (tag != "br" && tag != "hr" && tag != kMeta) {
            Require(Has(kPlainTags, tag), "an unknown tag", tag);
            open.push_back(tag);
        }
    }
    Require(open.empty(), "tags are left open");
    return anchors;
}

std::string BodyText(std::string_view html) {
    const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document(
        htmlReadMemory(html.data(), static_cast<int>(html.size()), nullptr, "UTF-8",
                       HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET),
        xmlFreeDoc);
    Require(document != nullptr, "a page that cannot be parsed");
    std::string text;
    for (xmlNode* node = xmlDocGetRootElement(document.get())->children; node != nullptr;
         node = node->next) {
        if (xmlStrcmp(node->name, BAD_CAST "body") != 0)
            continue;
        const std::unique_ptr<xmlChar, void (*)(void*)> content(xmlNodeGetContent(node), xmlFree);
        text += reinterpret_cast<const char*>(content.get());
    }
    return text;
}

std::string WithoutBlanks(std::string_view utf8) {
    std::string text;
    for (std::size_t at = 0; at < utf8.size();) {
        const std::size_t begin = at;
        const char32_t c = engine::NextCodePoint(utf8, at);
        if (c > U' ' && c != 0xFFFE && c != 0xFFFF)
            text.append(utf8.substr(begin, at - begin));
    }
    return text;
}

} // namespace fuzz
