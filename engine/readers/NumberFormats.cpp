// Format codes and dates.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/NumberFormats.h"

#include <algorithm>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace engine {
namespace {

constexpr int kMostDecimals = 15;
constexpr double kLastDay = 2958466; // 10000-01-01

// The code of a built-in format, where it is not plain numbers.
const char* BuiltInCode(int id) {
    switch (id) {
    case 1:
    case 3:
    case 37:
    case 38:
        return "0";
    case 2:
    case 4:
    case 7:
    case 8:
    case 39:
    case 40:
    case 43:
    case 44:
        return "0.00";
    case 5:
    case 6:
    case 41:
    case 42:
        return "0";
    case 9:
        return "0%";
    case 10:
        return "0.00%";
    case 18:
    case 19:
    case 20:
    case 21:
    case 32:
    case 33:
    case 34:
    case 35:
        return "h:mm";
    case 22:
        return "m/d/yy h:mm";
    case 45:
    case 47:
        return "mm:ss";
    case 46:
        return "[h]:mm:ss";
    default:
        break;
    }
    const bool date =
        (id >= 14 && id <= 17) || (id >= 27 && id <= 31) || id == 36 || (id >= 50 && id <= 58);
    return date ? "yyyy-mm-dd" : "General";
}

std::string Plain(double number, const NumberForm& form) {
    std::array<char, 400> buffer;
    const double shown = form.percent ? number * 100 : number;
    std::to_chars_result result{};
    const bool whole = std::floor(shown) == shown && std::abs(shown) < 1e15;
    if (form.decimals >= 0 && std::abs(shown) < 1e15)
        result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), shown,
                               std::chars_format::fixed, form.decimals);
    else if (whole)
        result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), shown,
                               std::chars_format::fixed, 0);
    else // what a workbook shows and keeps exactly are 15 digits
        result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), shown,
                               std::chars_format::general, 15);
    std::string text(buffer.data(), result.ptr);
    return form.percent ? text + "%" : text;
}

struct Day {
    std::int64_t year;
    unsigned month, day;
};

// The civil date of a day counted from 1970-01-01.
Day CivilDay(std::int64_t days) {
    days += 719468; // from 0000-03-01: leap days come at the end of years
    const std::int64_t era = days / 146097;
    const auto ofEra = static_cast<unsigned>(days - era * 146097);
    const unsigned yearOfEra = (ofEra - ofEra / 1460 + ofEra / 36524 - ofEra / 146096) / 365;
    const unsigned ofYear = ofEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned shifted = (5 * ofYear + 2) / 153;
    const unsigned month = shifted < 10 ? shifted + 3 : shifted - 9;
    return {static_cast<std::int64_t>(yearOfEra) + era * 400 + (month <= 2 ? 1 : 0), month,
            ofYear - (153 * shifted + 2) / 5 + 1};
}

std::string Clock(std::int64_t seconds) {
    std::array<char, 32> buffer;
    const auto hours = static_cast<long long>(seconds / 3600);
    const int minutes = static_cast<int>(seconds / 60 % 60);
    const int rest = static_cast<int>(seconds % 60);
    const int length =
        rest == 0
            ? std::snprintf(buffer.data(), buffer.size(), "%02lld:%02d", hours, minutes)
            : std::snprintf(buffer.data(), buffer.size(), "%02lld:%02d:%02d", hours, minutes, rest);
    return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string DateAndTime(double number, const NumberForm& form, bool from1904) {
    auto seconds = static_cast<std::int64_t>(std::llround(number * 86400));
    if (form.elapsed)
        return Clock(seconds);
    std::int64_t days = seconds / 86400;
    seconds %= 86400;
    std::string text;
    if (form.date) {
        // In the count from 1900, 1900 has a 29 February: day 60.
        constexpr std::int64_t k1904 = -24107, k1900 = -25569;
        const std::int64_t from = from1904 ? k1904 : k1900 + (days < 60 ? 1 : 0);
        const Day day = CivilDay(days + from);
        std::array<char, 32> buffer;
        const int length = std::snprintf(buffer.data(), buffer.size(), "%04lld-%02u-%02u",
                                         static_cast<long long>(day.year), day.month, day.day);
        text.assign(buffer.data(), static_cast<std::size_t>(length));
    }
    if (form.time || (!form.date && !form.time)) {
        if (!text.empty())
            text += ' ';
        text += Clock(seconds);
    }
    return text;
}

} // namespace

NumberForm ParseNumberFormat(std::string_view code) {
    NumberForm form;
    bool month = false, point = false, digits = false;
    std::string_view rest = code;
    while (!rest.empty() && rest.front() != ';') { // what follows is for negative numbers
        const char c = rest.front();
        std::size_t length = 1;
        if (c == '"') {
            length = std::min(rest.find('"', 1), rest.size() - 1) + 1;
        } else if (c == '\\' || c == '_' || c == '*') {
            length = 2;
        } else if (c == '[') {
            const std::string_view inside = rest.substr(1, rest.find(']') - 1);
            length = std::min(inside.size() + 2, rest.size());
            form.elapsed = form.elapsed ||
                           inside.find_first_not_of("hH") == std::string_view::npos ||
                           inside.find_first_not_of("mM") == std::string_view::npos ||
                           inside.find_first_not_of("sS") == std::string_view::npos;
        } else if (rest.starts_with("General") || rest.starts_with("GENERAL")) {
            return {};
        } else if (c == 'E' || c == 'e' || c == '/' || c == '@') {
            form.decimals = digits ? -2 : form.decimals; // scientific, fractions: all digits
        } else if (c == 'y' || c == 'Y' || c == 'd' || c == 'D') {
            form.date = true;
        } else if (c == 'h' || c == 'H' || c == 's' || c == 'S') {
            form.time = true;
        } else if (c == 'm' || c == 'M') {
            month = true;
        } else if (c == '%') {
            form.percent = true;
        } else if (c == '.') {
            point = true;
        } else if (c == '0' || c == '#' || c == '?') {
            digits = true;
            if (form.decimals >= -1)
                form.decimals =
                    std::min(kMostDecimals, std::max(form.decimals, 0) + (point ? 1 : 0));
            if (point && c == '#')
                form.decimals = -2; // shown only where there is a digit
        }
        rest.remove_prefix(std::min(length, rest.size()));
    }
    form.date = form.date || (month && !form.time && !form.elapsed);
    form.time = form.time || form.elapsed;
    form.decimals = std::max(form.decimals, -1);
    form.plain = !form.date && !form.time && !form.percent && form.decimals < 1;
    return form;
}

void NumberFormats::Define(int format, std::string_view code) {
    m_codes[format] = ParseNumberFormat(code);
}

void NumberFormats::AddStyle(int format) {
    const auto own = m_codes.find(format);
    m_styles.push_back(own != m_codes.end() ? own->second : ParseNumberFormat(BuiltInCode(format)));
}

NumberForm NumberFormats::FormOf(int style) const {
    const bool known = style >= 0 && static_cast<std::size_t>(style) < m_styles.size();
    return known ? m_styles[static_cast<std::size_t>(style)] : NumberForm();
}

std::string NumberFormats::Show(std::string_view value, int style) const {
    if (FormOf(style).plain && value.size() <= kMostDecimals &&
        value.find_first_not_of("0123456789") == std::string_view::npos)
        return std::string(value);
    double number = 0;
    const auto result = std::from_chars(value.data(), value.data() + value.size(), number);
    if (result.ec != std::errc() || result.ptr != value.data() + value.size() ||
        !std::isfinite(number))
        return std::string(value);
    return Show(number, style);
}

std::string NumberFormats::Show(double number, int style) const {
    if (!std::isfinite(number))
        return {};
    const NumberForm form = FormOf(style);
    if ((form.date || form.time) && number >= 0 && number < kLastDay)
        return DateAndTime(number, form, from1904);
    return Plain(number, form);
}

} // namespace engine
