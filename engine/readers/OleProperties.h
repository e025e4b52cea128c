// What a compound file says of itself: title, author and the like, out of its property sets.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/CompoundFile.h"
#include "engine/readers/DocumentSink.h"

namespace engine {

// Title, subject, author, keywords, comments, category, manager, company, status, and the
// properties of the document's own under their own names, as fields; storage is the folder whose
// properties are meant, the root by default. Missing or damaged properties are passed over.
void ReadOleProperties(const CompoundFile& file, DocumentSink& sink, std::string_view storage = {});

} // namespace engine
