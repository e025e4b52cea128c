// The table of operators.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/OperatorsMenu.h"

#include "core/Messages.h"

#include <array>

namespace velmora {

namespace {

struct Operator {
    QStringView appended;
    int captionId;
};

constexpr std::array<Operator, kOperatorCount> kOperators = {{
    {u" and ", 307},
    {u" or ", 311},
    {u" w/5 ", 315},
    {u" w/10 ", 313},
    {u" w/15 ", 314},
    {u" and not ", 308},
    {u" not w/5 ", 310},
}};

} // namespace

QString OperatorCaption(int index) {
    return GetMessage(kOperators.at(static_cast<std::size_t>(index)).captionId);
}

QString mnuOperators_Click(int index, const QString& text) {
    return text.trimmed() + kOperators.at(static_cast<std::size_t>(index)).appended.toString();
}

} // namespace velmora
