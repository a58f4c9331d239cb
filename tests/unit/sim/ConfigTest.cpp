// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "sim/uci/Config.h"

#include "sim/uci/ConfigParser.h"
#include "sim/uci/UciError.h"

#include <gtest/gtest.h>

namespace
{

class ConfigTest : public testing::Test
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

TEST_F(ConfigTest, FindsASectionByName)
{
    EXPECT_EQ(nameOf("n"), "second");
}

TEST_F(ConfigTest, CountsTheSectionsOfATypeFromZero)
{
    EXPECT_EQ(nameOf("@t[1]"), "third");
}

TEST_F(ConfigTest, ANegativeIndexCountsFromTheEnd)
{
    EXPECT_EQ(nameOf("@t[-2]"), "first");
}

TEST_F(ConfigTest, AnIndexWithoutTypeCountsAllSections)
{
    EXPECT_EQ(nameOf("@[1]"), "second");
}

TEST_F(ConfigTest, AnIndexBehindTheLastFindsNothing)
{
    EXPECT_EQ(nameOf("@t[2]"), "(none)");
}

TEST_F(ConfigTest, AnIndexBeforeTheFirstFindsNothing)
{
    EXPECT_EQ(nameOf("@t[-3]"), "(none)");
}

TEST_F(ConfigTest, WhatIsNeitherNameNorIndexIsRefused)
{
    for (const char* selector : {"@t[x]", "@t", "t-u", ""}) {
        EXPECT_THROW(nameOf(selector), UciError) << selector;
    }
}

TEST_F(ConfigTest, AnAnonymousSectionIsNamedAfterItsNumberAndType)
{
    EXPECT_EQ(package.sections[2].name, "cfg03b619");
}

TEST_F(ConfigTest, AnAnonymousSectionIsShownByTypeAndIndex)
{
    EXPECT_EQ(package.displayName(package.sections[2]), "@t[1]");
}

TEST_F(ConfigTest, ANamedSectionIsShownByName)
{
    EXPECT_EQ(package.displayName(package.sections[1]), "n");
}

} // namespace
