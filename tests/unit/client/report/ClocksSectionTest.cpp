// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Sections.h"

#include "unit/client/report/Cards.h"

#include <gtest/gtest.h>

namespace
{

std::string clocksOf(std::vector<FleetCard> cards)
{
    return clocksSection(Fleet(std::move(cards))).text();
}

TEST(ClocksSectionTest, EachClockIsADot)
{
    const std::string text = clocksOf({cardNamed("card1", "1", 0.25), cardNamed("card2", "1", -7200)});
    EXPECT_EQ(countOf(text, "<circle "), 2U);
    EXPECT_TRUE(has(text, "<title>card2: \u22122.0 h</title>"));
    EXPECT_TRUE(has(text, "From \u22122.0 h (card2) to +0.2 s (card1); 1 of 2 within a second."));
}

TEST(ClocksSectionTest, AClockThatIsOffForSureIsMarked)
{
    EXPECT_TRUE(has(clocksOf({cardNamed("card1", "1", 1.6)}), "data-marks=\"off\""));
    EXPECT_FALSE(has(clocksOf({cardNamed("card1", "1", 1.4)}), "data-marks"));
}

TEST(ClocksSectionTest, TheDotsOfAThousandCardsStayWithinThePicture)
{
    std::vector<FleetCard> cards;
    for (int number = 0; number < 1000; ++number) {
        cards.push_back(cardNamed("card" + std::to_string(number), "1", 0.1));
    }
    const std::string text = clocksOf(std::move(cards));
    EXPECT_EQ(countOf(text, "<circle "), 1000U);
    EXPECT_FALSE(has(text, "cy=\"-"));
}

} // namespace
