// The records of a shape.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/PptShape.h"

#include "engine/readers/LittleEndian.h"

namespace engine {
namespace {

enum : std::uint16_t {
    kPlaceholder = 0x0BC3,
    kTextBox = 0xF00D,
    kPlaceInGroup = 0xF00F,
    kClientData = 0xF011,
};

// Of a slide or a master; centred or upright.
bool IsTitle(std::uint8_t placeholder) {
    return placeholder == 1 || placeholder == 3 || placeholder == 13 || placeholder == 15 ||
           placeholder == 17;
}

} // namespace

PptShape ReadPptShape(std::string_view payload) {
    PptShape shape;
    ForEachRecord(payload, [&shape](const OfficeRecord& record) {
        switch (record.type) {
        case kTextBox:
            shape.texts = ReadPptTexts(record.payload);
            shape.hasText = true;
            break;
        case kPlaceInGroup:
            shape.left = static_cast<std::int32_t>(U32(record.payload, 0));
            shape.top = static_cast<std::int32_t>(U32(record.payload, 4));
            break;
        case kClientData:
            ForEachRecord(record.payload, [&shape](const OfficeRecord& inner) {
                if (inner.type == kPlaceholder)
                    shape.placeholder = U8(inner.payload, 4);
            });
            break;
        default:
            ReadOfficeProperties(record, shape.words);
        }
    });
    if (IsTitle(shape.placeholder))
        for (PptText& text : shape.texts)
            text.title = true;
    return shape;
}

} // namespace engine
