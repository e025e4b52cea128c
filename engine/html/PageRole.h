// The worker role "page": a document as HTML with its hits.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/html/PageRequest.h"
#include "workers/Child.h"

namespace engine {

// The answer's frames are pieces of HTML. A member that is not there any more, and a document
// that cannot be read, end with Refused.
[[nodiscard]] workers::Role MakePageRole();

} // namespace engine
