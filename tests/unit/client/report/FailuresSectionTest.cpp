// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Sections.h"

#include "unit/client/report/Cards.h"

#include <gtest/gtest.h>

namespace
{

std::string failuresOf(std::vector<FleetCard> cards)
{
    return failuresSection(Fleet(std::move(cards))).text();
}

TEST(FailuresSectionTest, CardsThatFailedAlikeHaveOneSentence)
{
    const std::string text = failuresOf({silentCard("card1"), silentCard("card2")});
    EXPECT_EQ(countOf(text, "does not answer"), 1U);
    EXPECT_TRUE(has(text, "NAME does not answer"));
    EXPECT_TRUE(has(text, "<bdi>card1</bdi>"));
    EXPECT_TRUE(has(text, "<bdi>card2</bdi>"));
}

TEST(FailuresSectionTest, TheSentenceOfOneCardHasItsName)
{
    EXPECT_TRUE(has(failuresOf({silentCard("card1"), cardNamed("card2", "1", 0)}), ">card1 does not answer<"));
}

TEST(FailuresSectionTest, ANameThatTwoCardsHaveIsTold)
{
    const Fleet fleet({cardNamed("card1", "1", 0)}, {"card1: two <cards> have this name"});
    const std::string text = failuresSection(fleet).text();
    EXPECT_TRUE(has(text, "card1: two &lt;cards&gt; have this name"));
    EXPECT_FALSE(has(text, "All cards answered"));
}

} // namespace
