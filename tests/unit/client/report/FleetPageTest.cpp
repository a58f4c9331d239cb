// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/FleetPage.h"

#include "client/report/PageFiles.h"
#include "unit/client/report/Cards.h"

#include <gtest/gtest.h>

namespace
{

std::string pageOf(std::vector<FleetCard> cards)
{
    return fleetPage({1767225600, 1767225603, "tarvelctl 1"}, Fleet(std::move(cards)));
}

TEST(FleetPageTest, BlanksAreFilledIn)
{
    EXPECT_EQ(filledIn("a{{one}}b{{two}}{{one}}c", {{"one", "1"}, {"two", "2"}}), "a1b21c");
}

TEST(FleetPageTest, WhatWasFilledInIsNoTemplate)
{
    EXPECT_EQ(filledIn("{{one}}{{two}}", {{"one", "{{two}}"}, {"two", "2"}}), "{{two}}2");
}

TEST(FleetPageTest, TheFilesOfThePageAreInTheProgram)
{
    EXPECT_TRUE(pageHtml.starts_with("<!DOCTYPE html>"));
    EXPECT_TRUE(has(pageOf({}), pageStyle));
    EXPECT_TRUE(has(pageOf({}), pageScript));
}

TEST(FleetPageTest, NoBlankIsLeft)
{
    EXPECT_FALSE(has(pageOf({cardNamed("card1", "1", 0)}), "{{"));
}

TEST(FleetPageTest, TellsWhenItWasLookedAndByWhat)
{
    const std::string page = pageOf({cardNamed("card1", "1", 0), silentCard("card2")});
    EXPECT_TRUE(has(page,
                    "2 cards, looked at <time datetime=\"2026-01-01T00:00:00Z\">2026-01-01 00:00:00 UTC</time> for 3 "
                    "seconds, by tarvelctl 1"));
}

TEST(FleetPageTest, AnEmptyFleetIsAPageToo)
{
    EXPECT_TRUE(has(pageOf({}), "0 of 0"));
}

} // namespace
