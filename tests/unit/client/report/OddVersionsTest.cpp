// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/OddVersions.h"

#include "unit/client/report/Cards.h"

#include <gtest/gtest.h>

namespace
{

const FleetCard oldKernel = cardWith({{"kernel", "1"}, {"application", "5"}});
const FleetCard newKernel = cardWith({{"kernel", "2"}, {"application", "5"}});
const FleetCard noKernel = cardWith({{"application", "5"}});
const FleetCard silent;

OddVersions::Usual usualVersion(std::optional<std::string> version)
{
    return {true, std::move(version)};
}

TEST(OddVersionsTest, WhatMostHaveIsUsual)
{
    const OddVersions odd({newKernel, oldKernel, oldKernel});
    EXPECT_EQ(odd.usual("kernel"), usualVersion("1"));
    EXPECT_TRUE(odd.isOdd("kernel", "2"));
    EXPECT_FALSE(odd.isOdd("kernel", "1"));
}

TEST(OddVersionsTest, ACardIsOddIfOneOfItsComponentsIs)
{
    const OddVersions odd({newKernel, oldKernel, oldKernel});
    EXPECT_TRUE(odd.isOdd(newKernel));
    EXPECT_FALSE(odd.isOdd(oldKernel));
}

TEST(OddVersionsTest, WithoutAMajorityAllDiffer)
{
    const OddVersions odd({newKernel, oldKernel});
    EXPECT_FALSE(odd.usual("kernel").exists);
    EXPECT_TRUE(odd.isOdd(newKernel));
    EXPECT_TRUE(odd.isOdd(oldKernel));
}

TEST(OddVersionsTest, WhoLacksWhatMostHaveIsOdd)
{
    const OddVersions odd({oldKernel, noKernel, oldKernel});
    EXPECT_TRUE(odd.isOdd(noKernel));
}

TEST(OddVersionsTest, WhoHasWhatMostLackIsOdd)
{
    const OddVersions odd({oldKernel, noKernel, noKernel});
    EXPECT_EQ(odd.usual("kernel"), usualVersion({}));
    EXPECT_TRUE(odd.isOdd(oldKernel));
    EXPECT_FALSE(odd.isOdd(noKernel));
}

TEST(OddVersionsTest, WhoToldNothingCountsForNothing)
{
    const OddVersions odd({silent, silent, oldKernel});
    EXPECT_EQ(odd.usual("kernel"), usualVersion("1"));
    EXPECT_FALSE(odd.isOdd(silent));
    EXPECT_TRUE(OddVersions({silent}).components().empty());
}

TEST(OddVersionsTest, ComponentsAreInTheOrderInWhichTheyCame)
{
    EXPECT_EQ(OddVersions({noKernel, oldKernel}).components(), (std::vector<std::string>{"application", "kernel"}));
}

TEST(OddVersionsTest, AComponentThatIsToldTwiceHasBothVersions)
{
    EXPECT_EQ(OddVersions::versionAt(cardWith({{"kernel", "1"}, {"kernel", "2"}}), "kernel"), "1 / 2");
}

} // namespace
