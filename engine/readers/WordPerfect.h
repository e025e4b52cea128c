// Which files the libraries for old word processors and spreadsheets are asked about.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Source.h"

namespace engine {

// Whether source is a document of WordPerfect, Works, Write, Lotus, Quattro or their like that
// ReadWordPerfect reads. Cheap for what neither begins nor is named like one of them; ordinary
// text is never taken for one.
[[nodiscard]] bool IsOldOfficeDocument(const Source& source);

} // namespace engine
