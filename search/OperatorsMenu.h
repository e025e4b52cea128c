// The operators that the pop-up menu of the search box offers.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

namespace velmora {

inline constexpr int kOperatorCount = 7;

// What a person reads in the menu. index: from 0.
QString OperatorCaption(int index);

// The box's text after a choice: the text without outer blanks, then the operator. The caret goes
// to the end. index: from 0.
QString mnuOperators_Click(int index, const QString& text);

} // namespace velmora
