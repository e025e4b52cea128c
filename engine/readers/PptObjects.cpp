// Every time such a document is saved, what has changed is put behind the rest.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/PptObjects.h"

#include "engine/readers/LittleEndian.h"
#include "engine/readers/Reader.h"

#include <algorithm>

namespace engine {
namespace {

enum : std::uint16_t { kEdit = 0x0FF5, kUser = 0x0FF6, kDirectory = 0x1772 };

} // namespace

PptObjects::PptObjects(std::string_view document, std::string_view user)
    : m_bytes(document), m_left(document.size() / 4) {
    constexpr std::uint32_t kEncrypted = 0xF3D1C4DF;
    const OfficeRecord record = ReadOfficeRecord(user);
    if (record.type != kUser)
        return;
    if (U32(record.payload, 4) == kEncrypted)
        throw ReadError(ReadState::Encrypted, "needs a password");
    ReadEdits(U32(record.payload, 8));
}

// From the last to the first; what was saved later counts.
void PptObjects::ReadEdits(std::uint32_t at) {
    constexpr std::size_t kWithKey = 32; // size of one that names the key of an encrypted document
    bool last = true;
    while (true) {
        const OfficeRecord edit = ReadOfficeRecord(Slice(m_bytes, at));
        if (edit.type != kEdit)
            return;
        if (edit.payload.size() >= kWithKey && U32(edit.payload, 28) != 0)
            throw ReadError(ReadState::Encrypted, "needs a password");
        if (last)
            m_document = U32(edit.payload, 16);
        last = false;
        ReadDirectory(U32(edit.payload, 12));
        const std::uint32_t before = U32(edit.payload, 8);
        if (before == 0 || before >= at) // one that was saved earlier stands further in front
            return;
        at = before;
    }
}

void PptObjects::ReadDirectory(std::uint32_t at) {
    const OfficeRecord directory = ReadOfficeRecord(Slice(m_bytes, at));
    if (directory.type != kDirectory)
        return;
    std::string_view list = directory.payload;
    while (list.size() >= 4 && m_left > 0) {
        const std::uint32_t head = U32(list, 0);
        const std::uint32_t first = head & 0xFFFFF;
        const std::size_t count =
            std::min<std::size_t>({head >> 20, (list.size() - 4) / 4, m_left});
        m_left -= std::max<std::size_t>(count, 1);
        for (std::size_t i = 0; i < count; ++i)
            m_places.emplace(first + static_cast<std::uint32_t>(i), U32(list, 4 + i * 4));
        list = Slice(list, 4 + count * 4);
    }
}

std::optional<OfficeRecord> PptObjects::Find(std::uint32_t number) const {
    const auto found = m_places.find(number);
    if (found == m_places.end())
        return std::nullopt;
    const OfficeRecord record = ReadOfficeRecord(Slice(m_bytes, found->second));
    if (record.size == 0)
        return std::nullopt;
    return record;
}

} // namespace engine
