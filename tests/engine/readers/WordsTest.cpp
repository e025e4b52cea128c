// Words and blocks on their way to the index: what hostile bytes in them may not do.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Flow.h"
#include "engine/readers/Limits.h"
#include "engine/text/Tokenizer.h"
#include "tests/engine/readers/RecordingSink.h"

#include <gtest/gtest.h>

namespace engine {
namespace {

// Terms travel one a line, and a control character before one says that it shares a place.
TEST(Words, NoneHoldsTheMarksThatPartThem) {
    Tokenizer tokenizer;
    for (const Word& word : tokenizer.Split("scan \x01 \x01\x01 word", WordRule::Blanks))
        EXPECT_NE(word.term.front(), '\x01');
    EXPECT_EQ(tokenizer.Split("a \x01 b", WordRule::Blanks).size(), 3U)
        << "its number counts all the same";
    for (const char* line : {"letter U+000A", "letter U+0001", "letter U+0000-U+00FF"})
        EXPECT_THROW((void)Alphabet::Parse(line), AlphabetError) << line;
    EXPECT_NO_THROW((void)Alphabet::Parse("ignored U+0001\nseparator U+000A\nletter U+0021"));
}

TEST(Words, AreNotCutBehindStrayBytes) {
    Tokenizer tokenizer;
    EXPECT_EQ(tokenizer.LastCut("one \x8B\x9Ftwo", WordRule::Blanks), 4U);
    EXPECT_EQ(tokenizer.LastCut("one \x8B\x9F", WordRule::Blanks), 4U);
}

// Where a document nests too deeply, a cell still stands in a row and a row in a table.
TEST(Flow, KeepsTablesWholeAtItsDeepest) {
    for (std::size_t depth = kMaxBlockDepth - 8; depth < kMaxBlockDepth + 2; ++depth) {
        RecordingSink sink;
        Flow flow(sink);
        for (std::size_t i = 0; i < depth; ++i)
            flow.Open(Block::Quote);
        flow.Open(Block::Cell);
        flow.Text("cell");
        flow.Close(Block::Cell);
        flow.Finish();
        EXPECT_TRUE(sink.Whole());
        EXPECT_EQ(sink.text.find("[td]") == std::string::npos,
                  sink.text.find("[table][tr][td]") == std::string::npos)
            << depth << ' ' << sink.text;
        EXPECT_NE(sink.text.find("cell"), std::string::npos);
    }
}

} // namespace
} // namespace engine
