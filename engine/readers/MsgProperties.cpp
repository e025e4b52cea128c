// Properties of messages.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MsgProperties.h"

#include "engine/readers/Limits.h"
#include "engine/readers/LittleEndian.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace engine {
namespace {

enum : unsigned {
    kNumber = 0x0003,
    kBool = 0x000B,
    kObject = 0x000D,
    kOldText = 0x001E,
    kText = 0x001F,
    kTime = 0x0040,
    kBinary = 0x0102,
    kMany = 0x1000,
};
constexpr int kMostValues = 1000;

} // namespace

MsgProperties::MsgProperties(const CompoundFile& file, std::string storage, unsigned codePage)
    : m_file(file), m_storage(std::move(storage)), m_codePage(codePage) {
    // A message begins with 32 bytes of its own, the others with 8.
    std::size_t at = m_storage.empty() ? 32 : 8;
    if (!m_storage.empty())
        m_storage += '/';
    constexpr std::size_t kEntry = 16;
    const std::string stream =
        m_file.Stream(m_storage + "__properties_version1.0", kMaxPropertyBytes).value_or("");
    for (; at + kEntry <= stream.size(); at += kEntry) {
        const unsigned type = U16(stream, at);
        if (type == kNumber || type == kBool || type == kTime)
            m_fixed.emplace(U16(stream, at + 2), type == kTime   ? U64(stream, at + 8)
                                                 : type == kBool ? U16(stream, at + 8)
                                                                 : U32(stream, at + 8));
    }
    if (m_codePage == 0)
        m_codePage = OwnCodePage();
}

unsigned MsgProperties::OwnCodePage() const {
    constexpr unsigned kMessagePage = 0x3FFD, kInternetPage = 0x3FDE, kLanguage = 0x3FF1;
    for (const unsigned id : {kMessagePage, kInternetPage})
        if (const std::uint32_t page = Number(id).value_or(0); page != 0 && page != kUtf16Page)
            return page;
    const std::uint32_t language = Number(kLanguage).value_or(0);
    return language == 0 ? kWesternPage : CodePageOfLanguage(language);
}

std::string MsgProperties::PathOf(unsigned id, unsigned type) const {
    std::array<char, 32> name;
    std::snprintf(name.data(), name.size(), "__substg1.0_%04X%04X", id & 0xFFFF, type);
    return m_storage + name.data();
}

std::optional<std::string> MsgProperties::Stream(unsigned id, unsigned type) const {
    return m_file.Stream(PathOf(id, type), kMaxMemberBytes);
}

std::string MsgProperties::Text(unsigned id) const {
    std::string text;
    if (id == 0)
        return text;
    if (const std::optional<std::string> wide = Stream(id, kText))
        AppendUtf16(text, *wide);
    else if (const std::optional<std::string> bytes = Stream(id, kOldText))
        text = DecodeCodePage(*bytes, m_codePage);
    else
        text = Values(id);
    while (text.ends_with('\0'))
        text.pop_back();
    return text;
}

// Each value of a property with many has a stream of its own.
std::string MsgProperties::Values(unsigned id) const {
    std::string all;
    for (const unsigned type : {kText | kMany, kOldText | kMany}) {
        if (!m_file.Has(PathOf(id, type)))
            continue;
        for (int i = 0; i < kMostValues; ++i) {
            std::array<char, 16> number;
            std::snprintf(number.data(), number.size(), "-%08X", static_cast<unsigned>(i));
            const std::optional<std::string> value =
                m_file.Stream(PathOf(id, type) + number.data());
            if (!value.has_value())
                break;
            std::string text = type == (kText | kMany) ? DecodeCodePage(*value, kUtf16Page)
                                                       : DecodeCodePage(*value, m_codePage);
            while (text.ends_with('\0'))
                text.pop_back();
            all += (all.empty() || text.empty() ? "" : ", ") + text;
        }
        break;
    }
    return all;
}

std::optional<std::string> MsgProperties::Binary(unsigned id) const {
    return Stream(id, kBinary);
}

std::string MsgProperties::Storage(unsigned id) const {
    const std::string path = PathOf(id, kObject);
    return m_file.Has(path) && !m_file.Stream(path, 0).has_value() ? path : std::string();
}

std::optional<std::uint32_t> MsgProperties::Number(unsigned id) const {
    const auto found = m_fixed.find(id);
    return found == m_fixed.end() ? std::nullopt
                                  : std::optional(static_cast<std::uint32_t>(found->second));
}

std::int64_t MsgProperties::Time(unsigned id) const {
    constexpr std::int64_t kPerSecond = 10'000'000, k1970 = 11'644'473'600; // from 1601
    constexpr std::int64_t kEndOfTime = 7'258'118'400;                      // 2200: not set
    const auto found = m_fixed.find(id);
    if (id == 0 || found == m_fixed.end())
        return 0;
    const std::int64_t seconds = static_cast<std::int64_t>(found->second / kPerSecond) - k1970;
    return seconds > 0 && seconds < kEndOfTime ? seconds : 0;
}

MsgNames::MsgNames(const CompoundFile& file) {
    const auto read = [&file](const char* name) {
        return file
            .Stream(std::string("__nameid_version1.0/__substg1.0_") + name, kMaxPropertyBytes)
            .value_or("");
    };
    const std::string sets = read("00020102"), entries = read("00030102"), names = read("00040102");
    constexpr std::size_t kEntry = 8, kSetSize = 16;
    constexpr unsigned kFirstId = 0x8000, kFirstSet = 3;
    constexpr std::uint32_t kLongestName = 512; // bytes
    for (std::size_t at = 0; at + kEntry <= entries.size(); at += kEntry) {
        const std::uint32_t number = U32(entries, at);
        const unsigned kind = U16(entries, at + 4), id = kFirstId + U16(entries, at + 6);
        if ((kind & 1) != 0) {
            const std::string_view name =
                Slice(names, std::uint64_t{number} + 4, std::min(U32(names, number), kLongestName));
            m_names.emplace(DecodeCodePage(name, kUtf16Page), id);
        } else if (kind >> 1 >= kFirstSet) {
            m_numbers.emplace(std::pair(U32(sets, ((kind >> 1) - kFirstSet) * kSetSize), number),
                              id);
        }
    }
}

unsigned MsgNames::IdOf(std::uint32_t set, std::uint32_t number) const {
    const auto found = m_numbers.find({set, number});
    return found == m_numbers.end() ? 0 : found->second;
}

unsigned MsgNames::IdOf(std::string_view name) const {
    const auto found = m_names.find(name);
    return found == m_names.end() ? 0 : found->second;
}

} // namespace engine
