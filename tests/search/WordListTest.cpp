// Words of the index next to what is being typed.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/WordList.h"
#include "search/TextQuery.h"
#include "tests/search/SearchFixture.h"

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

using WordListTest = SearchTest;

std::string Listed(const QString& text) {
    std::string words;
    for (const engine::ListedWord& word : LoadWordList(text)) {
        words += (words.empty() ? "" : " ") + word.word.toStdString() + ":" +
                 std::to_string(word.documents);
    }
    return words;
}

TEST_F(WordListTest, ListsFiveWordsEachWayAroundTheLastOne) {
    Write(u"a.txt"_s, "b1 b2 b3 b4 b5 b6 b7 città x1 x2 x3 x4 x5 x6 x7");
    Write(u"b.txt"_s, "CITTÀ citta");
    Index();
    const std::string around = "b3:1 b4:1 b5:1 b6:1 b7:1 citta:2 x1:1 x2:1 x3:1 x4:1 x5:1";
    EXPECT_EQ(Listed(u"red and Città"_s), around);
    EXPECT_EQ(Listed(u"red and (\"città"_s), around);
    EXPECT_EQ(Listed(u"c"_s), around); // the nearest behind it
    EXPECT_EQ(Listed(u"b1"_s), "b1:1 b2:1 b3:1 b4:1 b5:1 b6:1");
    EXPECT_EQ(Listed(u"citta "_s), ""); // no last word
    EXPECT_EQ(Listed(QString()), "");
}

TEST_F(WordListTest, IsEmptyWithoutAnIndexOrWithABrokenOne) {
    EXPECT_EQ(Listed(u"word"_s), "");
    Write(u"a.txt"_s, "word");
    Index();
    EXPECT_EQ(Listed(u"word"_s), "word:1");
    WriteFile(platform::ToMachine(IndexFolder() + u"index_a.ix"_s), QByteArray(9000, 'x'));
    EXPECT_EQ(Listed(u"word"_s), "");
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(WordListTest, ReplacesTheLastWordAndNothingElse) {
    EXPECT_EQ(ReplaceLastWord(u"red  and ca"_s, u"car"_s), u"red  and car"_s);
    EXPECT_EQ(ReplaceLastWord(u"ca"_s, u"car"_s), u"car"_s);
    EXPECT_EQ(ReplaceLastWord(u"red "_s, u"car"_s), u"red car"_s);
    EXPECT_EQ(ReplaceLastWord(u"(red or (ca"_s, u"car"_s), u"(red or (car"_s);
    EXPECT_EQ(ReplaceLastWord(QString(), u"car"_s), u"car"_s);
}

} // namespace
} // namespace velmora
