// The parts of a PPT document: which bytes each of them is after the last time it was saved.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/OfficeArt.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

namespace engine {

class PptObjects {
  public:
    // document and user are the streams "PowerPoint Document" and "Current User". Throws
    // ReadError Encrypted; what is damaged leaves objects out.
    PptObjects(std::string_view document, std::string_view user);

    // The whole record of an object; nothing where it is missing.
    [[nodiscard]] std::optional<OfficeRecord> Find(std::uint32_t number) const;
    // The record that all others hang on.
    [[nodiscard]] std::optional<OfficeRecord> Document() const { return Find(m_document); }

  private:
    void ReadEdits(std::uint32_t at);
    void ReadDirectory(std::uint32_t at);

    std::string_view m_bytes;
    std::map<std::uint32_t, std::uint32_t> m_places;
    std::uint32_t m_document = 0;
    std::size_t m_left; // entries of directories still read: hostile ones lie upon each other
};

} // namespace engine
