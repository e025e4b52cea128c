// Reads XLSX, XLTX and their kin.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/DocxStyles.h"
#include "engine/readers/Embedded.h"
#include "engine/readers/OpenXml.h"
#include "engine/readers/Reader.h"
#include "engine/readers/SharedTexts.h"
#include "engine/readers/SheetFlow.h"
#include "engine/readers/XlsxFormats.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace engine {
namespace {

// Cells share texts, which stand in a file of their own.
class SharedTextPart final : public XmlHandler {
  public:
    explicit SharedTextPart(SharedTexts& texts) : m_texts(texts) {}
    bool Start(const XmlElement& element) override {
        if (element.name == "si")
            m_texts.Begin();
        m_inText = m_inText || element.name == "t";
        return element.name != "rPh"; // how a word is read
    }
    void End(std::string_view /*space*/, std::string_view name) override {
        if (name == "t")
            m_inText = false;
    }
    void Text(std::string_view utf8) override {
        if (m_inText)
            m_texts.Append(utf8);
    }

  private:
    SharedTexts& m_texts;
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

// A header or footer of the printed sheet: "oddHeader", "firstFooter" and so on.
bool IsMargin(std::string_view name) {
    return name != "headerFooter" && (name.ends_with("Header") || name.ends_with("Footer"));
}

class SheetText final : public XmlHandler {
  public:
    SheetText(const SharedTexts& shared, const NumberFormats& formats, SheetFlow& sheet)
        : m_shared(shared), m_formats(formats), m_sheet(sheet) {}

    bool Start(const XmlElement& element) override;
    void End(std::string_view space, std::string_view name) override;
    void Text(std::string_view utf8) override {
        if (m_collect)
            m_value += utf8;
    }

  private:
    [[nodiscard]] std::string_view Shown();
    void PutCell();

    const SharedTexts& m_shared;
    const NumberFormats& m_formats;
    SheetFlow& m_sheet;
    std::string m_type, m_value;
    int m_style = 0;
    int m_column = 0; // of the cell that is read, from 1
    bool m_collect = false;
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
        m_column = 0;
        m_sheet.NewRow();
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
    } else if (name == "sheetData") {
        m_sheet.EndTable();
    } else if (IsMargin(name)) {
        m_collect = false;
        m_sheet.Margin(m_value);
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
    if (text.find("_x") == std::string_view::npos)
        m_sheet.Cell(m_column, text);
    else
        m_sheet.Cell(m_column, UnescapeControls(text));
}

// Comments of both generations: each holds a text. For older programs those of the younger one
// are kept in the old form too, under an author that is only a number, with advice to update.
class SheetComments final : public XmlHandler {
  public:
    SheetComments(Flow& flow, bool hasThreads) : m_flow(flow), m_hasThreads(hasThreads) {}
    bool Start(const XmlElement& element) override {
        if (element.name == "author")
            m_authors.emplace_back();
        m_inAuthor = element.name == "author";
        if (element.name == "comment" && m_hasThreads && IsThread(element.Attribute("authorId")))
            return false;
        if (element.name == "comment" || element.name == "threadedComment")
            m_flow.Open(Block::Note);
        else if (element.name == "text")
            m_inText = true;
        return element.name != "rPh" && element.name != "mentions";
    }
    void End(std::string_view /*space*/, std::string_view name) override {
        m_inAuthor = false;
        if (name == "comment" || name == "threadedComment")
            m_flow.Close(Block::Note);
        else if (name == "text")
            m_inText = false;
    }
    void Text(std::string_view utf8) override {
        if (m_inAuthor)
            m_authors.back() += utf8;
        else if (m_inText)
            PutSheetLines(utf8, m_flow);
    }

  private:
    [[nodiscard]] bool IsThread(const std::string& author) const {
        const int number = ToNumber(author, -1);
        return number >= 0 && static_cast<std::size_t>(number) < m_authors.size() &&
               m_authors[static_cast<std::size_t>(number)].starts_with("tc={");
    }

    Flow& m_flow;
    const bool m_hasThreads;
    std::vector<std::string> m_authors;
    bool m_inAuthor = false;
    bool m_inText = false;
};

class XlsxReading {
  public:
    XlsxReading(const Source& source, DocumentSink& sink)
        : m_package(source, sink), m_sink(sink), m_flow(sink), m_sheet(m_flow) {}

    void Run(MemberSink& attachments) {
        const std::string workbook = m_package.MainPart("xl/workbook.xml");
        m_package.ReadProperties();
        const Relationships references = m_package.RelationshipsOf(workbook);
        WorkbookParts parts;
        m_package.Parse(workbook, parts);
        m_formats.from1904 = parts.from1904;
        ReadXlsxFormats(m_package, references.FirstOf("styles"), m_formats);
        SharedTextPart shared(m_shared);
        m_package.Parse(references.FirstOf("sharedStrings"), shared);
        if (m_shared.Full())
            m_sink.Incomplete(SharedTexts::kFullReason);
        int number = 0;
        for (const SheetEntry& sheet : parts.sheets)
            Sheet(++number, sheet.name, references.TargetOf(sheet.id));
        if (parts.sheets.empty()) // a damaged workbook: its sheets may be whole
            for (const Relationship& reference : references.all)
                if (reference.type == "worksheet")
                    Sheet(++number, {}, reference.target);
        m_flow.Finish();
        DeliverEmbedded(m_package, attachments);
    }

  private:
    void Sheet(int number, const std::string& name, const std::string& part) {
        m_sheet.Begin(number, name);
        SheetText text(m_shared, m_formats, m_sheet);
        if (!m_package.Parse(part, text))
            m_sink.Incomplete("the sheet " + name + " is missing");
        const Relationships references = m_package.RelationshipsOf(part);
        const std::string threads = references.FirstOf("threadedComment");
        SheetComments comments(m_flow, m_package.Has(threads));
        m_package.Parse(references.FirstOf("comments"), comments);
        SheetComments threaded(m_flow, false);
        m_package.Parse(threads, threaded);
        ReadDrawings(m_package, references, m_flow);
        m_sheet.End();
    }

    OpenXmlPackage m_package;
    DocumentSink& m_sink;
    Flow m_flow;
    SheetFlow m_sheet;
    NumberFormats m_formats;
    SharedTexts m_shared;
};

} // namespace

void ReadXlsx(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    XlsxReading(source, sink).Run(attachments);
}

} // namespace engine
