// The rules for the name that a new document gets when it is first saved.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

namespace velmora {

// Whether the name field takes the character; control characters such as Backspace it does.
[[nodiscard]] bool TakesCharacter(QChar character);

// The name to be used, ".TIF" appended where it is missing; empty when it is refused, which has
// been told. `folder`: logical path. A name that differs only by case counts as used.
[[nodiscard]] QString CheckedFileName(const QString& name, const QString& folder);

} // namespace velmora
