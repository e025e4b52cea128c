// Cells, notes, text boxes and charts of old binary workbooks.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/XlsSheet.h"

#include "engine/readers/LittleEndian.h"

#include <utility>

namespace engine {
namespace {

constexpr std::size_t kMaxSheets = 65'535;

std::string BoolOrError(std::uint8_t value, bool isError) {
    return isError ? std::string(SheetError(value)) : value != 0 ? "TRUE" : "FALSE";
}

} // namespace

// ---- The workbook

std::string XlsBook::Text(BiffCursor& cursor, std::uint32_t count) const {
    if (version == 8) {
        std::string text;
        cursor.Unicode(count, text);
        return text;
    }
    return DecodeCodePage(cursor.Bytes(count), m_codePage);
}

std::string XlsBook::ShortText(BiffCursor& cursor) const {
    const std::uint32_t count = cursor.Byte();
    return Text(cursor, count);
}

std::string XlsBook::LongText(BiffCursor& cursor) const {
    const std::uint32_t count = cursor.Short();
    return Text(cursor, count);
}

void XlsBook::Take(const BiffRecord& record) {
    switch (record.type) {
    case Biff::CodePage:
        m_codePage = U16(record.data, 0);
        break;
    case Biff::Date1904:
        m_formats.from1904 = m_bareFormats.from1904 = U16(record.data, 0) == 1;
        break;
    case Biff::Format2:
    case Biff::Format:
        TakeFormat(record);
        break;
    case Biff::Xf2:
        m_formats.AddStyle(U8(record.data, 2) & 0x3F);
        m_hasStyles = true;
        break;
    case Biff::Xf3:
    case Biff::Xf4:
        m_formats.AddStyle(U8(record.data, 1));
        break;
    case Biff::Xf:
        m_formats.AddStyle(U16(record.data, 2));
        break;
    case Biff::BoundSheet:
        TakeSheet(record);
        break;
    case Biff::SharedStrings:
        TakeSharedTexts(record);
        break;
    default:
        break;
    }
}

// Before version 5 formats are known by their order.
void XlsBook::TakeFormat(const BiffRecord& record) {
    BiffCursor cursor(record);
    const int number = record.type == Biff::Format ? cursor.Short() : 0;
    const std::string code = version == 8 ? LongText(cursor) : ShortText(cursor);
    const int format = version < 5 ? m_formatCount : number;
    m_formats.Define(format, code);
    if (version < 5) {
        m_bareFormats.Define(format, code);
        m_bareFormats.AddStyle(format);
    }
    ++m_formatCount;
}

void XlsBook::TakeSheet(const BiffRecord& record) {
    constexpr std::uint8_t kModule = 6;
    if (sheets.size() >= kMaxSheets)
        return;
    BiffCursor cursor(record);
    Sheet sheet;
    sheet.at = cursor.Long();
    cursor.Skip(1); // hidden or not
    sheet.program = cursor.Byte() == kModule;
    sheet.name = ShortText(cursor);
    sheets.push_back(std::move(sheet));
}

void XlsBook::TakeSharedTexts(const BiffRecord& record) {
    BiffCursor cursor(record);
    cursor.Skip(4); // how often they are used
    std::string text;
    for (std::uint32_t left = cursor.Long(); left > 0 && !cursor.AtEnd(); --left) {
        const std::uint32_t count = cursor.Short();
        text.clear();
        cursor.Unicode(count, text);
        shared.Begin();
        shared.Append(text);
    }
}

std::string XlsBook::Show(double number, const BiffRecord& cell) const {
    if (version != 2)
        return m_formats.Show(number, U16(cell.data, 4));
    constexpr int kTooLarge = 0x3F;
    if (!m_hasStyles)
        return m_bareFormats.Show(number, U8(cell.data, 5) & 0x3F);
    const int style = U8(cell.data, 4) & 0x3F;
    return m_formats.Show(number, style == kTooLarge ? m_styleOfCell : style);
}

// ---- A sheet

std::size_t XlsSheet::Read(BiffReader& records) {
    BiffRecord record;
    std::size_t end = 0;
    while (records.Next(record)) {
        end = record.at + record.data.size();
        if (record.type == Biff::Eof) {
            if (m_depth == m_chartDepth)
                m_chartDepth = 0;
            if (--m_depth <= 0)
                break;
        } else if (IsBof(record.type)) {
            constexpr std::uint16_t kChart = 0x0020;
            ++m_depth;
            if (m_chartDepth == 0 && U16(record.data, 2) == kChart)
                m_chartDepth = m_depth;
        } else if (m_chartDepth > 0) {
            TakeChartRecord(record);
        } else {
            Take(record);
        }
    }
    m_flow.EndTable();
    PutAround();
    return end;
}

void XlsSheet::Take(const BiffRecord& record) {
    switch (record.type) {
    case Biff::Integer2:
    case Biff::Number2:
    case Biff::Number:
    case Biff::Rk:
    case Biff::MulRk:
        return TakeNumbers(record);
    case Biff::Label2:
    case Biff::Label:
    case Biff::RString:
        return Put(record, LabelText(record));
    case Biff::LabelShared:
        return Put(record, m_book.shared.At(U32(record.data, 6)));
    case Biff::BoolError2:
    case Biff::BoolError:
        return Put(record,
                   BoolOrError(U8(record.data, ValueAt()), U8(record.data, ValueAt() + 1) != 0));
    case Biff::Formula2:
    case Biff::Formula3:
    case Biff::Formula4:
        return TakeFormula(record);
    case Biff::String2:
    case Biff::String:
        if (m_awaitsText) {
            BiffCursor cursor(record);
            Put(m_formulaRow, m_formulaColumn,
                m_book.version == 2 ? m_book.ShortText(cursor) : m_book.LongText(cursor));
            m_awaitsText = false;
        }
        return;
    case Biff::StyleOfCell2:
        return m_book.SetStyleOfCell(U16(record.data, 0));
    case Biff::Note:
        return TakeNote(record);
    case Biff::Object: {
        constexpr std::uint16_t kCommon = 0x15, kNote = 0x19;
        m_objectIsNote = U16(record.data, 0) == kCommon && U16(record.data, 4) == kNote;
        return;
    }
    case Biff::TextObject:
        return TakeTextObject(record);
    case Biff::Header:
    case Biff::Footer:
    case Biff::MoreMargins:
        return TakeMargins(record);
    default:
        if (m_book.version < 5) // there the sheet is the workbook
            m_book.Take(record);
        return;
    }
}

// A chart keeps the words of the cells that it shows.
void XlsSheet::TakeChartRecord(const BiffRecord& record) {
    std::string word;
    if (record.type == Biff::SeriesText) {
        BiffCursor cursor(record);
        cursor.Skip(2);
        word = m_book.ShortText(cursor);
    } else if (record.type == Biff::Label) {
        word = LabelText(record);
    } else if (record.type == Biff::TextObject) {
        TakeTextObject(record);
    } else if (record.type == Biff::Header || record.type == Biff::Footer) {
        if (m_depth == 1) // of a sheet that is a chart
            TakeMargins(record);
    }
    if (!word.empty() && m_seenWords.insert(word).second)
        m_chartWords.push_back(std::move(word));
}

std::string XlsSheet::LabelText(const BiffRecord& record) const {
    BiffCursor cursor(record);
    cursor.Skip(ValueAt());
    return m_book.version == 2 ? m_book.ShortText(cursor) : m_book.LongText(cursor);
}

void XlsSheet::TakeNumbers(const BiffRecord& record) {
    const std::string_view data = record.data;
    if (record.type == Biff::MulRk) {
        // Row, first column, pairs of style and number, last column.
        constexpr std::size_t kPair = 6;
        const unsigned row = U16(data, 0);
        unsigned column = U16(data, 2);
        for (std::size_t at = 4; at + kPair + 2 <= data.size(); at += kPair, ++column) {
            BiffRecord cell;
            cell.data = data.substr(at - 4); // its style stands where that of a single cell does
            Put(row, column, m_book.Show(DecodeRk(U32(data, at + 2)), cell));
        }
        return;
    }
    double number = 0;
    if (record.type == Biff::Rk)
        number = DecodeRk(U32(data, ValueAt()));
    else if (record.type == Biff::Integer2)
        number = U16(data, ValueAt());
    else
        number = DecodeDouble(data, ValueAt());
    Put(record, m_book.Show(number, record));
}

void XlsSheet::TakeFormula(const BiffRecord& record) {
    const std::size_t at = ValueAt();
    m_awaitsText = false;
    if (U16(record.data, at + 6) != 0xFFFF)
        return Put(record, m_book.Show(DecodeDouble(record.data, at), record));
    enum : std::uint8_t { kText = 0, kBool = 1, kError = 2 };
    const std::uint8_t kind = U8(record.data, at);
    if (kind == kText) {
        m_formulaRow = U16(record.data, 0);
        m_formulaColumn = U16(record.data, 2);
        m_awaitsText = true;
    } else if (kind == kBool || kind == kError) {
        Put(record, BoolOrError(U8(record.data, at + 2), kind == kError));
    }
}

// From version 8 on the note's text comes with an object.
void XlsSheet::TakeNote(const BiffRecord& record) {
    if (m_book.version == 8)
        return;
    constexpr std::uint16_t kGoesOn = 0xFFFF;
    BiffCursor cursor(record);
    const bool goesOn = cursor.Short() == kGoesOn && !m_notes.empty();
    cursor.Skip(2);
    const std::string text = m_book.LongText(cursor);
    if (goesOn)
        m_notes.back() += text;
    else
        m_notes.push_back(text);
}

void XlsSheet::TakeTextObject(const BiffRecord& record) {
    const std::uint32_t count = U16(record.data, 10);
    if (m_book.version != 8 || count == 0)
        return;
    BiffCursor cursor(record, 1);
    const bool wide = (cursor.Byte() & 1) != 0;
    std::string text;
    cursor.Characters(count, wide, text);
    (m_objectIsNote ? m_notes : m_boxes).push_back(std::move(text));
    m_objectIsNote = false;
}

void XlsSheet::TakeMargins(const BiffRecord& record) {
    BiffCursor cursor(record);
    if (record.type != Biff::MoreMargins) {
        m_margins.push_back(m_book.version == 8 ? m_book.LongText(cursor)
                                                : m_book.ShortText(cursor));
        return;
    }
    constexpr std::size_t kLengthsAt = 30;
    constexpr int kKinds = 4;
    cursor.Skip(kLengthsAt + std::size_t{2} * kKinds);
    for (int i = 0; i < kKinds; ++i)
        if (U16(record.data, kLengthsAt + std::size_t{2} * static_cast<std::size_t>(i)) != 0)
            m_margins.push_back(m_book.LongText(cursor));
}

void XlsSheet::Put(const BiffRecord& record, std::string_view text) {
    Put(U16(record.data, 0), U16(record.data, 2), text);
}

void XlsSheet::Put(unsigned row, unsigned column, std::string_view text) {
    if (row != m_row)
        m_flow.NewRow();
    m_row = row;
    m_flow.Cell(static_cast<int>(column) + 1, text);
}

void XlsSheet::PutAround() {
    for (const std::string& margin : m_margins)
        m_flow.Margin(margin);
    for (const std::string& note : m_notes)
        m_flow.Note(note);
    for (const std::string& box : m_boxes)
        m_flow.TextBox(box);
    for (const std::string& word : m_chartWords)
        m_flow.TextBox(word);
}

} // namespace engine
