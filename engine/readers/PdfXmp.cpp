// What an XMP packet tells of a document.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/PdfXmp.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <climits>
#include <memory>

namespace engine {

namespace {

constexpr std::string_view kDublinCore = "http://purl.org/dc/elements/1.1/";
constexpr std::string_view kPdf = "http://ns.adobe.com/pdf/1.3/";

std::string_view View(const xmlChar* text) {
    return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

void AppendTrimmed(std::string& out, std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const auto begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos)
        return;
    if (!out.empty())
        out += ", ";
    out += text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

// The texts below node; of a list of languages only the first.
void CollectTexts(const xmlNode& node, bool firstOnly, int depth, std::string& out) {
    constexpr int kMaxDepth = 8;
    for (const xmlNode* child = node.children; child != nullptr && depth < kMaxDepth;
         child = child->next) {
        if (firstOnly && !out.empty())
            return;
        if (child->type == XML_TEXT_NODE || child->type == XML_CDATA_SECTION_NODE)
            AppendTrimmed(out, View(child->content));
        else if (child->type == XML_ELEMENT_NODE)
            CollectTexts(*child, firstOnly, depth + 1, out);
    }
}

void TakeElement(const xmlNode& node, XmpProperties& found) {
    if (node.ns == nullptr)
        return;
    const std::string_view space = View(node.ns->href);
    const std::string_view name = View(node.name);
    if (space == kPdf && name == "Keywords" && found.keywords.empty())
        CollectTexts(node, true, 0, found.keywords);
    if (space != kDublinCore)
        return;
    if (name == "title" && found.title.empty())
        CollectTexts(node, true, 0, found.title);
    else if (name == "description" && found.subject.empty())
        CollectTexts(node, true, 0, found.subject);
    else if (name == "creator" && found.author.empty())
        CollectTexts(node, false, 0, found.author);
    else if (name == "subject" && found.keywords.empty())
        CollectTexts(node, false, 0, found.keywords);
}

void TakeAttributes(const xmlNode& node, XmpProperties& found) {
    for (const xmlAttr* attribute = node.properties; attribute != nullptr;
         attribute = attribute->next) {
        if (attribute->ns == nullptr || View(attribute->ns->href) != kPdf ||
            View(attribute->name) != "Keywords" || !found.keywords.empty())
            continue;
        if (attribute->children != nullptr)
            AppendTrimmed(found.keywords, View(attribute->children->content));
    }
}

// Properties stand in rdf:Description elements, a few levels below the root.
void Visit(const xmlNode& node, int depth, XmpProperties& found) {
    constexpr int kMaxDepth = 4;
    for (const xmlNode* child = node.children; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE)
            continue;
        TakeElement(*child, found);
        TakeAttributes(*child, found);
        if (depth < kMaxDepth)
            Visit(*child, depth + 1, found);
    }
}

} // namespace

XmpProperties ReadXmp(std::string_view packet) {
    XmpProperties found;
    if (packet.empty() || packet.size() > INT_MAX)
        return found;
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> doc(
        xmlReadMemory(packet.data(), static_cast<int>(packet.size()), nullptr, nullptr,
                      XML_PARSE_NONET | XML_PARSE_RECOVER | XML_PARSE_NOERROR |
                          XML_PARSE_NOWARNING),
        xmlFreeDoc);
    if (doc != nullptr && xmlDocGetRootElement(doc.get()) != nullptr)
        Visit(*xmlDocGetRootElement(doc.get()), 0, found);
    return found;
}

} // namespace engine
