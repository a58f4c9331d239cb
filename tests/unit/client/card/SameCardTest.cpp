// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/SameCard.h"

#include <gtest/gtest.h>

namespace
{

class SameCardTest : public testing::Test
{
protected:
    SameCardTest()
    {
        cards[0].target.name = "card1";
        cards[0].heardFrom = {"10.0.0.11"};
        cards[0].heardAt = {{"10.0.0.11", "lan0"}};
        cards[0].stated = {"10.0.0.11", "10.0.1.11"};
        cards[1].target = {"10.0.1.11", "", Endpoint{"10.0.1.11"}};
    }

    void probed(const std::vector<Sender>& senders)
    {
        Census census;
        for (const auto& [address, interface] : senders) {
            census.note({{}, address, cardPort, interface});
        }
        disbelieve(cards, census);
        markTwice(cards);
    }

    std::vector<Identified> cards = std::vector<Identified>(2);
};

TEST_F(SameCardTest, TakesAnAddressThatACardSaysThatItHasForThatCard)
{
    probed({{"10.0.0.11", "lan0"}});
    EXPECT_EQ(cards[1].sameAs, 0U);
}

TEST_F(SameCardTest, TakesWhoAnswersThereForAnother)
{
    probed({{"10.0.0.11", "lan0"}, {"10.0.1.11", "lan1"}});
    EXPECT_FALSE(cards[1].sameAs);
}

TEST_F(SameCardTest, TakesWhoWasHeardThereByTheNameForThatCard)
{
    cards[0].heardAt.insert({"10.0.1.11", "lan1"});
    probed({{"10.0.0.11", "lan0"}, {"10.0.1.11", "lan1"}});
    EXPECT_EQ(cards[1].sameAs, 0U);
}

} // namespace
