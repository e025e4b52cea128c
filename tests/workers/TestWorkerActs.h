// What a process may try that was taken over by a hostile document.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <functional>
#include <map>
#include <string>

// Acts by name. Each answers 0 when the system let it happen, otherwise errno. folder is one that
// this user may write to, with a file "secret" in it; file is open for reading.
using Act = std::function<int(const std::string& folder, int file)>;
const std::map<std::string, Act>& Acts();
