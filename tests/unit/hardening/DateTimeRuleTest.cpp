// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/DateTimeRule.h"

#include <gtest/gtest.h>

TEST(DateTimeRuleTest, TheLastSecondOf32BitsFits)
{
    EXPECT_TRUE(fitsClock("2038-01-19T03:14:07", 0x7FFFFFFF));
    EXPECT_FALSE(fitsClock("2038-01-19T03:14:08", 0x80000000));
}

TEST(DateTimeRuleTest, TheFirstSecondOf32BitsFits)
{
    EXPECT_TRUE(fitsClock("1901-12-13T20:45:52", -0x80000000LL));
    EXPECT_FALSE(fitsClock("1901-12-13T20:45:51", -0x80000001LL));
}

TEST(DateTimeRuleTest, ANumberThatIsTooLongDoesNotFitWhateverItCameTo)
{
    EXPECT_TRUE(fitsClock("999999999-01-01T00:00:00", 0));
    EXPECT_FALSE(fitsClock("4294969317-01-01T00:00:00", 0));
    EXPECT_FALSE(fitsClock("2021-01-01T00:00:1000000000", 0));
}

TEST(DateTimeRuleTest, ZerosInFrontOfANumberDoNotCount)
{
    EXPECT_TRUE(fitsClock("00000000002021-000000000001-01T00:00:00000000000", 0));
}

TEST(DateTimeRuleTest, ATextWithoutANumberHasNoneThatIsTooLong)
{
    EXPECT_TRUE(fitsClock("", 0));
    EXPECT_TRUE(fitsClock("T", 0));
}
