// Spreadsheets and texts as XML.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/OfficeXml2003.h"

#include "engine/readers/DocxStyles.h"
#include "engine/readers/NumberFormats.h"
#include "engine/readers/SheetFlow.h"

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace engine {
namespace {

// The properties that both vocabularies begin with.
class Properties {
  public:
    explicit Properties(DocumentSink& sink) : m_sink(sink) {}

    [[nodiscard]] bool IsOpen() const { return m_open; }
    void Start(std::string_view name) {
        m_open = m_open || name == "DocumentProperties" || name == "CustomDocumentProperties";
        m_value.clear();
    }
    void End(std::string_view name) {
        static constexpr std::array<std::pair<std::string_view, const char*>, 8> kFields{
            {{"Title", "title"},
             {"Author", "author"},
             {"Subject", "subject"},
             {"Keywords", "keywords"},
             {"Description", "comments"},
             {"Category", "category"},
             {"Company", "company"},
             {"Manager", "manager"}}};
        for (const auto& [element, field] : kFields)
            if (element == name)
                m_sink.Field(field, m_value);
        m_open = m_open && name != "DocumentProperties" && name != "CustomDocumentProperties";
    }
    void Text(std::string_view utf8) { m_value += utf8; }

  private:
    DocumentSink& m_sink;
    std::string m_value;
    bool m_open = false;
};

// ---- Spreadsheets

// "2024-12-31T18:00:00.000" as other workbooks show it.
std::string ShownTime(const std::string& value) {
    constexpr std::size_t kDay = 10, kMinutes = 16;
    if (value.size() < kMinutes || value[kDay] != 'T')
        return value;
    const std::string time = value.substr(kDay + 1);
    if (time.starts_with("00:00:00"))
        return value.substr(0, kDay);
    const bool seconds = time.size() >= 8 && time.substr(5, 3) != ":00";
    return value.substr(0, kDay) + " " + time.substr(0, seconds ? 8 : 5);
}

class SpreadsheetXml final : public XmlHandler {
  public:
    SpreadsheetXml(Flow& flow, DocumentSink& sink) : m_sheet(flow), m_properties(sink) {}

    bool Start(const XmlElement& element) override;
    void End(std::string_view space, std::string_view name) override;
    void Text(std::string_view utf8) override {
        if (m_properties.IsOpen())
            m_properties.Text(utf8);
        else if (m_inData)
            m_value += utf8;
    }

  private:
    void StartCell(const XmlElement& element);
    void TakeFormat(const XmlElement& element);
    void EndData();
    void PutAround();

    SheetFlow m_sheet;
    Properties m_properties;
    NumberFormats m_formats;
    std::map<std::string, int> m_styles; // by id
    std::string m_style, m_type, m_value;
    std::vector<std::string> m_margins, m_notes; // come behind the cells
    int m_number = 0;
    int m_column = 0;
    int m_merged = 0; // cells that the last one covers too
    bool m_inData = false;
    bool m_inNote = false;
};

bool SpreadsheetXml::Start(const XmlElement& element) {
    const std::string_view name = element.name;
    m_properties.Start(name);
    if (m_properties.IsOpen())
        return true;
    if (name == "Style") {
        m_style = element.Attribute("ID");
    } else if (name == "NumberFormat") {
        TakeFormat(element);
    } else if (name == "Worksheet") {
        m_sheet.Begin(++m_number, element.Attribute("Name"));
    } else if (name == "Row") {
        m_sheet.NewRow();
        m_column = m_merged = 0;
    } else if (name == "Cell") {
        StartCell(element);
    } else if (name == "Comment") {
        m_inNote = true;
    } else if (name == "Data") {
        m_inData = true;
        m_type = element.Attribute("Type");
        m_value.clear();
    } else if (name == "Header" || name == "Footer") {
        m_margins.push_back(element.Attribute("Data"));
    }
    return name != "PhoneticText" && name != "ExcelWorkbook" && name != "Names";
}

void SpreadsheetXml::StartCell(const XmlElement& element) {
    constexpr int kLastColumn = 100'000;
    m_column = std::min(std::max(ToNumber(element.Attribute("Index"), 0), m_column + m_merged + 1),
                        kLastColumn);
    m_merged = std::clamp(ToNumber(element.Attribute("MergeAcross"), 0), 0, kLastColumn);
    m_style = element.Attribute("StyleID");
}

void SpreadsheetXml::TakeFormat(const XmlElement& element) {
    static constexpr std::array<std::pair<std::string_view, const char*>, 5> kNamed{
        {{"Percent", "0.00%"},
         {"Fixed", "0.00"},
         {"Standard", "#,##0.00"},
         {"Currency", "0.00"},
         {"Euro Currency", "0.00"}}};
    std::string code = element.Attribute("Format");
    for (const auto& [name, meaning] : kNamed)
        if (code == name)
            code = meaning;
    constexpr int kOwn = 164;
    const int number = static_cast<int>(m_styles.size());
    if (code.empty() || !m_styles.emplace(m_style, number).second)
        return;
    m_formats.Define(kOwn + number, code);
    m_formats.AddStyle(kOwn + number);
}

void SpreadsheetXml::EndData() {
    m_inData = false;
    if (m_inNote) {
        m_notes.push_back(m_value);
        return;
    }
    if (m_type == "DateTime") {
        m_value = ShownTime(m_value);
    } else if (m_type == "Boolean") {
        m_value = m_value == "0" ? "FALSE" : "TRUE";
    } else if (m_type == "Number") {
        const auto style = m_styles.find(m_style);
        m_value = m_formats.Show(m_value, style == m_styles.end() ? -1 : style->second);
    }
    m_sheet.Cell(m_column, m_value);
}

void SpreadsheetXml::PutAround() {
    m_sheet.EndTable();
    for (const std::string& margin : std::exchange(m_margins, {}))
        m_sheet.Margin(margin);
    for (const std::string& note : std::exchange(m_notes, {}))
        m_sheet.Note(note);
}

void SpreadsheetXml::End(std::string_view /*space*/, std::string_view name) {
    if (m_properties.IsOpen())
        return m_properties.End(name);
    if (name == "Data") {
        EndData();
    } else if (name == "Comment") {
        m_inNote = false;
    } else if (name == "Worksheet") {
        PutAround();
        m_sheet.End();
    }
}

// ---- Texts

class TextXml final : public XmlHandler {
  public:
    TextXml(Flow& flow, DocumentSink& sink) : m_flow(flow), m_properties(sink) {}

    bool Start(const XmlElement& element) override;
    void End(std::string_view space, std::string_view name) override;
    void Text(std::string_view utf8) override {
        if (m_properties.IsOpen())
            m_properties.Text(utf8);
        else if (m_inText > 0)
            m_flow.Text(utf8);
    }

  private:
    static bool IsSkipped(const XmlElement& element);
    bool StartAnnotation(const std::string& type);
    void StartParagraph();

    Flow& m_flow;
    Properties m_properties;
    std::vector<bool> m_notes; // whether each open "annotation" is a comment
    int m_inText = 0;
};

// What is deleted, the codes of fields, pictures, styles; of a flat package the parts that hold
// them.
bool TextXml::IsSkipped(const XmlElement& element) {
    static constexpr std::array<std::string_view, 22> kSkipped{
        "abstractNum", "binData",   "binaryData", "bookmarkStart", "del",           "delText",
        "docDefaults", "docPr",     "fonts",      "instrText",     "latentStyles",  "lists",
        "moveFrom",    "numbering", "rt",         "settings",      "shapeDefaults", "style",
        "styles",      "tblPr",     "tabs",       "theme"};
    if (element.name == "part") {
        const std::string type = element.Attribute("contentType");
        const std::array<std::string_view, 6> kParts{"main+xml",     "header+xml",
                                                     "footer+xml",   "footnotes+xml",
                                                     "endnotes+xml", "comments+xml"};
        return std::none_of(kParts.begin(), kParts.end(),
                            [&](std::string_view end) { return type.ends_with(end); });
    }
    return std::find(kSkipped.begin(), kSkipped.end(), element.name) != kSkipped.end();
}

// Comments and tracked changes have one name and differ by type.
bool TextXml::StartAnnotation(const std::string& type) {
    if (type.find("Deletion") != std::string::npos)
        return false;
    m_notes.push_back(type.ends_with("Comment"));
    if (m_notes.back()) {
        m_flow.BeginAside();
        m_flow.Open(Block::Note);
    }
    return true;
}

bool TextXml::Start(const XmlElement& element) {
    const std::string_view name = element.name;
    m_properties.Start(name);
    if (m_properties.IsOpen())
        return true;
    if (IsSkipped(element))
        return false;
    if (name == "annotation")
        return StartAnnotation(element.Attribute("type"));
    if (name == "p") {
        m_flow.Open(Block::Paragraph);
    } else if (name == "pStyle") {
        const std::string style = element.Attribute("val");
        if (style.size() == 8 && style.starts_with("Heading") && style[7] >= '1' && style[7] <= '6')
            m_flow.Open(Block::Heading, style[7] - '0');
    } else if (name == "t") {
        ++m_inText;
    } else if (name == "tab") {
        m_flow.Text("\t");
    } else if (name == "br" || name == "cr") {
        m_flow.Break();
    } else if (name == "noBreakHyphen") {
        m_flow.Text("\u2011");
    } else if (name == "tbl") {
        m_flow.Open(Block::Table);
    } else if (name == "tr") {
        m_flow.Open(Block::Row);
    } else if (name == "tc") {
        m_flow.Open(Block::Cell);
    } else if (name == "txbxContent") {
        m_flow.BeginAside();
    } else if (name == "footnote" || name == "endnote" || name == "comment") {
        const std::string type = element.Attribute("type");
        if (!type.empty() && type != "normal")
            return false;
        m_flow.BeginAside();
        m_flow.Open(Block::Note);
    }
    return true;
}

void TextXml::End(std::string_view /*space*/, std::string_view name) {
    if (m_properties.IsOpen())
        return m_properties.End(name);
    if (name == "p") {
        m_flow.EndParagraph();
    } else if (name == "t") {
        --m_inText;
    } else if (name == "tbl") {
        m_flow.Close(Block::Table);
    } else if (name == "tr") {
        m_flow.Close(Block::Row);
    } else if (name == "tc") {
        m_flow.Close(Block::Cell);
    } else if (name == "txbxContent") {
        m_flow.EndAside();
    } else if (name == "footnote" || name == "endnote" || name == "comment") {
        m_flow.Close(Block::Note);
        m_flow.EndAside();
    } else if (name == "annotation" && !m_notes.empty()) {
        if (m_notes.back()) {
            m_flow.Close(Block::Note);
            m_flow.EndAside();
        }
        m_notes.pop_back();
    }
}

} // namespace

std::unique_ptr<XmlHandler> MakeOfficeXmlReader(const XmlElement& root, Flow& flow,
                                                DocumentSink& sink) {
    if (root.name == "Workbook" && root.space == "urn:schemas-microsoft-com:office:spreadsheet")
        return std::make_unique<SpreadsheetXml>(flow, sink);
    if ((root.name == "wordDocument" &&
         root.space == "http://schemas.microsoft.com/office/word/2003/wordml") ||
        (root.name == "package" &&
         root.space == "http://schemas.microsoft.com/office/2006/xmlPackage"))
        return std::make_unique<TextXml>(flow, sink);
    return nullptr;
}

} // namespace engine
