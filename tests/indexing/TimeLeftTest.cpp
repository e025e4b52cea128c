// The estimate of the time that a run still takes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/TimeLeft.h"
#include "core/Globals.h"
#include "tests/core/Place.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace velmora {
namespace {

TEST(TimeLeftTest, NothingIsSaidUntilThereIsSomethingToGoBy) {
    TimeLeft left;
    EXPECT_FALSE(left.Left(1h));
    left.Tell(0, 0s);
    left.Tell(1, 100s); // looking for files took that long: it does not count
    EXPECT_FALSE(left.Left(200s));
    left.Tell(3, 102s);
    EXPECT_FALSE(left.Left(102s)) << "two seconds are too few";
    left.Tell(5, 104s);
    EXPECT_EQ(left.Left(104s), 95s);
    EXPECT_EQ(left.Left(104s + 500ms), 94s + 500ms);
    left.Tell(99, 150s);
    EXPECT_FALSE(left.Left(150s));
    // Another job of the same run begins anew.
    left.Tell(0, 160s);
    EXPECT_FALSE(left.Left(170s));
}

TEST(TimeLeftTest, ASlowStretchMakesItLonger) {
    TimeLeft left;
    left.Tell(1, 0s);
    left.Tell(51, 50s);
    EXPECT_EQ(left.Left(50s), 49s);
    EXPECT_GT(left.Left(110s), 90s) << "one percent takes a minute: it goes on like that";
    left.Tell(52, 110s);
    EXPECT_GT(left.Left(110s), 100s);
}

TEST(TimeLeftTest, ItIsWordedInMinutes) {
    const ScopedGlobals program;
    EXPECT_EQ(TimeLeftMessage(std::nullopt), QString());
    EXPECT_EQ(TimeLeftMessage(59s), u"Less than a minute left"_s);
    EXPECT_EQ(TimeLeftMessage(91s), u"About 2 min left"_s);
    EXPECT_EQ(TimeLeftMessage(3h + 5min), u"About 3 h 5 min left"_s);
}

} // namespace
} // namespace velmora
