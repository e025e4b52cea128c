// Answers what needs no display, and tells when there is none.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <optional>

namespace velmora {

// For --help, --version and a machine without a display: does it, and answers the exit code.
// Nothing when the window is to be shown. Needs no application object; Qt would end the process
// when it finds no display.
std::optional<int> RunWithoutDisplay(int argc, char** argv);

} // namespace velmora
