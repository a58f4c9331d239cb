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

class ChangeSinceTest : public testing::Test
{
protected:
    static Identified heard(const std::set<Sender>& senders, const std::string& text = "settings")
    {
        Identified card;
        card.target = {"card1", "card1", std::nullopt};
        Reply reply;
        reply.payload.assign(text.size(), static_cast<std::byte>(text.front()));
        card.target.heard = CardReply{reply, senders.begin()->first, senders.begin()->second};
        card.heardAt = senders;
        for (const auto& [address, interface] : senders) {
            card.heardFrom.push_back(address);
        }
        return card;
    }
    static Identified given(const std::string& interface)
    {
        Identified card;
        card.target = {"10.0.0.13", "", Endpoint{"10.0.0.13", cardPort, interface}};
        return card;
    }
};

TEST_F(ChangeSinceTest, AnotherAddressIsAnotherCardUnlessTheSettingsHaveIt)
{
    Identified before = heard({{"10.0.0.11", "lan0"}, {"10.0.1.11", "lan1"}});
    EXPECT_FALSE(changeSince(before, heard({{"10.0.0.11", "lan0"}})));
    EXPECT_FALSE(changeSince(before, heard({{"10.0.1.11", "lan1"}, {"10.0.0.99", "lan0"}})));
    EXPECT_EQ(changeSince(before, heard({{"10.0.0.99", "lan0"}})),
              "another card may have this name now: it answered from 10.0.0.11 on lan0 and 10.0.1.11 on lan1 before, "
              "and from 10.0.0.99 on lan0 now");
    EXPECT_TRUE(changeSince(before, heard({{"10.0.0.11", "lan1"}}))); // that address may be another's there
    before.stated = {"10.0.0.99"};
    EXPECT_FALSE(changeSince(before, heard({{"10.0.0.99", "lan0"}})));
}

TEST_F(ChangeSinceTest, OtherSettingsMayBeThoseOfAnotherCard)
{
    const Identified before = heard({{"10.0.0.11", "lan0"}});
    const std::optional<std::string> change = changeSince(before, heard({{"10.0.0.11", "lan0"}}, "x"));
    ASSERT_TRUE(change);
    EXPECT_NE(change->find("tells other settings"), std::string::npos);
}

TEST_F(ChangeSinceTest, SilenceSaysNothing)
{
    EXPECT_FALSE(changeSince(heard({{"10.0.0.11", "lan0"}}), given("")));
    EXPECT_FALSE(changeSince(given("lan0"), given("")));
    EXPECT_FALSE(changeSince(given(""), given("lan0")));
}

TEST_F(ChangeSinceTest, AnAddressThatAnswersElsewhereMayBeAnotherCards)
{
    EXPECT_FALSE(changeSince(given("lan0"), given("lan0")));
    EXPECT_EQ(changeSince(given("lan0"), given("lan1")),
              "another card may have this address now: it answered on lan0 before, and on lan1 now");
}

} // namespace
