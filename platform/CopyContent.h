// The bytes of a file, and what the system keeps beside them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/Copy.h"

#include <sys/stat.h>

namespace platform {

/// Copies the whole content between open files; `to` is empty and both stand at their beginning.
[[nodiscard]] CopyOutcome CopyContent(int from, int to, qint64 size,
                                      const std::function<bool(qint64)>& progress);

/// Owner (with `withOwner`, where that is allowed), extended attributes with access lists, mode and
/// times. What the target's file system does not know is passed over.
[[nodiscard]] SystemError CopyAttributes(int from, int to, const struct stat& status,
                                         bool withOwner);

} // namespace platform
