// Which characters a field editor lets pass.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/ValidationFunctions.h"

#include <QChar>

namespace velmora {

bool IsAlphabetic(char32_t character) {
    constexpr char32_t kBackspace = 8;
    constexpr char32_t kEnter = 13;
    return character == kBackspace || character == kEnter || QChar::isLetter(character);
}

} // namespace velmora
