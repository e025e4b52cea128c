// Office documents that are one XML file: spreadsheets and texts of 2003, and packages laid flat.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Flow.h"
#include "engine/readers/XmlSax.h"

#include <memory>

namespace engine {

// What reads a document with this root; the root itself is not passed to it. Null where it is
// another vocabulary. flow and sink, which takes the properties, outlive the handler.
[[nodiscard]] std::unique_ptr<XmlHandler> MakeOfficeXmlReader(const XmlElement& root, Flow& flow,
                                                              DocumentSink& sink);

} // namespace engine
