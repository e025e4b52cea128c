// Synonyms from the user's thesaurus file and from WordNet's files.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/query/Thesaurus.h"
#include "engine/text/Tokenizer.h"

#include <QString>

#include <map>
#include <memory>
#include <string>

namespace engine {

// Reads <Item><Name>…</Name><Synonyms>word, "two words", …</Synonyms></Item> entries. Each word
// of an entry stands for all the others of it. A missing file gives an empty thesaurus; a
// malformed one what could be read before the fault.
[[nodiscard]] std::unique_ptr<Thesaurus> ReadUserThesaurus(const QString& logicalPath,
                                                           Tokenizer& tokenizer);

// WordNet's data files as Debian lays them; null where they are not installed. related: with the
// words one step more general or more special too.
[[nodiscard]] std::unique_ptr<Thesaurus> OpenWordNet(Tokenizer& tokenizer, bool related);

} // namespace engine
