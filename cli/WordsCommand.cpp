// velmora words: the words of the index that begin as given.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Commands.h"
#include "cli/Ending.h"
#include "cli/IndexFaults.h"
#include "cli/Json.h"
#include "cli/Session.h"
#include "core/Messages.h"
#include "engine/WordList.h"
#include "search/TextQuery.h"

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kNoMatch = 183;

// Signs that are part of no word leave an empty beginning, which every word has.
bool BeginsAWord(const QString& prefix) {
    const QList<uint> characters = prefix.toUcs4();
    return std::any_of(characters.begin(), characters.end(), [](char32_t character) {
        return QChar::isLetterOrNumber(character) || QChar::isMark(character);
    });
}

} // namespace

int RunWords(const Arguments& arguments, Output& output) {
    const QString prefix = TextOf(arguments.Operands().front());
    OpenArchive(arguments);
    // The list of words tells only that there is no usable index; a search tells why.
    ThrowOnFault(MakeSearchJob({}, false).Execute());
    engine::WordListBuilder words;
    if (BeginsAWord(prefix) && words.OpenIndex(IndexFolder(), AlphabetFile())) {
        words.ListPrefix(prefix, std::numeric_limits<int>::max());
    }
    // Most documents first: the first number is the widest.
    const auto width = words.Count() == 0 ? 0 : QString::number(words.Word(0).documents).size();
    for (int index = 0; index < words.Count(); ++index) {
        const engine::ListedWord& word = words.Word(index);
        if (arguments.Has("--json")) {
            output.Utf8(JsonLine(
                {{u"word"_s, word.word}, {u"documents"_s, static_cast<qint64>(word.documents)}}));
        } else {
            output.Line(QString::number(word.documents).rightJustified(width) + u"  "_s +
                        word.word);
        }
    }
    if (words.Count() == 0) {
        output.Note(GetMessage(kNoMatch));
        return kIncomplete;
    }
    return kDone;
}

} // namespace velmora
