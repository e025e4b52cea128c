// The fixed parts of the packages that a fuzzer's bytes are put into.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/Reader.h"

#include <string>
#include <string_view>

namespace fuzz {

// The document of that kind that input stands for: input itself, or where documents of this kind
// are zip packages or compound files and input is neither, the package whose main part it is
// (see CutParts for further parts).
[[nodiscard]] std::string DocumentOf(engine::Kind kind, std::string_view input);

// A file name whose ending fits.
[[nodiscard]] std::string NameOf(engine::Kind kind);

} // namespace fuzz
