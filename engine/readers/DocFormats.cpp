// Pages of formats: each tells the runs of some part of the document's stream.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/DocFormats.h"

#include "engine/readers/LittleEndian.h"

#include <algorithm>

namespace engine {
namespace {

constexpr std::size_t kPage = 512;
constexpr std::size_t kCountAt = 511; // of the runs of a page

// Runs that overlap are damage; the first one that holds a place counts.
template <typename Run> const Run* FindRun(const std::vector<Run>& runs, std::uint32_t at) {
    const auto behind =
        std::upper_bound(runs.begin(), runs.end(), at,
                         [](std::uint32_t place, const Run& run) { return place < run.begin; });
    if (behind == runs.begin())
        return nullptr;
    const Run& run = *(behind - 1);
    return at < run.end ? &run : nullptr;
}

template <typename Run> void SortRuns(std::vector<Run>& runs) {
    std::stable_sort(runs.begin(), runs.end(),
                     [](const Run& a, const Run& b) { return a.begin < b.begin; });
}

} // namespace

void DocParagraphForm::Apply(DocSprm what, std::string_view value) {
    constexpr std::int32_t kDeepest = 100;
    const auto number = static_cast<std::int16_t>(value.size() > 1 ? U16(value, 0) : U8(value, 0));
    switch (what) {
    case DocSprm::Style:
        style = U16(value, 0);
        break;
    case DocSprm::InTable:
        if (number != 0)
            depth = std::max<std::int16_t>(depth, 1);
        break;
    case DocSprm::TableDepth:
        depth = static_cast<std::int16_t>(
            std::clamp(static_cast<std::int32_t>(U32(value, 0)), 0, kDeepest));
        break;
    case DocSprm::RowEnd:
    case DocSprm::InnerRowEnd:
        rowEnd = number != 0;
        break;
    case DocSprm::InnerCell:
        cellEnd = number != 0;
        break;
    case DocSprm::Outline:
        outline = number;
        break;
    case DocSprm::List:
        list = number;
        break;
    case DocSprm::ListLevel:
        listLevel = number;
        break;
    default:
        break;
    }
}

void DocCharacterForm::Apply(DocSprm what, std::string_view value) {
    switch (what) {
    case DocSprm::Deleted:
        deleted = U8(value, 0) == 1;
        break;
    case DocSprm::Symbol:
        symbol = static_cast<char16_t>(U16(value, 2));
        break;
    case DocSprm::Picture:
        picture = static_cast<std::int32_t>(U32(value, 0) & 0x7FFFFFFF);
        break;
    case DocSprm::Font:
        font = U16(value, 0);
        break;
    default:
        break;
    }
}

DocFormats::DocFormats(const DocHeader& header, std::string_view tables, std::string_view data)
    : m_header(header), m_data(data) {
    if (header.age == DocAge::Old) // these have no changes but whole records
        return;
    ReadPages(tables, true);
    ReadPages(tables, false);
    SortRuns(m_paragraphs);
    SortRuns(m_characters);
}

void DocFormats::ReadPages(std::string_view tables, bool paragraphs) {
    const DocHeader::Place place =
        m_header.PlaceOf(paragraphs ? DocTable::ParagraphPages : DocTable::CharacterPages);
    const std::string_view list = Slice(tables, place.at, place.size);
    const std::size_t number = m_header.age == DocAge::New ? 4 : 2;
    const std::size_t count = list.size() < 4 ? 0 : (list.size() - 4) / (4 + number);
    std::vector<bool> seen(m_header.bytes.size() / kPage + 1);
    const auto read = [&](std::uint32_t page) {
        if (page >= seen.size() || seen[page]) // a page that is named twice says nothing new
            return;
        seen[page] = true;
        const std::string_view bytes = Slice(m_header.bytes, std::uint64_t{page} * kPage, kPage);
        if (bytes.size() == kPage)
            paragraphs ? ReadParagraphPage(bytes) : ReadCharacterPage(bytes);
    };
    std::uint32_t page = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = (count + 1) * 4 + i * number;
        page = number == 4 ? U32(list, at) & 0x3FFFFF : U16(list, at);
        read(page);
    }
    // Saved in haste, the list may lack pages; they stand behind the last one.
    const std::size_t stated = paragraphs ? m_header.paragraphPages : m_header.characterPages;
    for (std::size_t i = count; i < stated && count > 0; ++i)
        read(++page);
}

void DocFormats::ReadParagraphPage(std::string_view page) {
    const std::size_t count = U8(page, kCountAt);
    const std::size_t entry = m_header.age == DocAge::New ? 13 : 7;
    for (std::size_t i = 0; i < count; ++i) {
        Run<DocParagraphForm> run{U32(page, i * 4), U32(page, i * 4 + 4), {}};
        std::size_t at = std::size_t{U8(page, (count + 1) * 4 + i * entry)} * 2;
        if (run.end <= run.begin)
            continue;
        if (at > 0) {
            std::size_t size = std::size_t{U8(page, at)} * 2;
            if (size == 0 && m_header.age == DocAge::New)
                size = std::size_t{U8(page, ++at)} * 2;
            else if (m_header.age == DocAge::New)
                --size; // with its own byte it is even
            const std::string_view form = Slice(page, at + 1, size);
            run.form.style = U16(form, 0);
            Apply(Slice(form, 2), run.form);
        }
        m_paragraphs.push_back(run);
    }
}

void DocFormats::Apply(std::string_view list, DocParagraphForm& form) const {
    ForEachSprm(list, m_header.age, [&](DocSprm what, std::string_view value) {
        if (what != DocSprm::FarAway)
            return form.Apply(what, value);
        const std::uint32_t at = U32(value, 0);
        ForEachSprm(Slice(m_data, std::uint64_t{at} + 2, U16(m_data, at)), m_header.age,
                    [&form](DocSprm inner, std::string_view far) { form.Apply(inner, far); });
    });
}

void DocFormats::ReadCharacterPage(std::string_view page) {
    const std::size_t count = U8(page, kCountAt);
    for (std::size_t i = 0; i < count; ++i) {
        Run<DocCharacterForm> run{U32(page, i * 4), U32(page, i * 4 + 4), {}};
        const std::size_t at = std::size_t{U8(page, (count + 1) * 4 + i)} * 2;
        if (run.end <= run.begin || at == 0)
            continue;
        bool special = false;
        ForEachSprm(Slice(page, at + 1, U8(page, at)), m_header.age,
                    [&](DocSprm what, std::string_view value) {
                        special = special || what == DocSprm::Deleted || what == DocSprm::Symbol ||
                                  what == DocSprm::Picture || what == DocSprm::Font;
                        run.form.Apply(what, value);
                    });
        if (special)
            m_characters.push_back(run);
    }
}

DocParagraphForm DocFormats::ParagraphAt(std::uint32_t at) const {
    const auto* const run = FindRun(m_paragraphs, at);
    return run == nullptr ? DocParagraphForm() : run->form;
}

DocCharacterForm DocFormats::CharacterAt(std::uint32_t at, std::uint32_t& end) const {
    const auto behind =
        std::upper_bound(m_characters.begin(), m_characters.end(), at,
                         [](std::uint32_t place, const auto& run) { return place < run.begin; });
    end = behind == m_characters.end() ? 0xFFFFFFFF : behind->begin;
    const auto* const run = FindRun(m_characters, at);
    if (run == nullptr)
        return {};
    end = std::min(end, run->end);
    return run->form;
}

} // namespace engine
