// Shows the numbers of a workbook as its formats say: as numbers, percentages, dates, times.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

// What a format code comes to.
struct NumberForm {
    bool date = false;
    bool time = false;
    bool elapsed = false; // a time that may be longer than a day
    bool percent = false;
    bool plain = true; // whole numbers are shown as they stand
    int decimals = -1; // -1: as many as there are
};

[[nodiscard]] NumberForm ParseNumberFormat(std::string_view code);

class NumberFormats {
  public:
    // Days count from 1904 instead of 1900.
    bool from1904 = false;

    // A format of the workbook's own, to be told before the styles that use it.
    void Define(int format, std::string_view code);
    // The next style, from 0: format is one of the workbook's own or a built-in one.
    void AddStyle(int format);

    // A cell's number as it is shown, dates as "2024-12-31" or "2024-12-31 23:59". An unknown
    // style leaves the number plain. Values that are no numbers come back as they are.
    [[nodiscard]] std::string Show(std::string_view value, int style) const;
    // The same; empty for what is no finite number.
    [[nodiscard]] std::string Show(double number, int style) const;

  private:
    [[nodiscard]] NumberForm FormOf(int style) const;

    std::map<int, NumberForm> m_codes;
    std::vector<NumberForm> m_styles;
};

} // namespace engine
