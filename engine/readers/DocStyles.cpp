// Style sheets and tables of lists.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/DocStyles.h"

#include "engine/readers/LittleEndian.h"

#include <algorithm>

namespace engine {
namespace {

constexpr std::uint16_t kNoStyle = 0xFFF;
constexpr std::uint16_t kHeadings = 9; // the built-in styles 1 to 9
constexpr std::uint16_t kTitle = 62;   // built-in too
constexpr std::uint8_t kBullet = 23, kNothing = 255;

// What a style says of its paragraphs' outline by being a heading.
std::int16_t OutlineOf(std::uint16_t builtIn) {
    if (builtIn >= 1 && builtIn <= kHeadings)
        return static_cast<std::int16_t>(builtIn - 1);
    return builtIn == kTitle ? std::int16_t{0} : std::int16_t{-1};
}

void Inherit(std::int16_t& value, std::int16_t from) {
    if (value < 0)
        value = from;
}

} // namespace

DocStyles::DocStyles(const DocHeader& header, std::string_view tables, const DocFormats& formats) {
    if (header.age == DocAge::Old)
        return;
    const DocHeader::Place place = header.PlaceOf(DocTable::Styles);
    ReadStyles(Slice(tables, place.at, place.size), formats);
    if (header.age == DocAge::New)
        ReadLists(header, tables);
}

void DocStyles::ReadStyles(std::string_view sheet, const DocFormats& formats) {
    const std::size_t base = U16(sheet, 4); // size of what a style begins with
    const std::size_t count = U16(sheet, 2);
    sheet = Slice(sheet, 2 + std::size_t{U16(sheet, 0)});
    for (std::size_t i = 0; i < count && sheet.size() >= 2; ++i) {
        const std::size_t size = U16(sheet, 0);
        const std::string_view entry = Slice(sheet, 2, size);
        sheet = Slice(sheet, 2 + size + size % 2);
        Style& style = m_styles.emplace_back();
        if (entry.size() < 8)
            continue;
        const unsigned kind = U16(entry, 2) & 0xF, changes = U16(entry, 4) & 0xF;
        style.basedOn = U16(entry, 2) >> 4;
        style.form.outline = OutlineOf(U16(entry, 0) & 0xFFF);
        constexpr unsigned kParagraph = 1;
        if (kind != kParagraph || changes == 0)
            continue;
        // Behind the name: in characters of two bytes, or of one in old documents.
        const bool wide = base > 8;
        const std::size_t name = wide ? U16(entry, base) : U8(entry, base);
        std::size_t at = base + (wide ? 2 + (name + 1) * 2 : 1 + name + 1);
        at += at % 2;
        const std::string_view change = Slice(entry, at + 2, U16(entry, at));
        formats.Apply(Slice(change, 2), style.form);
    }
}

// The levels of all lists follow behind the table of the lists.
void DocStyles::ReadLists(const DocHeader& header, std::string_view tables) {
    constexpr std::size_t kList = 28, kLevel = 28, kUse = 16;
    const DocHeader::Place uses = header.PlaceOf(DocTable::ListUses);
    const std::string_view useTable = Slice(tables, uses.at, uses.size);
    for (std::size_t i = 0; i < U32(useTable, 0) && 4 + (i + 1) * kUse <= useTable.size(); ++i)
        m_uses.push_back(U32(useTable, 4 + i * kUse));

    const DocHeader::Place place = header.PlaceOf(DocTable::Lists);
    const std::string_view lists = Slice(tables, place.at, place.size);
    const std::size_t count =
        std::min<std::size_t>(U16(lists, 0), lists.size() < 2 ? 0 : (lists.size() - 2) / kList);
    std::string_view levels = Slice(tables, std::uint64_t{place.at} + 2 + count * kList);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string_view list = Slice(lists, 2 + i * kList, kList);
        constexpr std::size_t kLevels = 9;
        const bool simple = (U8(list, 26) & 1) != 0;
        std::vector<std::uint8_t>& kinds = m_lists[U32(list, 0)];
        kinds.clear();
        for (std::size_t level = 0; level < (simple ? 1 : kLevels) && !levels.empty(); ++level) {
            kinds.push_back(U8(levels, 4));
            const std::size_t text =
                kLevel + std::size_t{U8(levels, 24)} + std::size_t{U8(levels, 25)};
            levels = Slice(levels, text + 2 + std::size_t{U16(levels, text)} * 2);
        }
    }
}

DocParagraphForm DocStyles::Resolve(DocParagraphForm form) const {
    constexpr int kLongestChain = 32;
    std::uint16_t number = form.style;
    for (int i = 0; i < kLongestChain && number != kNoStyle; ++i) {
        if (number >= m_styles.size()) {
            // Without its sheet, the number tells the built-in styles all the same.
            if (number >= 1 && number <= kHeadings)
                Inherit(form.outline, OutlineOf(number));
            break;
        }
        const Style& style = m_styles[number];
        Inherit(form.outline, style.form.outline);
        Inherit(form.list, style.form.list);
        Inherit(form.listLevel, style.form.listLevel);
        number = style.basedOn;
    }
    return form;
}

bool DocStyles::IsNumbered(int list, int level) const {
    const auto index = static_cast<std::size_t>(list - 1);
    if (list < 1 || index >= m_uses.size())
        return false;
    const auto found = m_lists.find(m_uses[index]);
    if (found == m_lists.end() || found->second.empty())
        return false;
    const auto& kinds = found->second;
    const std::uint8_t kind =
        kinds[std::min(kinds.size() - 1, static_cast<std::size_t>(std::max(level, 0)))];
    return kind != kBullet && kind != kNothing;
}

} // namespace engine
