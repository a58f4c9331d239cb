// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/SkewScale.h"

#include <gtest/gtest.h>

namespace
{

std::string labelsOf(const SkewScale& scale)
{
    std::string labels;
    for (const SkewScale::Tick& tick : scale.ticks()) {
        labels += tick.label + " ";
    }
    return labels;
}

TEST(SkewScaleTest, AClockThatIsRightIsInTheMiddle)
{
    EXPECT_DOUBLE_EQ(SkewScale(0).position(0), 0.5);
    EXPECT_DOUBLE_EQ(SkewScale(1e9).position(0), 0.5);
}

TEST(SkewScaleTest, IsEvenToOneSecond)
{
    const SkewScale scale(0.7);
    EXPECT_DOUBLE_EQ(scale.position(0.5), 0.75);
    EXPECT_DOUBLE_EQ(scale.position(-1), 0);
}

TEST(SkewScaleTest, GoesByPowersOfTenBeyond)
{
    const SkewScale scale(3600);
    EXPECT_NEAR(scale.position(100) - scale.position(10), scale.position(1000) - scale.position(100), 1e-9);
    EXPECT_NEAR(scale.position(10) - scale.position(1), scale.position(1) - scale.position(0), 1e-9);
}

TEST(SkewScaleTest, BothSidesAreAlike)
{
    const SkewScale scale(86400);
    EXPECT_NEAR(scale.position(-77) + scale.position(77), 1, 1e-9);
}

TEST(SkewScaleTest, EndsWithTheNextUnitBeyondTheLargest)
{
    EXPECT_EQ(labelsOf(SkewScale(0.2)), "\u22121 s 0 +1 s ");
    EXPECT_EQ(labelsOf(SkewScale(61)), "\u22121 h \u22121 min \u22121 s 0 +1 s +1 min +1 h ");
}

TEST(SkewScaleTest, WhatIsBeyondAllUnitsLiesAtTheEnd)
{
    EXPECT_DOUBLE_EQ(SkewScale(1e12).position(1e12), 1);
    EXPECT_DOUBLE_EQ(SkewScale(1e12).position(-1e12), 0);
}

TEST(SkewScaleTest, ASkewIsToldInTheUnitThatFits)
{
    EXPECT_EQ(skewText(0.34), "+0.3 s");
    EXPECT_EQ(skewText(-119), "\u2212119.0 s");
    EXPECT_EQ(skewText(-120), "\u22122.0 min");
    EXPECT_EQ(skewText(86400.0 * 3), "+3.0 days");
    EXPECT_EQ(skewText(-86400.0 * 365 * 20), "\u221220.0 years");
}

TEST(SkewScaleTest, NoSkewHasNoSign)
{
    EXPECT_EQ(skewText(-0.01), "0.0 s");
}

} // namespace
