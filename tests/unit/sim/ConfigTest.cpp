// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors

#include "sim/uci/Config.h"

#include <gtest/gtest.h>

#include "sim/uci/ConfigParser.h"

namespace
{

class PackageWithThreeSections : public testing::Test
{
protected:
    std::string nameOf(std::string_view selector) const
    {
        const Section* section = package.find(selector);
        return section == nullptr ? "(none)" : section->find("id")->values.front();
    }

    const Package package =
        parseConfig("test", "config t; option id first; config u n; option id second; config t; option id third");
};

TEST_F(PackageWithThreeSections, findsASectionByName)
{
    EXPECT_EQ(nameOf("n"), "second");
}

TEST_F(PackageWithThreeSections, countsTheSectionsOfATypeFromZero)
{
    EXPECT_EQ(nameOf("@t[1]"), "third");
}

TEST_F(PackageWithThreeSections, aNegativeIndexCountsFromTheEnd)
{
    EXPECT_EQ(nameOf("@t[-2]"), "first");
}

TEST_F(PackageWithThreeSections, anIndexWithoutTypeCountsAllSections)
{
    EXPECT_EQ(nameOf("@[1]"), "second");
}

TEST_F(PackageWithThreeSections, anIndexBehindTheLastFindsNothing)
{
    EXPECT_EQ(nameOf("@t[2]"), "(none)");
}

TEST_F(PackageWithThreeSections, anIndexBeforeTheFirstFindsNothing)
{
    EXPECT_EQ(nameOf("@t[-3]"), "(none)");
}

TEST_F(PackageWithThreeSections, anIndexThatIsNoNumberFindsNothing)
{
    EXPECT_EQ(nameOf("@t[x]"), "(none)");
}

TEST_F(PackageWithThreeSections, anAnonymousSectionIsShownByTypeAndIndex)
{
    EXPECT_EQ(package.displayName(package.sections[2]), "@t[1]");
}

TEST_F(PackageWithThreeSections, aNamedSectionIsShownByName)
{
    EXPECT_EQ(package.displayName(package.sections[1]), "n");
}

} // namespace
