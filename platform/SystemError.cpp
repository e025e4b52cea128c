// A refusal of the operating system, in its own words.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/SystemError.h"

#include <cerrno>
#include <cstring>

namespace platform {

SystemError SystemError::Of(int errnoValue) {
    if (errnoValue == 0) {
        return {};
    }
    char buffer[256];
    return {errnoValue, QString::fromLocal8Bit(strerror_r(errnoValue, buffer, sizeof buffer))};
}

SystemError SystemError::Last() {
    return Of(errno);
}

} // namespace platform
