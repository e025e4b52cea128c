// The worker role "read": a file in, the words and text of its documents out.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/ReadRequest.h"
#include "workers/Child.h"

namespace engine {

// A role that owns its tokenizer.
[[nodiscard]] workers::Role MakeReadRole();

} // namespace engine
