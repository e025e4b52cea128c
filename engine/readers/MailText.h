// A plain text body as paragraphs and quotes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/readers/DocumentSink.h"

#include <string_view>

namespace engine {

struct MailTextRules {
    bool flowed = false;        // format=flowed: a blank at the end joins a line to the next
    bool deletesBlanks = false; // delsp=yes: that blank falls away
};

// Empty lines part paragraphs; what stands behind ">" is a quote. Blocks of an encrypted or signing
// program's armour are left out. Answers whether there was an encrypted one.
[[nodiscard]] bool EmitMailText(std::string_view utf8, const MailTextRules& rules,
                                DocumentSink& sink);

} // namespace engine
