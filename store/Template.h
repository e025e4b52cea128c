// The empty database of a new archive.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "store/Schema.h"

namespace velmora {

// The nine tables of a new database. The tenth, of the stamps, comes with its first opening.
const QList<Table>& TemplateTables();
const Table& StampTable();

// Makes the folder "\indexes" and "\db.mdb" in an existing folder (logical path). The database
// appears under its name whole or not at all; one that is there already is never touched, and is a
// failure (kDatabaseExists). Throws velmora::Error. Can be repeated after a failure.
void CreateDatabase(const QString& folder);

} // namespace velmora
