// What an XMP packet tells of a document.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace engine {

struct XmpProperties {
    std::string title;
    std::string author;   // several are joined by ", "
    std::string subject;  // the description
    std::string keywords; // joined by ", "
};

// Reads a packet (RDF in XML). What is missing or broken stays empty; never throws for its content.
[[nodiscard]] XmpProperties ReadXmp(std::string_view packet);

} // namespace engine
