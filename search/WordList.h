// The words of the index next to what is being typed.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/WordList.h"

#include <QString>
#include <vector>

namespace velmora {

// From this many characters in the box on, words are listed.
inline constexpr int kWordListFrom = 3;

// What stands behind the last blank, opening parenthesis or quotation mark.
QString LastWord(const QString& text);

// The words of the open archive's index around the last word of the text, at most 11, in the order
// of the index. Empty without a last word or without an index.
std::vector<engine::ListedWord> LoadWordList(const QString& text);

// The text with another word in place of its last one; runs of blanks stay.
QString ReplaceLastWord(const QString& text, const QString& word);

} // namespace velmora
