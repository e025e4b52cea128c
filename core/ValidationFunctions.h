// Which characters a field editor lets pass.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace velmora {

// A letter of any script; Enter (13) and Backspace (8) count too, for key-press handlers.
bool IsAlphabetic(char32_t character);

} // namespace velmora
