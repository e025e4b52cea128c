// What the engine answers, worded for people: faults, reading states and reasons.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/IndexJob.h"

#include <QString>

namespace velmora {

// Why an index cannot be used, as sentences. The system's own words follow on a line of their own
// where they help: a damaged index, missing rights, a fault without a name.
QString FaultMessage(engine::IndexFault fault, const QString& systemWords);

// How far a document could be read: "Encrypted".
QString StateMessage(engine::ReadState state);

// The engine's English clauses, parted by "; ", in the language of this run:
//   "2 of 9 pages are damaged" gives "beschädigte Seiten: 2 von 9"
// A clause that is not known stays as it is.
QString ReasonMessage(const QString& reason);

} // namespace velmora
