// The records of old binary workbooks (BIFF), and the texts within them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

// Types of records. Those of the versions before the fifth differ in their upper byte.
enum class Biff : std::uint16_t {
    Integer2 = 0x0002,
    Number2 = 0x0003,
    Label2 = 0x0004,
    BoolError2 = 0x0005,
    Formula2 = 0x0006, // of versions 2, 5 and later
    String2 = 0x0007,
    Bof2 = 0x0009,
    Eof = 0x000A,
    Header = 0x0014,
    Footer = 0x0015,
    Note = 0x001C,
    Format2 = 0x001E,
    Date1904 = 0x0022,
    FilePass = 0x002F,
    Continue = 0x003C,
    CodePage = 0x0042,
    Xf2 = 0x0043,
    StyleOfCell2 = 0x0044,
    Object = 0x005D,
    BoundSheet = 0x0085,
    SheetHeader4 = 0x008F, // a sheet's name in a workbook of version 4
    MulRk = 0x00BD,
    RString = 0x00D6,
    Xf = 0x00E0,
    SharedStrings = 0x00FC,
    LabelShared = 0x00FD,
    TextObject = 0x01B6,
    Number = 0x0203,
    Label = 0x0204,
    BoolError = 0x0205,
    Formula3 = 0x0206,
    String = 0x0207,
    Bof3 = 0x0209,
    Xf3 = 0x0243,
    Rk = 0x027E,
    Formula4 = 0x0406,
    Bof4 = 0x0409,
    Format = 0x041E,
    Xf4 = 0x0443,
    Bof = 0x0809,
    MoreMargins = 0x089C, // headers and footers of first and even pages
    SeriesText = 0x100D,  // of a chart
};

// A record with the CONTINUE records behind it.
struct BiffRecord {
    Biff type{};
    std::size_t at = 0;                   // place of its header in the stream
    std::string_view data;                // without what continues it
    std::vector<std::string_view> pieces; // data, and the data of each CONTINUE
};

[[nodiscard]] constexpr bool IsBof(Biff type) {
    return type == Biff::Bof || type == Biff::Bof2 || type == Biff::Bof3 || type == Biff::Bof4;
}
// The version that a stream's first record tells: 2, 3, 4, 5 (also for 7) or 8; 0: no workbook.
[[nodiscard]] int BiffVersion(std::string_view stream);

class BiffReader {
  public:
    explicit BiffReader(std::string_view stream, std::size_t at = 0) : m_stream(stream), m_at(at) {}
    // false: the stream is over, or a record has no room in it.
    [[nodiscard]] bool Next(BiffRecord& record);
    // Whether the stream ended within a record.
    [[nodiscard]] bool Broken() const { return m_broken; }

  private:
    // The data of the record at m_at, which is moved behind it.
    [[nodiscard]] bool Take(Biff& type, std::string_view& data);

    std::string_view m_stream;
    std::size_t m_at;
    bool m_broken = false;
};

// Reads through a record and what continues it. Numbers and texts may lie across the joints.
// Behind the end everything is 0 and empty.
class BiffCursor {
  public:
    // piece: where to begin in record.
    explicit BiffCursor(const BiffRecord& record, std::size_t piece = 0)
        : m_record(record), m_piece(piece) {}

    [[nodiscard]] std::uint8_t Byte();
    [[nodiscard]] std::uint16_t Short();
    [[nodiscard]] std::uint32_t Long();
    void Skip(std::uint64_t bytes);
    [[nodiscard]] bool AtEnd();
    // Fewer where the record ends.
    [[nodiscard]] std::string Bytes(std::size_t count);

    // A text of version 8, appended to text as UTF-8: a byte of flags, then count characters, then
    // formatting and readings, which are passed over.
    void Unicode(std::uint32_t count, std::string& text);
    // Characters alone, whose flags say wide or not; a CONTINUE begins with flags of its own.
    void Characters(std::uint32_t count, bool wide, std::string& text);

  private:
    [[nodiscard]] std::string_view Rest();

    const BiffRecord& m_record;
    std::size_t m_piece;
    std::size_t m_at = 0; // within the piece
};

// A number in the short form: an integer or the upper bits of a floating one, maybe times 100.
[[nodiscard]] double DecodeRk(std::uint32_t rk);
[[nodiscard]] double DecodeDouble(std::string_view bytes, std::size_t at);

} // namespace engine
