// Text records.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/PptText.h"

#include "engine/readers/LittleEndian.h"
#include "engine/text/Utf8.h"

#include <algorithm>

namespace engine {
namespace {

enum : std::uint16_t {
    kOutlineReference = 0x0F9E,
    kHeader = 0x0F9F,
    kWideText = 0x0FA0,
    kNarrowText = 0x0FA8,
    kSlideNumber = 0x0FD8,
    kDateTime = 0x0FF7,
    kDate = 0x0FF8,
    kHeaderField = 0x0FF9,
    kFooterField = 0x0FFA,
    kFormattedDate = 0x1015,
};

char32_t CharacterAt(const std::u16string& text, std::size_t& at) {
    const char32_t unit = text[at++];
    if (unit < 0xD800 || unit >= 0xDC00 || at == text.size() || text[at] < 0xDC00 ||
        text[at] >= 0xE000)
        return unit;
    return 0x10000 + ((unit - 0xD800) << 10) + (text[at++] - char32_t{0xDC00});
}

} // namespace

bool PptTexts::Take(const OfficeRecord& record) {
    constexpr std::uint32_t kTitle = 0, kCentredTitle = 6;
    const std::string_view payload = record.payload;
    if (record.type == kHeader || record.type == kOutlineReference) {
        PptText& text = m_texts.emplace_back();
        const std::uint32_t value = U32(payload, 0);
        if (record.type == kOutlineReference)
            text.outline = value;
        else
            text.title = value == kTitle || value == kCentredTitle;
        return true;
    }
    if (record.type == kWideText || record.type == kNarrowText) {
        if (m_texts.empty() || !m_texts.back().text.empty())
            m_texts.emplace_back();
        std::u16string& text = m_texts.back().text;
        const std::size_t size = record.type == kWideText ? 2 : 1;
        text.reserve(payload.size() / size);
        for (std::size_t at = 0; at + size <= payload.size(); at += size)
            text += static_cast<char16_t>(size == 2 ? U16(payload, at) : U8(payload, at));
        return true;
    }
    if (m_texts.empty() || (record.type != kSlideNumber && record.type != kDateTime &&
                            record.type != kDate && record.type != kHeaderField &&
                            record.type != kFooterField && record.type != kFormattedDate))
        return false;
    m_texts.back().fields.push_back(U32(payload, 0));
    return true;
}

std::vector<PptText> ReadPptTexts(std::string_view payload) {
    PptTexts texts;
    ForEachRecord(payload, [&texts](const OfficeRecord& record) { texts.Take(record); });
    return std::move(texts.All());
}

void PutPptText(const PptText& text, bool mayBeTitle, Flow& flow) {
    std::vector<std::size_t> fields = text.fields;
    std::sort(fields.begin(), fields.end());
    const Block block = text.title && mayBeTitle ? Block::Heading : Block::Paragraph;
    flow.Open(block, block == Block::Heading ? 1 : 0);
    std::string line;
    const auto putLine = [&] {
        flow.Text(line);
        line.clear();
    };
    for (std::size_t at = 0; at < text.text.size();) {
        const std::size_t place = at;
        const char32_t character = CharacterAt(text.text, at);
        constexpr char32_t kParagraphEnd = 0x0D, kLineEnd = 0x0B, kFirstPlain = 0x20;
        if (character == kParagraphEnd) {
            putLine();
            flow.Close(block);
            flow.Open(block, block == Block::Heading ? 1 : 0);
        } else if (character == kLineEnd) {
            putLine();
            flow.Break();
        } else if (character == U'*' && std::binary_search(fields.begin(), fields.end(), place)) {
            continue;
        } else if (character >= kFirstPlain || character == U'\t') {
            // Private characters are places in a symbol font; they mean nothing as text.
            if (character < 0xE000 || character >= 0xF900)
                AppendUtf8(line, character);
        }
    }
    putLine();
    flow.Close(block);
}

} // namespace engine
