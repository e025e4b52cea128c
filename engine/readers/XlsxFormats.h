// Shows the numbers of a workbook as its formats say: as numbers, percentages, dates, times.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/OpenXml.h"

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

class XlsxFormats {
  public:
    // Reads the styles part; a missing one leaves all numbers plain.
    void Read(OpenXmlPackage& package, std::string_view part);
    // Days count from 1904 instead of 1900.
    bool from1904 = false;

    // A cell's number as it is shown, dates as "2024-12-31" or "2024-12-31 23:59". style is the
    // cell's index into the styles. Values that are no numbers come back as they are.
    [[nodiscard]] std::string Show(std::string_view value, int style) const;

  private:
    std::vector<NumberForm> m_styles;
};

} // namespace engine
