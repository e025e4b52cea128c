// Reads XLSB: workbooks whose parts are binary records instead of XML.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/BiffRecords.h"
#include "engine/readers/CodePage.h"
#include "engine/readers/Embedded.h"
#include "engine/readers/LittleEndian.h"
#include "engine/readers/NumberFormats.h"
#include "engine/readers/OpenXml.h"
#include "engine/readers/Reader.h"
#include "engine/readers/SharedTexts.h"
#include "engine/readers/SheetFlow.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace engine {
namespace {

enum class Brt : std::uint32_t {
    Row = 0,
    CellRk = 2,
    CellError = 3,
    CellBool = 4,
    CellReal = 5,
    CellText = 6,
    CellShared = 7,
    FormulaText = 8,
    FormulaReal = 9,
    FormulaBool = 10,
    FormulaError = 11,
    SharedText = 19,
    Format = 44,
    Style = 47,
    CellRichText = 62,
    EndSheetData = 146,
    WorkbookProperties = 153,
    Sheet = 156,
    HeaderFooter = 479,
    BeginCellStyles = 617,
    EndCellStyles = 618,
    CommentText = 637,
};

// Cuts the pieces of a part into records: a type and a length, each in up to four bytes of seven
// bits, then data.
class BrtRecords {
  public:
    using TakeRecord = std::function<void(Brt type, std::string_view data)>;
    explicit BrtRecords(TakeRecord take) : m_take(std::move(take)) {}

    void Feed(std::string_view piece) {
        m_left += piece;
        std::size_t at = 0, begin = 0;
        std::uint32_t type = 0, length = 0;
        // The second byte of a type has all of its eight bits.
        while (Number(at, 2, type) && Number(at, 4, length) && length <= m_left.size() - at) {
            m_take(static_cast<Brt>(type), std::string_view(m_left).substr(at, length));
            at += length;
            begin = at;
        }
        m_left.erase(0, begin);
    }
    // Whether the part ended within a record.
    [[nodiscard]] bool Broken() const { return !m_left.empty(); }

  private:
    bool Number(std::size_t& at, int most, std::uint32_t& value) const {
        value = 0;
        for (int i = 0; i < most; ++i) {
            if (at >= m_left.size())
                return false;
            const auto byte = static_cast<std::uint8_t>(m_left[at++]);
            value |= std::uint32_t{byte & 0x7FU} << (7 * i);
            if (byte < 0x80)
                break;
        }
        return true;
    }

    TakeRecord m_take;
    std::string m_left; // of the record that is not whole yet
};

// A text with its length in front at at, which is moved behind it. A length of all ones: none.
std::string TakeText(std::string_view data, std::size_t& at) {
    constexpr std::uint32_t kNone = 0xFFFFFFFF;
    const std::uint32_t length = U32(data, at);
    at += 4;
    if (length == kNone)
        return {};
    std::string text;
    const std::string_view utf16 = Slice(data, at, std::uint64_t{length} * 2);
    AppendUtf16(text, utf16);
    at += utf16.size();
    return text;
}

std::string TextAt(std::string_view data, std::size_t at) {
    return TakeText(data, at);
}

class XlsbReading {
  public:
    XlsbReading(const Source& source, DocumentSink& sink)
        : m_package(source, sink), m_flow(sink), m_sheet(m_flow) {}

    void Run(MemberSink& attachments);

  private:
    struct SheetEntry {
        std::string name, id;
    };
    bool Read(const std::string& part, const BrtRecords::TakeRecord& take);
    void ReadWorkbook(const std::string& part);
    void ReadStyles(const std::string& part);
    void ReadSheet(const SheetEntry& entry, const std::string& part);
    void TakeSheetRecord(Brt type, std::string_view data);
    [[nodiscard]] std::string ShownCell(Brt type, std::string_view data) const;
    void PutMargins(std::string_view data);

    OpenXmlPackage m_package;
    Flow m_flow;
    SheetFlow m_sheet;
    NumberFormats m_formats;
    SharedTexts m_shared;
    std::vector<SheetEntry> m_sheets;
    int m_number = 0;
};

// false: there is no such part.
bool XlsbReading::Read(const std::string& part, const BrtRecords::TakeRecord& take) {
    BrtRecords records(take);
    if (!m_package.Unpack(part, [&](std::string_view piece) { records.Feed(piece); }))
        return false;
    if (records.Broken())
        m_package.Sink().Incomplete(part + " ends too early");
    return true;
}

void XlsbReading::ReadWorkbook(const std::string& part) {
    Read(part, [this](Brt type, std::string_view data) {
        if (type == Brt::WorkbookProperties) {
            m_formats.from1904 = (U32(data, 0) & 1) != 0;
        } else if (type == Brt::Sheet) {
            SheetEntry entry;
            std::size_t at = 8;
            entry.id = TakeText(data, at);
            entry.name = TakeText(data, at);
            m_sheets.push_back(std::move(entry));
        }
    });
}

void XlsbReading::ReadStyles(const std::string& part) {
    bool inCells = false;
    Read(part, [&](Brt type, std::string_view data) {
        if (type == Brt::Format)
            m_formats.Define(U16(data, 0), TextAt(data, 2));
        else if (type == Brt::BeginCellStyles || type == Brt::EndCellStyles)
            inCells = type == Brt::BeginCellStyles;
        else if (type == Brt::Style && inCells)
            m_formats.AddStyle(U16(data, 2));
    });
}

// A cell begins with its column and its style.
std::string XlsbReading::ShownCell(Brt type, std::string_view data) const {
    constexpr std::size_t kValueAt = 8;
    const int style = static_cast<int>(U32(data, 4) & 0xFFFFFF);
    switch (type) {
    case Brt::CellRk:
        return m_formats.Show(DecodeRk(U32(data, kValueAt)), style);
    case Brt::CellReal:
    case Brt::FormulaReal:
        return m_formats.Show(DecodeDouble(data, kValueAt), style);
    case Brt::CellBool:
    case Brt::FormulaBool:
        return U8(data, kValueAt) != 0 ? "TRUE" : "FALSE";
    case Brt::CellError:
    case Brt::FormulaError:
        return std::string(SheetError(U8(data, kValueAt)));
    case Brt::CellText:
    case Brt::FormulaText:
        return TextAt(data, kValueAt);
    case Brt::CellRichText:
        return TextAt(data, kValueAt + 1);
    case Brt::CellShared:
        return std::string(m_shared.At(U32(data, kValueAt)));
    default:
        return {};
    }
}

void XlsbReading::PutMargins(std::string_view data) {
    std::size_t at = 2;
    constexpr int kKinds = 6; // header and footer of odd, even and first pages
    for (int i = 0; i < kKinds; ++i)
        m_sheet.Margin(TakeText(data, at));
}

void XlsbReading::TakeSheetRecord(Brt type, std::string_view data) {
    if (type == Brt::Row)
        m_sheet.NewRow();
    else if (type == Brt::EndSheetData)
        m_sheet.EndTable();
    else if (type == Brt::HeaderFooter)
        PutMargins(data);
    else if (type <= Brt::FormulaError || type == Brt::CellRichText)
        m_sheet.Cell(static_cast<int>(U32(data, 0) & 0xFFFF) + 1, ShownCell(type, data));
}

void XlsbReading::ReadSheet(const SheetEntry& entry, const std::string& part) {
    m_sheet.Begin(++m_number, entry.name);
    if (!Read(part, [this](Brt type, std::string_view data) { TakeSheetRecord(type, data); }))
        m_package.Sink().Incomplete("the sheet " + entry.name + " is missing");
    m_sheet.EndTable();
    const Relationships references = m_package.RelationshipsOf(part);
    Read(references.FirstOf("comments"), [this](Brt type, std::string_view data) {
        if (type == Brt::CommentText)
            m_sheet.Note(TextAt(data, 1));
    });
    ReadDrawings(m_package, references, m_flow);
    m_sheet.End();
}

void XlsbReading::Run(MemberSink& attachments) {
    const std::string workbook = m_package.MainPart("xl/workbook.bin");
    m_package.ReadProperties();
    const Relationships references = m_package.RelationshipsOf(workbook);
    ReadWorkbook(workbook);
    ReadStyles(references.FirstOf("styles"));
    Read(references.FirstOf("sharedStrings"), [this](Brt type, std::string_view data) {
        if (type != Brt::SharedText)
            return;
        m_shared.Begin();
        m_shared.Append(TextAt(data, 1));
    });
    if (m_shared.Full())
        m_package.Sink().Incomplete(SharedTexts::kFullReason);
    for (const SheetEntry& entry : m_sheets)
        ReadSheet(entry, references.TargetOf(entry.id));
    if (m_sheets.empty()) // a damaged workbook: its sheets may be whole
        for (const Relationship& reference : references.all)
            if (reference.type == "worksheet")
                ReadSheet({}, reference.target);
    m_flow.Finish();
    DeliverEmbedded(m_package, attachments);
}

} // namespace

void ReadXlsb(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    XlsbReading(source, sink).Run(attachments);
}

} // namespace engine
