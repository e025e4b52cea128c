// The properties of one message, recipient or attachment in a compound file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/CodePage.h"
#include "engine/readers/CompoundFile.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace engine {

class MsgProperties {
  public:
    // storage: "" or the path of a recipient or attachment. file outlives the object. codePage is
    // that of texts that are not Unicode; 0: the message tells it.
    MsgProperties(const CompoundFile& file, std::string storage, unsigned codePage = 0);

    // Texts are UTF-8; several values are joined by ", ". Empty where there is none.
    [[nodiscard]] std::string Text(unsigned id) const;
    [[nodiscard]] std::optional<std::string> Binary(unsigned id) const;
    // The path of a property that is a storage, or empty.
    [[nodiscard]] std::string Storage(unsigned id) const;
    [[nodiscard]] std::optional<std::uint32_t> Number(unsigned id) const;
    // Seconds since 1970; 0 where there is none.
    [[nodiscard]] std::int64_t Time(unsigned id) const;

    [[nodiscard]] unsigned CodePage() const { return m_codePage; }

  private:
    [[nodiscard]] std::optional<std::string> Stream(unsigned id, unsigned type) const;
    [[nodiscard]] std::string PathOf(unsigned id, unsigned type) const;
    [[nodiscard]] std::string Values(unsigned id) const;
    [[nodiscard]] unsigned OwnCodePage() const;

    const CompoundFile& m_file;
    std::string m_storage;                     // empty, or with "/" at its end
    std::map<unsigned, std::uint64_t> m_fixed; // values that need no stream, by id
    unsigned m_codePage;
};

// The numbers of properties that a file knows by names of its own.
class MsgNames {
  public:
    explicit MsgNames(const CompoundFile& file);
    // set: the first number of the property set's name, such as 0x00062002; 0 where there is none.
    [[nodiscard]] unsigned IdOf(std::uint32_t set, std::uint32_t number) const;
    [[nodiscard]] unsigned IdOf(std::string_view name) const;

  private:
    std::map<std::pair<std::uint32_t, std::uint32_t>, unsigned> m_numbers;
    std::map<std::string, unsigned, std::less<>> m_names;
};

} // namespace engine
