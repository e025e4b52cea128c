// The user's own settings: small texts by section and key.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
// They lie in "velmora/APPLICATION.ini" under the user's configuration
// folder (VELMORA_CONFIG_HOME, else XDG_CONFIG_HOME, else ~/.config).
// Nothing is kept between calls, so that other processes are seen.
#pragma once

#include "platform/SystemError.h"

#include <QString>

namespace platform {

/// The value, or the empty string when it is not there.
[[nodiscard]] QString GetSetting(const QString& section, const QString& key,
                                 const QString& application = QStringLiteral("Velmora"));

/// Stores the value; it is on the disk when this returns. Other processes' settings are kept.
[[nodiscard]] SystemError SaveSetting(const QString& section, const QString& key,
                                      const QString& value,
                                      const QString& application = QStringLiteral("Velmora"));

} // namespace platform
