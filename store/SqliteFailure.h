// SQLite's failures in the words of the program.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Failure.h"
#include "sqlite/Error.h"

#include <QString>

namespace velmora {

// path: machine path of the database, for the text. The number is SQLite's extended code.
[[nodiscard]] Error FailureOf(const sqlite::Error& error, const QString& path);

// Runs the work; what SQLite throws leaves as FailureOf.
template <class Work> auto Told(const QString& path, Work&& work) -> decltype(work()) {
    try {
        return work();
    } catch (const sqlite::Error& error) {
        throw FailureOf(error, path);
    }
}

} // namespace velmora
