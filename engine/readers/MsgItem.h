// What contacts, appointments and tasks say besides a message's headers and body.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"
#include "engine/readers/MsgProperties.h"

#include <string_view>

namespace engine {

// A paragraph for each thing that is there, "Location: Room 4". messageClass is in small letters,
// such as "ipm.contact".
void EmitMsgItem(const MsgProperties& properties, const MsgNames& names,
                 std::string_view messageClass, DocumentSink& sink);

} // namespace engine
