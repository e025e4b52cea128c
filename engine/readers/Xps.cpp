// Placeholder.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Reader.h"

namespace engine {

void ReadXps(const Source&, DocumentSink&) { throw ReadError(ReadState::Unknown, "no reader for this kind of file"); }

} // namespace engine
