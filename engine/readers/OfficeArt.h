// The drawings in DOC, XLS and PPT documents: the words that shapes carry as properties.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

struct OfficeShape {
    std::uint32_t id = 0;
    std::uint32_t top = 0;   // the id of the outermost group around it, or its own
    std::string wordArt;     // what it shows as bent and coloured words
    std::string description; // the alternative text
    bool table = false;      // a group whose shapes are the cells of a table
};

// One record: its payload and what is behind it.
struct OfficeRecord {
    std::uint16_t type = 0;
    std::uint16_t instance = 0;
    bool container = false;
    std::string_view payload; // cut off by the end of what surrounds it
    std::size_t size = 0;     // with its header; 0: there is none
};
[[nodiscard]] OfficeRecord ReadOfficeRecord(std::string_view bytes);

// Every record of a payload, up to damage.
template <typename Take> void ForEachRecord(std::string_view payload, Take take) {
    while (!payload.empty()) {
        const OfficeRecord record = ReadOfficeRecord(payload);
        if (record.size == 0)
            return;
        take(record);
        payload.remove_prefix(record.size);
    }
}

// The words that a shape's table of properties (the payload of its record) holds.
void ReadOfficeProperties(const OfficeRecord& record, OfficeShape& shape);

// All shapes of one record and of what it contains, in their order. Damage ends the list.
[[nodiscard]] std::vector<OfficeShape> ReadOfficeShapes(std::string_view record);

} // namespace engine
