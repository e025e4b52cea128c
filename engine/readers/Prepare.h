// What the readers' libraries would open on demand, opened beforehand.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace engine {

// Loads the tables of the charsets that mail headers use and the locale of archive member names.
// A process that gives up the right to open files calls it first; elsewhere it need not be called.
// Cheap when repeated; thread-safe.
void PrepareReaders();

} // namespace engine
