// A refusal of the operating system, in its own words.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

namespace platform {

/// What a system call answered. Code 0 means that nothing went wrong.
/// `if (!error.Ok()) Tell(error.text);`
struct SystemError {
    int code = 0; ///< errno value, 0 for success
    QString text; ///< the system's words for it, empty for success

    [[nodiscard]] bool Ok() const { return code == 0; }

    /// The error of the given errno value.
    [[nodiscard]] static SystemError Of(int errnoValue);
    /// The error that errno holds now: to be called right after the call that failed.
    [[nodiscard]] static SystemError Last();
};

} // namespace platform
