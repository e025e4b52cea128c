// Tells a person what is wrong with a request.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/SearchJob.h"

#include <QString>

namespace velmora {

// What made a search impossible, as sentences in the language of this run. For a malformed request
// the sentence names the character, counted from 1. Only for results with a fault.
QString RequestMessage(const engine::SearchResults& results);

// Where the caret goes in the box that holds the request: an index from 0 for an edit control,
// whose characters may count double. position: in characters from 1.
int CaretPosition(const QString& text, std::size_t position);

} // namespace velmora
