// Tables of anchors and of the texts that belong to them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/DocAsides.h"

#include "engine/readers/LittleEndian.h"
#include "engine/readers/OfficeArt.h"

#include <algorithm>
#include <map>

namespace engine {
namespace {

// Places between characters, and a record for each stretch from one to the next.
class PlaceTable {
  public:
    PlaceTable(const DocHeader& header, std::string_view tables, DocTable table, std::size_t record)
        : m_record(record) {
        const DocHeader::Place place = header.PlaceOf(table);
        m_bytes = Slice(tables, place.at, place.size);
        m_count = m_bytes.size() < 4 ? 0 : (m_bytes.size() - 4) / (4 + record);
    }
    [[nodiscard]] std::size_t Count() const { return m_count; }
    [[nodiscard]] std::uint32_t At(std::size_t i) const { return U32(m_bytes, i * 4); }
    [[nodiscard]] std::string_view Record(std::size_t i) const {
        return Slice(m_bytes, (m_count + 1) * 4 + i * m_record, m_record);
    }

  private:
    std::string_view m_bytes;
    std::size_t m_record, m_count;
};

class AsideReading {
  public:
    AsideReading(const DocHeader& header, std::string_view tables)
        : m_header(header), m_tables(tables) {}

    std::vector<DocAside> Run() {
        const bool recent = m_header.age == DocAge::New;
        Notes(DocStory::Footnotes, DocTable::FootnoteAnchors, DocTable::FootnoteTexts, 2);
        Notes(DocStory::Endnotes, DocTable::EndnoteAnchors, DocTable::EndnoteTexts, 2);
        Notes(DocStory::Comments, DocTable::CommentAnchors, DocTable::CommentTexts,
              recent ? 30 : 20);
        if (recent)
            Drawings();
        else
            Rest(DocStory::TextBoxes, 0);
        std::stable_sort(m_asides.begin(), m_asides.end(),
                         [](const auto& a, const auto& b) { return a.anchor < b.anchor; });
        return std::move(m_asides);
    }

  private:
    [[nodiscard]] std::uint32_t LengthOf(DocStory story) const {
        return m_header.lengths[static_cast<std::size_t>(story)];
    }

    // The part of a story that begins at from, without an anchor.
    void Rest(DocStory story, std::uint32_t from) {
        if (from >= LengthOf(story))
            return;
        const std::uint64_t base = m_header.BeginOf(story);
        m_asides.push_back({DocAside::kNowhere,
                            story != DocStory::TextBoxes,
                            base + from,
                            base + LengthOf(story),
                            {}});
    }

    // Texts follow each other; one that does not is damage.
    template <typename AnchorOf>
    void Texts(DocStory story, const PlaceTable& texts, std::size_t count, AnchorOf anchorOf) {
        const std::uint64_t base = m_header.BeginOf(story);
        std::uint32_t done = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint32_t begin = texts.At(i), end = texts.At(i + 1);
            if (begin < done || end < begin || end > LengthOf(story))
                break;
            m_asides.push_back(
                {anchorOf(i), story != DocStory::TextBoxes, base + begin, base + end, {}});
            done = end;
        }
        Rest(story, done);
    }

    void Notes(DocStory story, DocTable anchorTable, DocTable textTable, std::size_t record) {
        const PlaceTable anchors(m_header, m_tables, anchorTable, record);
        const PlaceTable texts(m_header, m_tables, textTable, 0);
        Texts(story, texts, std::min(anchors.Count(), texts.Count()),
              [&](std::size_t i) -> std::uint64_t {
                  return anchors.At(i) < LengthOf(DocStory::Main) ? anchors.At(i)
                                                                  : DocAside::kNowhere;
              });
    }

    // A text box is a shape; the shape, or the group it is part of, has an anchor.
    void Drawings() {
        std::map<std::uint32_t, std::uint64_t> places; // by the id of a shape
        constexpr std::size_t kAnchor = 26, kText = 22, kShapeOfText = 14;
        const PlaceTable anchors(m_header, m_tables, DocTable::ShapeAnchors, kAnchor);
        for (std::size_t i = 0; i < anchors.Count(); ++i)
            if (anchors.At(i) < LengthOf(DocStory::Main))
                places.emplace(U32(anchors.Record(i), 0), anchors.At(i));
        const auto placeOf = [&places](std::uint32_t shape) {
            const auto found = places.find(shape);
            return found == places.end() ? DocAside::kNowhere : found->second;
        };
        for (const OfficeShape& shape : Shapes()) {
            places.emplace(shape.id, placeOf(shape.top));
            for (const std::string& words : {shape.wordArt, shape.description})
                if (!words.empty())
                    m_asides.push_back({placeOf(shape.id), false, 0, 0, words});
        }
        const PlaceTable texts(m_header, m_tables, DocTable::TextBoxTexts, kText);
        Texts(DocStory::TextBoxes, texts, texts.Count(),
              [&](std::size_t i) { return placeOf(U32(texts.Record(i), kShapeOfText)); });
    }

    // One drawing for the main text and one for headers and footers, each behind a byte that
    // tells which, and all behind what they share.
    [[nodiscard]] std::vector<OfficeShape> Shapes() const {
        const DocHeader::Place place = m_header.PlaceOf(DocTable::Drawings);
        std::string_view bytes = Slice(m_tables, place.at, place.size);
        bytes = Slice(bytes, ReadOfficeRecord(bytes).size);
        std::vector<OfficeShape> shapes;
        constexpr int kDrawings = 2;
        for (int i = 0; i < kDrawings && !bytes.empty(); ++i) {
            const std::string_view drawing = bytes.substr(1);
            for (OfficeShape& shape : ReadOfficeShapes(drawing))
                shapes.push_back(std::move(shape));
            bytes = Slice(drawing, ReadOfficeRecord(drawing).size);
        }
        return shapes;
    }

    const DocHeader& m_header;
    std::string_view m_tables;
    std::vector<DocAside> m_asides;
};

} // namespace

std::vector<DocAside> ReadDocAsides(const DocHeader& header, std::string_view tables) {
    return AsideReading(header, tables).Run();
}

std::vector<DocMargin> ReadDocMargins(const DocHeader& header, std::string_view tables) {
    constexpr std::size_t kSeparators = 6; // of notes; they come first
    const std::uint64_t base = header.BeginOf(DocStory::Headers);
    const std::uint32_t length = header.lengths[static_cast<std::size_t>(DocStory::Headers)];
    const PlaceTable texts(header, tables, DocTable::HeaderTexts, 0);
    std::vector<DocMargin> margins;
    std::uint32_t done = 0;
    for (std::size_t i = 0; i < texts.Count(); ++i) {
        const std::uint32_t begin = texts.At(i), end = texts.At(i + 1);
        if (begin < done || end < begin || end > length)
            break;
        done = end;
        if (i < kSeparators || begin == end)
            continue;
        const std::size_t which = (i - kSeparators) % 6; // even, odd, even, odd, first, first
        margins.push_back({which == 2 || which == 3 || which == 5, base + begin, base + end});
    }
    if (done < length && texts.Count() <= kSeparators) // there are some, but where is not told
        margins.push_back({false, base + done, base + length});
    return margins;
}

} // namespace engine
