// Records within records; properties by number.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/OfficeArt.h"

#include "engine/readers/CodePage.h"
#include "engine/readers/LittleEndian.h"

#include <algorithm>

namespace engine {
namespace {

constexpr std::size_t kHeader = 8;
constexpr std::size_t kDeepest = 64;

enum : std::uint16_t {
    kGroup = 0xF003,
    kShape = 0xF004,
    kShapeHead = 0xF00A,
    kProperties = 0xF00B,
    kMoreProperties = 0xF121,
    kStillMoreProperties = 0xF122,
};

std::string WideText(std::string_view bytes) {
    std::string text;
    AppendUtf16(text, bytes);
    return text.substr(0, text.find('\0'));
}

OfficeShape ReadShape(std::string_view content) {
    OfficeShape shape;
    ForEachRecord(content, [&shape](const OfficeRecord& record) {
        if (record.type == kShapeHead)
            shape.id = U32(record.payload, 0);
        else
            ReadOfficeProperties(record, shape);
    });
    return shape;
}

// groups: how many groups surround content. Outermost is the one that holds the whole drawing.
void ReadContainer(std::string_view content, std::size_t depth, int groups, std::uint32_t top,
                   std::vector<OfficeShape>& shapes) {
    if (depth >= kDeepest)
        return;
    bool first = true;
    ForEachRecord(content, [&](const OfficeRecord& record) {
        if (record.type == kShape) {
            OfficeShape shape = ReadShape(record.payload);
            if (groups == 2 && first) // a group's own shape comes first
                top = shape.id;
            shape.top = top == 0 ? shape.id : top;
            shapes.push_back(std::move(shape));
        } else if (record.container) {
            ReadContainer(record.payload, depth + 1, groups + (record.type == kGroup ? 1 : 0), top,
                          shapes);
        }
        first = false;
    });
}

} // namespace

OfficeRecord ReadOfficeRecord(std::string_view bytes) {
    OfficeRecord record;
    if (bytes.size() < kHeader)
        return record;
    record.container = (U16(bytes, 0) & 0xF) == 0xF;
    record.instance = U16(bytes, 0) >> 4;
    record.type = U16(bytes, 2);
    record.payload = Slice(bytes, kHeader, U32(bytes, 4));
    record.size = kHeader + record.payload.size();
    return record;
}

void ReadOfficeProperties(const OfficeRecord& record, OfficeShape& shape) {
    if (record.type != kProperties && record.type != kMoreProperties &&
        record.type != kStillMoreProperties)
        return;
    constexpr std::size_t kEntry = 6;
    constexpr unsigned kWordArt = 0x00C0, kDescription = 0x0381, kTable = 0x039F;
    const std::string_view table = record.payload;
    const std::size_t count = std::min<std::size_t>(record.instance, table.size() / kEntry);
    std::uint64_t at = count * kEntry; // long values stand behind the table
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned number = U16(table, i * kEntry);
        const std::uint32_t size = U32(table, i * kEntry + 2);
        if (number == kTable)
            shape.table = (size & 1) != 0; // short values stand in place of the size
        if ((number & 0x8000) == 0)
            continue;
        if ((number & 0x3FFF) == kWordArt)
            shape.wordArt = WideText(Slice(table, at, size));
        else if ((number & 0x3FFF) == kDescription)
            shape.description = WideText(Slice(table, at, size));
        at += size;
    }
}

std::vector<OfficeShape> ReadOfficeShapes(std::string_view record) {
    std::vector<OfficeShape> shapes;
    ReadContainer(record.substr(0, ReadOfficeRecord(record).size), 0, 0, 0, shapes);
    return shapes;
}

} // namespace engine
