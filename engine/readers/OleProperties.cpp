// Property sets: sections of numbered, typed values.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/OleProperties.h"

#include "engine/readers/CodePage.h"
#include "engine/readers/Limits.h"
#include "engine/readers/LittleEndian.h"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>
#include <utility>

namespace engine {
namespace {

using namespace std::string_view_literals;

enum Type : std::uint16_t {
    kShort = 2,
    kLong = 3,
    kDouble = 5,
    kDate = 7,
    kBasicString = 8,
    kBoolean = 11,
    kByteString = 30,
    kWideString = 31,
    kFileTime = 64,
};

using FieldNames = std::map<std::uint32_t, std::string>; // by the property's number

// Both texts end at their first zero; some programs count bytes behind it.
std::string ByteText(std::string_view bytes, unsigned page) {
    if (page == kUtf16Page) {
        std::size_t end = 0;
        while (end + 1 < bytes.size() && U16(bytes, end) != 0)
            end += 2;
        return DecodeCodePage(bytes.substr(0, end), page);
    }
    return DecodeCodePage(bytes.substr(0, bytes.find('\0')), page);
}

// As "2024-12-31 23:59".
std::string ShowFileTime(std::uint64_t ticks) {
    using namespace std::chrono;
    constexpr std::uint64_t kPerSecond = 10'000'000;
    constexpr std::int64_t kTo1970 = 11'644'473'600;
    const sys_seconds when{seconds{static_cast<std::int64_t>(ticks / kPerSecond) - kTo1970}};
    const sys_days day = floor<days>(when);
    const year_month_day date{day};
    const hh_mm_ss time{when - day};
    std::array<char, 48> text{};
    const int length = std::snprintf(
        text.data(), text.size(), "%d-%02u-%02u %02d:%02d", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()));
    return {text.data(), static_cast<std::size_t>(std::max(length, 0))};
}

std::string ShowValue(std::string_view value, unsigned page) {
    const std::string_view content = Slice(value, 4);
    switch (U16(value, 0)) {
    case kByteString:
    case kBasicString:
        return ByteText(Slice(content, 4, U32(content, 0)), page);
    case kWideString:
        return ByteText(Slice(content, 4, std::uint64_t{U32(content, 0)} * 2), kUtf16Page);
    case kShort:
        return std::to_string(static_cast<std::int16_t>(U16(content, 0)));
    case kLong:
        return std::to_string(static_cast<std::int32_t>(U32(content, 0)));
    case kDouble: {
        const auto bits = U64(content, 0);
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.15g", std::bit_cast<double>(bits));
        return text.data();
    }
    case kBoolean:
        return U16(content, 0) != 0 ? "true" : "false";
    case kFileTime:
        return ShowFileTime(U64(content, 0));
    default:
        return {};
    }
}

// The names of the document's own properties.
FieldNames ReadDictionary(std::string_view dictionary, unsigned page) {
    FieldNames names;
    std::size_t at = 4;
    for (std::uint32_t left = U32(dictionary, 0); left > 0 && at + 8 < dictionary.size(); --left) {
        const std::uint32_t number = U32(dictionary, at);
        const std::uint64_t length =
            std::uint64_t{U32(dictionary, at + 4)} * (page == kUtf16Page ? 2 : 1);
        std::string name = ByteText(Slice(dictionary, at + 8, length), page);
        std::transform(name.begin(), name.end(), name.begin(), [](char c) {
            return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        });
        names[number] = std::move(name);
        const std::uint64_t padded = page == kUtf16Page ? (length + 3) / 4 * 4 : length;
        if (padded > dictionary.size())
            break;
        at += 8 + static_cast<std::size_t>(padded);
    }
    return names;
}

// Properties that programs put in for themselves.
bool IsOfMachine(std::string_view name) {
    constexpr std::array kNames{"appversion"sv,    "contenttypeid"sv,    "docsecurity"sv,
                                "linksuptodate"sv, "scalecrop"sv,        "sharedoc"sv,
                                "hyperlinkbase"sv, "hyperlinkschanged"sv};
    return name.starts_with("_pid_") || name.starts_with("msip_label_") ||
           std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

void ReadSection(std::string_view section, FieldNames names, bool own, DocumentSink& sink) {
    section = section.substr(0, std::min<std::size_t>(section.size(), U32(section, 0)));
    std::map<std::uint32_t, std::string_view> values; // a number stands for one value
    const std::size_t count = std::min<std::size_t>(U32(section, 4), section.size() / 8);
    for (std::size_t i = 0; i < count; ++i)
        values[U32(section, 8 + i * 8)] = Slice(section, U32(section, 12 + i * 8));

    constexpr std::uint32_t kDictionary = 0, kCodePage = 1;
    const unsigned page = values.contains(kCodePage) ? U16(values[kCodePage], 4) : kWesternPage;
    if (own && values.contains(kDictionary))
        names = ReadDictionary(values[kDictionary], page);
    std::uint64_t budget = kMaxPropertyBytes; // values may overlap in a hostile file
    for (const auto& [number, name] : names) {
        const auto found = values.find(number);
        if (found == values.end() || number <= kCodePage || IsOfMachine(name))
            continue;
        const std::string value = ShowValue(found->second.substr(0, budget), page);
        budget -= std::min<std::uint64_t>(budget, value.size());
        sink.Field(name, value);
    }
}

void ReadPropertySet(std::string_view set, DocumentSink& sink) {
    constexpr auto kSummary = "\xE0\x85\x9F\xF2\xF9\x4F\x68\x10\xAB\x91\x08\x00\x2B\x27\xB3\xD9"sv;
    constexpr auto kDocumentSummary =
        "\x02\xD5\xCD\xD5\x9C\x2E\x1B\x10\x93\x97\x08\x00\x2B\x2C\xF9\xAE"sv;
    constexpr auto kOwn = "\x05\xD5\xCD\xD5\x9C\x2E\x1B\x10\x93\x97\x08\x00\x2B\x2C\xF9\xAE"sv;
    static const FieldNames kSummaryNames{
        {2, "title"}, {3, "subject"}, {4, "author"}, {5, "keywords"}, {6, "comments"}};
    static const FieldNames kDocumentNames{
        {2, "category"}, {14, "manager"}, {15, "company"}, {27, "status"}};
    constexpr std::size_t kMostSections = 8; // two are in use
    const std::size_t sections = std::min<std::size_t>(U32(set, 24), kMostSections);
    for (std::size_t i = 0; i < sections; ++i) {
        const std::string_view format = Slice(set, 28 + i * 20, 16);
        const std::string_view section = Slice(set, U32(set, 44 + i * 20));
        if (format == kSummary)
            ReadSection(section, kSummaryNames, false, sink);
        else if (format == kDocumentSummary)
            ReadSection(section, kDocumentNames, false, sink);
        else if (format == kOwn)
            ReadSection(section, {}, true, sink);
    }
}

} // namespace

void ReadOleProperties(const CompoundFile& file, DocumentSink& sink, std::string_view storage) {
    std::string folder(storage);
    if (!folder.empty())
        folder += '/';
    for (const char* name : {"\5SummaryInformation", "\5DocumentSummaryInformation"})
        if (const auto set = file.Stream(folder + name, kMaxPropertyBytes))
            ReadPropertySet(*set, sink);
}

} // namespace engine
