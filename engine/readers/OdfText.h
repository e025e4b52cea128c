// The text of OpenDocument XML: texts, sheets, presentations and drawings.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Flow.h"
#include "engine/readers/OdfTags.h"
#include "engine/readers/XmlSax.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace engine {

// Which part of a document is read. One XML file that holds it all is read as Everything. Embedded
// is a document within another one: its sheets are no pages of that.
enum class OdfPart : std::uint8_t { Everything, Headers, Footers, Embedded };

// Collects title, author and so on from the element "meta".
class OdfMeta {
  public:
    explicit OdfMeta(DocumentSink& sink) : m_sink(sink) {}
    void Start(const XmlElement& element);
    void Text(std::string_view utf8) { m_value += utf8; }
    void End(std::string_view name);
    // Passes on what was collected, at the end of "meta".
    void Report() const;

  private:
    DocumentSink& m_sink;
    std::string m_value, m_ownName;
    std::vector<std::pair<std::string, std::string>> m_fields;
    std::string m_author, m_lastAuthor, m_keywords;
};

class OdfText final : public XmlHandler {
  public:
    // Puts a picture's part, named as in the document, and its alternative text into the flow.
    using PutPicture = std::function<void(const std::string& part, const std::string& text)>;

    OdfText(Flow& flow, OdfMeta& meta, OdfPart part, PutPicture putPicture)
        : m_flow(flow), m_meta(meta), m_part(part), m_putPicture(std::move(putPicture)) {}

    bool Start(const XmlElement& element) override;
    void End(std::string_view space, std::string_view name) override;
    void Text(std::string_view utf8) override;

  private:
    struct Table {
        int gap = 0;      // empty cells since the last one shown
        int repeated = 1; // how often the cell that is read stands there
        bool inCell = false;
        bool cellShown = false;
        bool sheet = false;
    };

    [[nodiscard]] bool Reading() const { return m_inBody > 0 || m_inMargin > 0; }
    bool StartText(OdfTag tag, const XmlElement& element);
    bool StartShape(OdfTag tag, const XmlElement& element);
    void StartTable(const XmlElement& element);
    void StartCell(const XmlElement& element);
    void StartParagraph(OdfTag tag, const XmlElement& element);
    bool StartMargin(const XmlElement& element);
    void ShowCell();
    void EndCell();
    void EndTable();
    void EndFrame();
    void PutBlanks(const XmlElement& element);

    Flow& m_flow;
    OdfMeta& m_meta;
    const OdfPart m_part;
    PutPicture m_putPicture;
    std::vector<Table> m_tables;
    int m_inMeta = 0;
    int m_inBody = 0;
    int m_inMargin = 0;      // header or footer
    int m_inParagraph = 0;   // paragraphs and headings that are open
    int m_inDescription = 0; // of a picture
    int m_pages = 0;
    bool m_spreadsheet = false;
    bool m_title = false; // the frame that is read holds the slide's title
    std::string m_description, m_picture;
};

} // namespace engine
