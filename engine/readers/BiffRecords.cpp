// Records, their continuations, their texts.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/BiffRecords.h"

#include "engine/readers/CodePage.h"
#include "engine/readers/LittleEndian.h"
#include "engine/text/Utf8.h"

#include <algorithm>
#include <bit>

namespace engine {
namespace {

constexpr std::size_t kHeaderSize = 4;

// Characters of one byte each are the first 256 of Unicode.
void AppendLatin1(std::string& text, std::string_view bytes) {
    for (const char c : bytes)
        AppendUtf8(text, static_cast<unsigned char>(c));
}

} // namespace

int BiffVersion(std::string_view stream) {
    const std::uint16_t type = U16(stream, 0), length = U16(stream, 2);
    const std::uint16_t substream = U16(stream, 6);
    const bool known = substream == 0x0005 || substream == 0x0010 || substream == 0x0020 ||
                       substream == 0x0040 || substream == 0x0100;
    if (!known || length < kHeaderSize || length > 20 || stream.size() < kHeaderSize + length)
        return 0;
    switch (type) {
    case 0x0009:
        return 2;
    case 0x0209:
        return 3;
    case 0x0409:
        return 4;
    case 0x0809:
        return U16(stream, 4) >= 0x0600 ? 8 : 5;
    default:
        return 0;
    }
}

bool BiffReader::Take(Biff& type, std::string_view& data) {
    if (m_at + kHeaderSize > m_stream.size()) {
        m_broken = m_broken || m_at < m_stream.size();
        return false;
    }
    type = static_cast<Biff>(U16(m_stream, m_at));
    const std::size_t length = U16(m_stream, m_at + 2);
    data = Slice(m_stream, m_at + kHeaderSize, length);
    m_at += kHeaderSize + data.size();
    m_broken = m_broken || data.size() < length;
    return true; // what there is of the last record counts
}

bool BiffReader::Next(BiffRecord& record) {
    record.pieces.clear();
    record.at = m_at;
    if (!Take(record.type, record.data))
        return false;
    record.pieces.push_back(record.data);
    while (m_at + kHeaderSize <= m_stream.size() &&
           static_cast<Biff>(U16(m_stream, m_at)) == Biff::Continue) {
        Biff type;
        std::string_view more;
        if (!Take(type, more))
            break;
        record.pieces.push_back(more);
    }
    return true;
}

std::string_view BiffCursor::Rest() {
    while (m_piece < m_record.pieces.size() && m_at >= m_record.pieces[m_piece].size()) {
        ++m_piece;
        m_at = 0;
    }
    return m_piece < m_record.pieces.size() ? m_record.pieces[m_piece].substr(m_at)
                                            : std::string_view();
}

bool BiffCursor::AtEnd() {
    return Rest().empty();
}

std::uint8_t BiffCursor::Byte() {
    const std::string_view rest = Rest();
    if (rest.empty())
        return 0;
    ++m_at;
    return static_cast<std::uint8_t>(rest.front());
}

std::uint16_t BiffCursor::Short() {
    const unsigned low = Byte();
    return static_cast<std::uint16_t>(low | static_cast<unsigned>(Byte()) << 8);
}

std::uint32_t BiffCursor::Long() {
    const std::uint32_t low = Short();
    return low | std::uint32_t{Short()} << 16;
}

void BiffCursor::Skip(std::uint64_t bytes) {
    while (bytes > 0) {
        const std::size_t left = Rest().size();
        if (left == 0)
            return;
        const auto step = static_cast<std::size_t>(std::min<std::uint64_t>(bytes, left));
        m_at += step;
        bytes -= step;
    }
}

std::string BiffCursor::Bytes(std::size_t count) {
    std::string bytes;
    while (bytes.size() < count) {
        const std::string_view piece = Rest().substr(0, count - bytes.size());
        if (piece.empty())
            break;
        m_at += piece.size();
        bytes += piece;
    }
    return bytes;
}

void BiffCursor::Unicode(std::uint32_t count, std::string& text) {
    enum : std::uint8_t { kWide = 1, kReadings = 4, kFormatted = 8 };
    const std::uint8_t flags = Byte();
    const std::uint64_t runs = (flags & kFormatted) != 0 ? Short() : 0;
    const std::uint64_t readings = (flags & kReadings) != 0 ? Long() : 0;
    Characters(count, (flags & kWide) != 0, text);
    Skip(runs * 4 + readings);
}

void BiffCursor::Characters(std::uint32_t count, bool wide, std::string& text) {
    std::string utf16; // a character may lie across a joint
    const auto flush = [&] {
        AppendUtf16(text, utf16);
        utf16.clear();
    };
    while (count > 0) {
        const std::size_t before = m_piece;
        const std::string_view rest = Rest();
        if (rest.empty())
            break;
        if (m_piece != before) {
            wide = (Byte() & 1) != 0;
            continue;
        }
        const std::size_t width = wide ? 2 : 1;
        const std::size_t taken = std::min<std::size_t>(count, rest.size() / width);
        if (wide) {
            utf16 += rest.substr(0, taken * 2);
        } else {
            flush();
            AppendLatin1(text, rest.substr(0, taken));
        }
        // Half a character at the end of a piece is damage.
        m_at += taken == 0 ? rest.size() : taken * width;
        count -= static_cast<std::uint32_t>(taken);
    }
    flush();
}

double DecodeRk(std::uint32_t rk) {
    const bool hundredth = (rk & 1) != 0, integer = (rk & 2) != 0;
    const double value = integer ? static_cast<std::int32_t>(rk) >> 2
                                 : std::bit_cast<double>(std::uint64_t{rk & ~3U} << 32);
    return hundredth ? value / 100 : value;
}

double DecodeDouble(std::string_view bytes, std::size_t at) {
    return std::bit_cast<double>(U64(bytes, at));
}

} // namespace engine
