// Handing files over to the desktop.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
// The desktop's opener is started and not waited for: an answer of Ok means that it runs. What it
// then cannot do, it tells the user itself. No command interpreter is involved, and no name can be
// taken for an option.
#pragma once

#include "platform/SystemError.h"

#include <QString>

namespace platform {

/// Opens a file (an .eml included) or a folder with the program that the user's desktop has for it.
/// `path` is a machine path. A file that is not there is a failure.
[[nodiscard]] SystemError OpenWithDesktop(const QString& path);

/// Opens the folder that holds the file.
[[nodiscard]] SystemError OpenContainingFolder(const QString& path);

/// Opens a new message in the user's mail program; `address` is
/// a "mailto:" address, any other is refused.
[[nodiscard]] SystemError OpenMailTo(const QString& address);

/// Opens a page of the web in the user's browser; any address but "https:" and "http:" is refused.
[[nodiscard]] SystemError OpenWebPage(const QString& address);

} // namespace platform
