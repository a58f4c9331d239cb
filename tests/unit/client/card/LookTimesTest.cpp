// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/LookTimes.h"

#include <gtest/gtest.h>

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

const TimePoint start{seconds(1000)};
const LookTimes looks(start, Seconds(5));

TEST(LookTimesTest, AreTwoSecondsFromOneBeginningToTheNext)
{
    EXPECT_EQ(looks.nextAfter(start), start + seconds(2));
    EXPECT_EQ(looks.nextAfter(start + seconds(2)), start + seconds(4));
}

TEST(LookTimesTest, EndWithALookWhenTheTimeIsOver)
{
    EXPECT_EQ(looks.nextAfter(start + seconds(4)), start + seconds(5));
    EXPECT_EQ(looks.nextAfter(start + seconds(9)), start + seconds(5));
    EXPECT_FALSE(looks.areOver(start + milliseconds(4999)));
    EXPECT_TRUE(looks.areOver(start + seconds(5)));
}

} // namespace
