// The program's line icons, in the colours of the desktop.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QString>

namespace velmora {

// An icon of resources/icons by its name without ending. Follows the palette, a change of it too,
// and is sharp at every scale.
QIcon LineIcon(const QString& name);

// The name of the line icon for a file, by the ending of its name.
QString IconOfFile(const QString& fileName);

// The program's own icon, for its windows.
QIcon ProgramIcon();

} // namespace velmora
