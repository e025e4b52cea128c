// Packages, properties and drawings.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/OpenXml.h"

#include "engine/readers/Charset.h"
#include "engine/readers/MemberNames.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <set>
#include <utility>

namespace engine {
namespace {

constexpr std::size_t kMaxRelationships = 20'000;

class RelationshipList final : public XmlHandler {
  public:
    RelationshipList(std::string_view folder, Relationships& list)
        : m_folder(folder), m_list(list) {}
    bool Start(const XmlElement& element) override {
        if (element.name != "Relationship")
            return true;
        if (element.Attribute("TargetMode") == "External" || m_list.all.size() >= kMaxRelationships)
            return false;
        Relationship relationship;
        relationship.id = element.Attribute("Id");
        relationship.type = LastPart(element.Attribute("Type"));
        relationship.target = ResolveName(m_folder, element.Attribute("Target"));
        m_list.all.push_back(std::move(relationship));
        return false;
    }
    void End(std::string_view, std::string_view) override {}
    void Text(std::string_view) override {}

  private:
    std::string_view m_folder;
    Relationships& m_list;
};

// Properties: each is an element with its value as text.
class PropertyList final : public XmlHandler {
  public:
    // own: every property is reported by its own name.
    PropertyList(DocumentSink& sink, bool own) : m_sink(sink), m_own(own) {}
    bool Start(const XmlElement& element) override {
        ++m_depth;
        if (m_depth == 2) {
            m_value.clear();
            m_name =
                element.name == "property" ? element.Attribute("name") : std::string(element.name);
        }
        return true;
    }
    void End(std::string_view, std::string_view) override {
        if (m_depth-- == 2)
            Report();
    }
    void Text(std::string_view utf8) override {
        if (m_depth >= 2)
            m_value += utf8;
    }

  private:
    // Properties that programs put in for themselves.
    static bool IsOfMachine(std::string_view name) {
        constexpr std::array kNames{"appversion",       "contenttypeid", "docsecurity",
                                    "linksuptodate",    "scalecrop",     "sharedoc",
                                    "hyperlinkschanged"};
        return name.starts_with("msip_label_") ||
               std::find(kNames.begin(), kNames.end(), name) != kNames.end();
    }
    void Report() {
        m_value = UnescapeControls(m_value);
        constexpr std::array<std::pair<std::string_view, std::string_view>, 9> kFields{{
            {"title", "title"},
            {"creator", "author"},
            {"subject", "subject"},
            {"keywords", "keywords"},
            {"description", "comments"},
            {"category", "category"},
            {"contentstatus", "status"},
            {"company", "company"},
            {"manager", "manager"},
        }};
        std::transform(m_name.begin(), m_name.end(), m_name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (m_own) {
            if (!IsOfMachine(m_name))
                m_sink.Field(m_name, m_value);
            return;
        }
        for (const auto& [element, field] : kFields)
            if (m_name == element)
                m_sink.Field(field, m_value);
    }

    DocumentSink& m_sink;
    const bool m_own;
    int m_depth = 0;
    std::string m_name, m_value;
};

} // namespace

std::string UnescapeControls(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        const std::size_t mark = std::min(text.find("_x"), text.size());
        plain.append(text.substr(0, mark));
        text.remove_prefix(mark);
        if (text.empty())
            break;
        unsigned code = 0;
        const bool escape =
            text.size() >= 7 && text[6] == '_' &&
            std::from_chars(text.data() + 2, text.data() + 6, code, 16).ptr == text.data() + 6;
        if (escape)
            AppendUtf8(plain, code == '\r' ? U' ' : code);
        else
            plain += '_';
        text.remove_prefix(escape ? 7 : 1);
    }
    return plain;
}

std::string Relationships::TargetOf(std::string_view id) const {
    for (const Relationship& relationship : all)
        if (relationship.id == id)
            return relationship.target;
    return {};
}

std::string Relationships::FirstOf(std::string_view type) const {
    for (const Relationship& relationship : all)
        if (relationship.type == type)
            return relationship.target;
    return {};
}

std::string OpenXmlPackage::MainPart(std::string_view usualName) {
    std::string part = RelationshipsOf({}).FirstOf("officeDocument");
    if (part.empty() || !Has(part))
        part = usualName;
    Require(part);
    return part;
}

Relationships OpenXmlPackage::RelationshipsOf(std::string_view part) {
    const std::string_view folder = FolderOf(part);
    std::string name(folder);
    if (!name.empty())
        name += '/';
    name.append("_rels/").append(LastPart(part)).append(".rels");
    Relationships list;
    RelationshipList handler(folder, list);
    Parse(name, handler);
    return list;
}

void OpenXmlPackage::ReadProperties() {
    const Relationships relationships = RelationshipsOf({});
    const auto read = [&](std::string_view type, std::string_view usualName, bool own) {
        std::string part = relationships.FirstOf(type);
        if (part.empty())
            part = usualName;
        PropertyList properties(Sink(), own);
        Parse(part, properties);
    };
    read("core-properties", "docProps/core.xml", false);
    read("extended-properties", "docProps/app.xml", false);
    read("custom-properties", "docProps/custom.xml", true);
}

bool AlternateContent::Start(std::string_view name) {
    if (name == "AlternateContent") {
        m_chosen.push_back(false);
    } else if (!m_chosen.empty() && (name == "Choice" || name == "Fallback")) {
        if (m_chosen.back())
            return false;
        m_chosen.back() = true;
    }
    return true;
}

void AlternateContent::End(std::string_view name) {
    if (name == "AlternateContent" && !m_chosen.empty())
        m_chosen.pop_back();
}

bool DrawingText::Start(const XmlElement& element) {
    if (!m_alternate.Start(element.name))
        return false;
    if (element.name == "p") {
        m_flow.Open(Block::Paragraph);
    } else if (element.name == "t") {
        ++m_inText;
    } else if (element.name == "br") {
        m_flow.Break();
    } else if (element.name == "cNvPr") {
        m_flow.EndParagraph();
        m_flow.Collapse(element.Attribute("descr"));
        m_flow.EndParagraph();
    } else if (element.name == "strCache" || element.name == "strLit" ||
               element.name == "multiLvlStrCache") {
        ++m_inWords;
    } else if (element.name == "v") {
        m_word.clear();
    }
    return true;
}

void DrawingText::End(std::string_view /*space*/, std::string_view name) {
    m_alternate.End(name);
    if (name == "p") {
        m_flow.Close(Block::Paragraph);
    } else if (name == "t") {
        --m_inText;
    } else if (name == "strCache" || name == "strLit" || name == "multiLvlStrCache") {
        --m_inWords;
    } else if (name == "v" && m_inWords > 0 && m_words.insert(m_word).second) {
        m_flow.Open(Block::Paragraph);
        m_flow.Text(m_word);
        m_flow.Close(Block::Paragraph);
    }
}

void DrawingText::Text(std::string_view utf8) {
    if (m_inText > 0)
        m_flow.Text(utf8);
    else if (m_inWords > 0)
        m_word += utf8;
}

namespace {

// Charts and diagrams hang on a text or on a sheet's drawing, text boxes on a chart.
constexpr int kDeepestDrawing = 3;

void ReadDrawings(OpenXmlPackage& package, const Relationships& relationships, Flow& flow,
                  std::set<std::string>& read, int depth) {
    constexpr std::array<std::string_view, 5> kTypes{"drawing", "diagramData", "chart", "chartEx",
                                                     "chartUserShapes"};
    for (const Relationship& relationship : relationships.all) {
        if (std::find(kTypes.begin(), kTypes.end(), relationship.type) == kTypes.end() ||
            !read.insert(relationship.target).second)
            continue;
        DrawingText text(flow);
        package.Parse(relationship.target, text);
        if (depth < kDeepestDrawing)
            ReadDrawings(package, package.RelationshipsOf(relationship.target), flow, read,
                         depth + 1);
    }
}

} // namespace

void ReadDrawings(OpenXmlPackage& package, const Relationships& relationships, Flow& flow) {
    std::set<std::string> read;
    ReadDrawings(package, relationships, flow, read, 1);
}

} // namespace engine
