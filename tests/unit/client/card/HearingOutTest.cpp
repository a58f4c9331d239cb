// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/HearingOut.h"

#include <gtest/gtest.h>

namespace
{

using std::chrono::milliseconds;
using std::chrono::seconds;

const TimePoint asked{seconds(1000)};

class HearingOutTest : public testing::Test
{
protected:
    HearingOut time{Seconds(5)};
};

TEST_F(HearingOutTest, IsAMomentForAFastCard)
{
    time.hear(asked, asked + milliseconds(1));
    EXPECT_EQ(time.end(), asked + milliseconds(301));
}

TEST_F(HearingOutTest, IsAsLongAgainForASlowOne)
{
    time.hear(asked, asked + seconds(2));
    EXPECT_EQ(time.end(), asked + seconds(4));
    time.hear(asked + seconds(2), asked + seconds(2)); // and no shorter for a fast one beside it
    EXPECT_EQ(time.end(), asked + seconds(4));
}

TEST_F(HearingOutTest, IsOneTimeOutForAnAnswerThatWasReadLate)
{
    time.hear(asked, asked + seconds(600)); // this program stood still meanwhile
    EXPECT_EQ(time.end(), asked + seconds(605));
}

TEST_F(HearingOutTest, IsOneTimeOutBehindTheAskingHoweverManyAnswerThen)
{
    time.hear(asked, asked + milliseconds(4900));
    time.endAsking(asked + seconds(5));
    for (int second = 6; second < 10; ++second) {
        time.hear(asked, asked + seconds(second));
    }
    EXPECT_EQ(time.end(), asked + seconds(10));
}

TEST_F(HearingOutTest, IsAMomentForWhoeverAnswersAtTheEnd)
{
    time.hear(asked, asked + milliseconds(4900));
    time.endAsking(asked + seconds(5));
    time.hear(asked, asked + milliseconds(9990));
    EXPECT_EQ(time.end(), asked + milliseconds(10290));
}

TEST_F(HearingOutTest, IsAMomentEvenIfTheTimeOutIsShorter)
{
    HearingOut hasty{Seconds(0.1)};
    hasty.hear(asked, asked + milliseconds(100));
    hasty.endAsking(asked + milliseconds(100));
    EXPECT_EQ(hasty.end(), asked + milliseconds(400));
}

TEST_F(HearingOutTest, IsOverIfNobodyAnswered)
{
    time.endAsking(asked);
    EXPECT_LT(time.end(), asked);
}

} // namespace
