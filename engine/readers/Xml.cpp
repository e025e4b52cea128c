// Reads XML: office documents that are one file, SVG, and whatever else there is.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Charset.h"
#include "engine/readers/Flow.h"
#include "engine/readers/OfficeXml2003.h"
#include "engine/readers/Reader.h"
#include "engine/readers/XmlSax.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

namespace engine {
namespace {

// Attributes that hold words for people.
constexpr std::array<std::string_view, 10> kSpokenAttributes{
    "alt", "title", "label", "name", "value", "summary", "desc", "caption", "text", "description"};
// Elements that stand inside a sentence or even inside a word; sorted.
constexpr std::array<std::string_view, 26> kInline{
    "a",   "abbr",      "b",    "bold",        "code",  "em",    "emphasis", "foreign", "hi",
    "i",   "italic",    "link", "literal",     "q",     "small", "span",     "strong",  "style",
    "sub", "subscript", "sup",  "superscript", "tspan", "u",     "ulink",    "xref"};
static_assert(std::is_sorted(kInline.begin(), kInline.end()));

// A line end between two tags shows that the document is laid out by its elements: there a
// paragraph ends. Tags without anything between them part words, but for those of emphasis.
class XmlText final : public XmlHandler {
  public:
    explicit XmlText(Flow& flow) : m_flow(flow) {}

    bool Start(const XmlElement& element) override {
        if (m_root.empty())
            m_root = element.name;
        EndRun();
        const bool svg = m_root == "svg";
        if (element.name == "binary" || element.name == "binary-data" || element.name == "script" ||
            (svg && element.name == "style"))
            return false;
        Edge(element.name);
        if (svg && element.name == "tspan" &&
            !(element.Attribute("x").empty() && element.Attribute("y").empty()))
            m_flow.Blank();
        if (!svg || element.name == "image")
            SpokenAttributes(element);
        return true;
    }
    void End(std::string_view /*space*/, std::string_view name) override {
        EndRun();
        Edge(name);
    }
    void Text(std::string_view utf8) override {
        for (const char c : utf8) {
            m_onlyBlanks = m_onlyBlanks && (c == ' ' || c == '\n' || c == '\t' || c == '\r');
            m_lineEnd = m_lineEnd || c == '\n' || c == '\r';
            if (!m_onlyBlanks)
                break;
        }
        m_flow.Collapse(utf8);
    }

  private:
    // The text between two tags is over.
    void EndRun() {
        if (m_onlyBlanks && m_lineEnd)
            m_flow.EndParagraph();
        m_onlyBlanks = true;
        m_lineEnd = false;
    }
    void Edge(std::string_view name) {
        if (!std::binary_search(kInline.begin(), kInline.end(), name))
            m_flow.Blank();
    }
    void SpokenAttributes(const XmlElement& element) {
        if (!element.HasAttributes())
            return;
        for (const std::string_view attribute : kSpokenAttributes) {
            const std::string value = element.Attribute(attribute);
            if (value.empty())
                continue;
            m_flow.Blank();
            m_flow.Collapse(value);
            m_flow.Blank();
        }
    }

    Flow& m_flow;
    std::string m_root;
    bool m_onlyBlanks = true; // since the last tag
    bool m_lineEnd = false;   // among these blanks
};

// Hands the document to what knows its vocabulary, which the root tells.
class XmlDocument final : public XmlHandler {
  public:
    XmlDocument(Flow& flow, DocumentSink& sink) : m_flow(flow), m_sink(sink), m_general(flow) {}

    bool Start(const XmlElement& element) override {
        if (m_depth++ == 0 && (m_known = MakeOfficeXmlReader(element, m_flow, m_sink)) != nullptr)
            return true;
        const bool read = Reader().Start(element);
        m_depth -= read ? 0 : 1; // no End follows
        return read;
    }
    void End(std::string_view space, std::string_view name) override {
        if (--m_depth > 0 || m_known == nullptr)
            Reader().End(space, name);
    }
    void Text(std::string_view utf8) override { Reader().Text(utf8); }

  private:
    XmlHandler& Reader() { return m_known != nullptr ? *m_known : m_general; }

    Flow& m_flow;
    DocumentSink& m_sink;
    XmlText m_general;
    std::unique_ptr<XmlHandler> m_known;
    int m_depth = 0;
};

// The encoding that the declaration in the first line names; empty when there is none.
std::string DeclaredXmlCharset(std::string_view bytes) {
    if (!bytes.starts_with("<?xml"))
        return {};
    std::string_view line = bytes.substr(0, std::min<std::size_t>(bytes.find("?>"), 1024));
    const std::size_t at = line.find("encoding");
    if (at == std::string_view::npos)
        return {};
    line.remove_prefix(at);
    const std::size_t open = line.find_first_of("\"'");
    if (open == std::string_view::npos)
        return {};
    const std::size_t close = line.find(line[open], open + 1);
    return std::string(
        line.substr(open + 1, close == std::string_view::npos ? 0 : close - open - 1));
}

} // namespace

std::string ReadXmlInto(std::string_view bytes, XmlHandler& handler) {
    const Charset charset = DetectCharset(bytes, DeclaredXmlCharset(bytes));
    XmlParser parser(handler, true);
    DecodeText(bytes, charset, [&parser](std::string_view piece) { parser.Feed(piece); });
    parser.Finish();
    return parser.Problem();
}

void ReadXml(const Source& source, DocumentSink& sink) {
    Flow flow(sink);
    XmlDocument document(flow, sink);
    const std::string problem = ReadXmlInto(source.bytes, document);
    flow.Finish();
    if (!problem.empty())
        sink.Incomplete("the document " + problem);
}

} // namespace engine
