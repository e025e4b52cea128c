// Makes a request from four plain boxes and a number.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

namespace velmora {

// Of all, any and phrase the first that is not empty counts; none goes with any of them.
struct SearchBoxes {
    QString all;
    QString any;
    QString phrase;
    QString none;
    int fuzziness = 0; // letters that may differ in each word, but in those of none
};

// The most that the buttons of the box give.
inline constexpr int kMostFuzziness = 5;

// {"red car", none "blue", 2} gives (%%red and %%car) and not blue. A word that is an operator
// stands in quotes. Empty when all, any and phrase are.
QString BuildRequest(const SearchBoxes& boxes);

} // namespace velmora
