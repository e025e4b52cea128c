// The formats of a workbook's cells, from its styles part.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/NumberFormats.h"
#include "engine/readers/OpenXml.h"

#include <string_view>

namespace engine {

// Adds what the styles part says; a missing one leaves all numbers plain.
void ReadXlsxFormats(OpenXmlPackage& package, std::string_view part, NumberFormats& formats);

} // namespace engine
