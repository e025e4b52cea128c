// What the office formats of ISO/IEC 29500 (DOCX, XLSX, PPTX) have in common: a package of parts
// that refer to each other through relationships, properties, drawings.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Package.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

struct Relationship {
    std::string id;
    std::string type;   // the last part of its URI, such as "footnotes"
    std::string target; // name of a part of the package; external targets are left out
};

// Control characters stand as "_x000D_" in the texts of workbooks and in properties.
[[nodiscard]] std::string UnescapeControls(std::string_view text);

class Relationships {
  public:
    std::vector<Relationship> all; // in the order of the file

    // The part an id stands for, or empty.
    [[nodiscard]] std::string TargetOf(std::string_view id) const;
    // The first part of that type, or empty.
    [[nodiscard]] std::string FirstOf(std::string_view type) const;
};

class OpenXmlPackage : public Package {
  public:
    using Package::Package;
    // The part that the document begins with; throws ReadError as Require does.
    [[nodiscard]] std::string MainPart(std::string_view usualName);
    // Where a part refers to; empty part: the package as a whole.
    [[nodiscard]] Relationships RelationshipsOf(std::string_view part);
    // Title, author and so on, and the properties of the document's own, as fields.
    void ReadProperties();
};

// Of the ways an AlternateContent offers to say the same, the first is read and the others not.
class AlternateContent {
  public:
    // To be asked at each start. false: pass the element over.
    [[nodiscard]] bool Start(std::string_view name);
    void End(std::string_view name);

  private:
    std::vector<bool> m_chosen; // one for each AlternateContent that is open
};

// Text of drawings, diagrams and charts: paragraphs, what describes a picture, and the words that
// charts keep of the cells.
class DrawingText final : public XmlHandler {
  public:
    explicit DrawingText(Flow& flow) : m_flow(flow) {}
    bool Start(const XmlElement& element) override;
    void End(std::string_view space, std::string_view name) override;
    void Text(std::string_view utf8) override;

  private:
    Flow& m_flow;
    AlternateContent m_alternate;
    int m_inText = 0;
    int m_inWords = 0; // within the words that a chart keeps of its cells
    std::string m_word;
    std::set<std::string> m_words; // every row of a chart repeats the names of its columns
};

// Reads the diagrams, charts and drawings that a part refers to, each once.
void ReadDrawings(OpenXmlPackage& package, const Relationships& relationships, Flow& flow);

} // namespace engine
