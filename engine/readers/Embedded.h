// Hands out the documents that an office package holds besides its own text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/OpenXml.h"

#include <string>

namespace engine {

// What lies in the folders "embeddings", but for the numbers behind charts, whose words are in the
// text already.
void DeliverEmbedded(OpenXmlPackage& package, MemberSink& members);

} // namespace engine
