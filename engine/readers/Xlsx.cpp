// Reads XLSX, XLTX and their kin.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/DocxStyles.h"
#include "engine/readers/Limits.h"
#include "engine/readers/OpenXml.h"
#include "engine/readers/Reader.h"
#include "engine/readers/XlsxFormats.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace engine {
namespace {

constexpr int kWidestGap = 32; // empty cells shown between two full ones

// The texts that cells share, one after the other in memory.
class SharedTexts final : public XmlHandler {
  public:
    bool full = false;

    bool Start(const XmlElement& element) override {
        if (element.name == "si")
            m_ends.push_back(m_texts.size());
        m_inText = m_inText || element.name == "t";
        return element.name != "rPh"; // how a word is read
    }
    void End(std::string_view /*space*/, std::string_view name) override {
        if (name == "t")
            m_inText = false;
        else if (name == "si" && !m_ends.empty())
            m_ends.back() = m_texts.size();
    }
    void Text(std::string_view utf8) override {
        if (!m_inText)
            return;
        full = full || m_texts.size() + utf8.size() > kMaxSharedText;
        if (!full)
            m_texts += utf8;
    }
    [[nodiscard]] std::string_view At(std::size_t index) const {
        if (index >= m_ends.size())
            return {};
        const std::size_t begin = index == 0 ? 0 : m_ends[index - 1];
        return std::string_view(m_texts).substr(begin, m_ends[index] - begin);
    }

  private:
    std::string m_texts;
    std::vector<std::size_t> m_ends;
    bool m_inText = false;
};

struct SheetEntry {
    std::string name;
    std::string id; // of the relationship
};

class WorkbookParts final : public XmlHandler {
  public:
    std::vector<SheetEntry> sheets;
    bool from1904 = false;

    bool Start(const XmlElement& element) override {
        if (element.name == "sheet") {
            sheets.push_back(
                {element.Attribute("name"), element.Attribute("/relationships", "id")});
        } else if (element.name == "workbookPr") {
            const std::string value = element.Attribute("date1904");
            from1904 = value == "1" || value == "true" || value == "on";
        }
        return true;
    }
    void End(std::string_view, std::string_view) override {}
    void Text(std::string_view) override {}
};

// The column of a cell's address, "C5" gives 3; 0 where there is none.
int ColumnOf(std::string_view address) {
    int column = 0;
    for (const char c : address) {
        if (c < 'A' || c > 'Z' || column > 100'000)
            break;
        column = column * 26 + (c - 'A' + 1);
    }
    return column;
}

// A cell's line ends are shown.
void PutLines(std::string_view text, Flow& flow) {
    while (true) {
        const std::size_t end = text.find('\n');
        flow.Text(text.substr(0, end));
        if (end == std::string_view::npos)
            return;
        flow.Break();
        text.remove_prefix(end + 1);
    }
}

// A header or footer of the printed sheet: "oddHeader", "firstFooter" and so on.
bool IsMargin(std::string_view name) {
    return name != "headerFooter" && (name.ends_with("Header") || name.ends_with("Footer"));
}

class SheetText final : public XmlHandler {
  public:
    SheetText(const SharedTexts& shared, const XlsxFormats& formats, Flow& flow)
        : m_shared(shared), m_formats(formats), m_flow(flow) {}

    bool Start(const XmlElement& element) override;
    void End(std::string_view space, std::string_view name) override;
    void Text(std::string_view utf8) override {
        if (m_collect)
            m_value += utf8;
    }

  private:
    [[nodiscard]] std::string_view Shown();
    void PutCell();
    void PutMargin();

    const SharedTexts& m_shared;
    const XlsxFormats& m_formats;
    Flow& m_flow;
    std::string m_type, m_value;
    int m_style = 0;
    int m_column = 0;     // of the cell that is read
    int m_lastColumn = 0; // the last one shown in this row
    bool m_collect = false;
    bool m_tableOpen = false;
    bool m_rowOpen = false;
};

bool SheetText::Start(const XmlElement& element) {
    const std::string_view name = element.name;
    if (name == "c") {
        m_type = element.Attribute("t");
        m_style = ToNumber(element.Attribute("s"), 0);
        const int column = ColumnOf(element.Attribute("r"));
        m_column = column > 0 ? column : m_column + 1;
        m_value.clear();
    } else if (name == "v" || name == "t") {
        m_collect = true;
    } else if (name == "f") {
        return false;
    } else if (name == "row") {
        m_column = m_lastColumn = 0;
    } else if (IsMargin(name)) {
        m_value.clear();
        m_collect = true;
    }
    return name != "rPh" && name != "extLst" && name != "conditionalFormatting" &&
           name != "dataValidations";
}

void SheetText::End(std::string_view /*space*/, std::string_view name) {
    if (name == "v" || name == "t") {
        m_collect = false;
    } else if (name == "c") {
        PutCell();
    } else if (name == "row") {
        if (m_rowOpen)
            m_flow.Close(Block::Row);
        m_rowOpen = false;
    } else if (name == "sheetData") {
        if (m_tableOpen)
            m_flow.Close(Block::Table);
        m_tableOpen = false;
    } else if (IsMargin(name)) {
        m_collect = false;
        PutMargin();
    }
}

// The text of the cell that was read, as it is shown.
std::string_view SheetText::Shown() {
    if (m_type == "s")
        return m_shared.At(static_cast<std::size_t>(std::max(ToNumber(m_value, -1), -1)));
    if (m_type == "b")
        return m_value == "1" ? "TRUE" : m_value == "0" ? "FALSE" : std::string_view(m_value);
    if (m_type.empty() || m_type == "n")
        m_value = m_formats.Show(m_value, m_style);
    return m_value;
}

void SheetText::PutCell() {
    const std::string_view text = Shown();
    if (text.empty())
        return;
    if (!m_tableOpen)
        m_flow.Open(Block::Table);
    if (!m_rowOpen)
        m_flow.Open(Block::Row);
    m_tableOpen = m_rowOpen = true;
    for (int gap = std::min(m_column - m_lastColumn - 1, kWidestGap); gap > 0; --gap) {
        m_flow.Open(Block::Cell);
        m_flow.Close(Block::Cell);
    }
    m_lastColumn = m_column;
    m_flow.Open(Block::Cell);
    if (text.find("_x") == std::string_view::npos)
        PutLines(text, m_flow);
    else
        PutLines(UnescapeControls(text), m_flow);
    m_flow.Close(Block::Cell);
}

// Headers and footers of the printed sheet: "&L&"Arial,Bold"&12Costs&RPage &P".
void SheetText::PutMargin() {
    m_flow.Open(Block::Paragraph);
    std::string_view rest = m_value;
    while (!rest.empty()) {
        const std::size_t mark = std::min(rest.find('&'), rest.size());
        m_flow.Collapse(rest.substr(0, mark));
        rest.remove_prefix(mark);
        if (rest.size() < 2)
            break;
        std::size_t length = 2;
        if (rest[1] == '&')
            m_flow.Text("&");
        else if (rest[1] == '"')
            length = std::min(rest.find('"', 2), rest.size() - 1) + 1;
        else if (rest[1] == 'K')
            length = std::min<std::size_t>(8, rest.size());
        else if (rest[1] >= '0' && rest[1] <= '9')
            length = std::min(rest.find_first_not_of("0123456789", 1), rest.size());
        else if (rest[1] == 'L' || rest[1] == 'C' || rest[1] == 'R')
            m_flow.Blank();
        rest.remove_prefix(length);
    }
    m_flow.Close(Block::Paragraph);
}

// Comments of both generations: each holds a text.
class SheetComments final : public XmlHandler {
  public:
    explicit SheetComments(Flow& flow) : m_flow(flow) {}
    bool Start(const XmlElement& element) override {
        if (element.name == "comment" || element.name == "threadedComment")
            m_flow.Open(Block::Note);
        else if (element.name == "text")
            m_inText = true;
        return element.name != "rPh" && element.name != "authors" && element.name != "mentions";
    }
    void End(std::string_view /*space*/, std::string_view name) override {
        if (name == "comment" || name == "threadedComment")
            m_flow.Close(Block::Note);
        else if (name == "text")
            m_inText = false;
    }
    void Text(std::string_view utf8) override {
        if (m_inText)
            PutLines(utf8, m_flow);
    }

  private:
    Flow& m_flow;
    bool m_inText = false;
};

class XlsxReading {
  public:
    XlsxReading(const Source& source, DocumentSink& sink)
        : m_package(source, sink), m_sink(sink), m_flow(sink) {}

    void Run() {
        const std::string workbook = m_package.MainPart("xl/workbook.xml");
        m_package.ReadProperties();
        const Relationships references = m_package.RelationshipsOf(workbook);
        WorkbookParts parts;
        m_package.Parse(workbook, parts);
        m_formats.from1904 = parts.from1904;
        m_formats.Read(m_package, references.FirstOf("styles"));
        m_package.Parse(references.FirstOf("sharedStrings"), m_shared);
        if (m_shared.full)
            m_sink.Incomplete("texts beyond 256 MB");
        int number = 0;
        for (const SheetEntry& sheet : parts.sheets)
            Sheet(++number, sheet.name, references.TargetOf(sheet.id));
        if (parts.sheets.empty()) // a damaged workbook: its sheets may be whole
            for (const Relationship& reference : references.all)
                if (reference.type == "worksheet")
                    Sheet(++number, {}, reference.target);
        m_flow.Finish();
    }

  private:
    void Sheet(int number, const std::string& name, const std::string& part) {
        m_flow.Open(Block::Page, number);
        m_flow.Open(Block::Heading, 1);
        m_flow.Text(name);
        m_flow.Close(Block::Heading);
        SheetText text(m_shared, m_formats, m_flow);
        if (!m_package.Parse(part, text))
            m_sink.Incomplete("the sheet " + name + " is missing");
        const Relationships references = m_package.RelationshipsOf(part);
        std::string comments = references.FirstOf("comments");
        if (comments.empty())
            comments = references.FirstOf("threadedComment");
        SheetComments reader(m_flow);
        m_package.Parse(comments, reader);
        ReadDrawings(m_package, references, m_flow);
        m_flow.Close(Block::Page);
    }

    OpenXmlPackage m_package;
    DocumentSink& m_sink;
    Flow m_flow;
    XlsxFormats m_formats;
    SharedTexts m_shared;
};

} // namespace

void ReadXlsx(const Source& source, DocumentSink& sink) {
    XlsxReading(source, sink).Run();
}

} // namespace engine
