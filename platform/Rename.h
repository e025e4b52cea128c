// Giving a file or folder another name, without ever taking a name from another one.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/SystemError.h"

#include <QByteArray>
#include <QString>

namespace platform {

/// Moves within one file system; EXDEV when `to` lies on another. EEXIST when something stands
/// under the new name, and both stay as they were. Nothing can come between the test and the
/// renaming, but on the oldest of network file systems. Paths as bytes of EncodeName.
[[nodiscard]] SystemError RenameToNewName(const QByteArray& from, const QByteArray& to);

/// The same for machine paths, and for a change of case alone on a disk that takes any case.
[[nodiscard]] SystemError RenameEntry(const QString& from, const QString& to);

} // namespace platform
