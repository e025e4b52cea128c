// Asks the index for words.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/WordList.h"

#include "search/TextQuery.h"

#include <exception>

namespace velmora {

namespace {

constexpr int kRange = 5; // words each way

qsizetype LastWordBegin(const QString& text) {
    qsizetype at = text.size();
    while (at > 0 && !QStringView(u" (\"").contains(text[at - 1])) {
        --at;
    }
    return at;
}

} // namespace

QString LastWord(const QString& text) {
    return text.mid(LastWordBegin(text));
}

std::vector<engine::ListedWord> LoadWordList(const QString& text) {
    const QString word = LastWord(text);
    std::vector<engine::ListedWord> words;
    try {
        engine::WordListBuilder builder;
        if (word.isEmpty() || !builder.OpenIndex(IndexFolder(), AlphabetFile())) {
            return {};
        }
        builder.ListWords(word, kRange);
        for (int index = 0; index < builder.Count(); ++index) {
            words.push_back(builder.Word(index));
        }
    } catch (const std::exception&) {
        // A help to typing must not interrupt it: the search itself tells what is wrong.
        words.clear();
    }
    return words;
}

QString ReplaceLastWord(const QString& text, const QString& word) {
    return text.left(LastWordBegin(text)) + word;
}

} // namespace velmora
