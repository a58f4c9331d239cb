// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/DoubledAddresses.h"

#include "unit/client/report/Cards.h"

#include <gtest/gtest.h>

namespace
{

const FleetCard one = cardOf("one", {fixed("VemkEth1", "10.0.0.1")}, "10.0.0.1");
const FleetCard two = cardOf("two", {fixed("VemkEth1", "10.0.0.2")}, "10.0.0.2");
const FleetCard likeOne = cardOf("likeOne", {fixed("VemkEth2", "10.0.0.1")}, "10.0.0.3");

TEST(DoubledAddressesTest, AnAddressOfOneCardIsNotDoubled)
{
    const DoubledAddresses doubled({one, two});
    EXPECT_EQ(doubled.count(), 0U);
    EXPECT_FALSE(doubled.hasDoubled(one));
}

TEST(DoubledAddressesTest, AnAddressOfTwoCardsIsDoubled)
{
    const DoubledAddresses doubled({one, two, likeOne});
    EXPECT_EQ(doubled.count(), 1U);
    EXPECT_TRUE(doubled.isDoubled("10.0.0.1"));
    EXPECT_TRUE(doubled.hasDoubled(one));
    EXPECT_FALSE(doubled.hasDoubled(two));
}

TEST(DoubledAddressesTest, TheOthersThatHaveItAreKnown)
{
    EXPECT_EQ(DoubledAddresses({one, two, likeOne}).othersWith("10.0.0.1", "one"), std::vector<std::string>{"likeOne"});
}

TEST(DoubledAddressesTest, AnAddressOfBothInterfacesIsDoubled)
{
    const FleetCard card = cardOf("c", {fixed("VemkEth1", "10.0.0.1"), fixed("VemkEth2", "10.0.0.1")}, "10.0.0.1");
    const DoubledAddresses doubled({card});
    EXPECT_TRUE(doubled.hasDoubled(card));
    EXPECT_TRUE(doubled.othersWith("10.0.0.1", "c").empty());
}

TEST(DoubledAddressesTest, WhereACardIsHeardFromCounts)
{
    const FleetCard card = cardOf("card", {leased("VemkEth1")}, "10.0.0.1");
    EXPECT_TRUE(DoubledAddresses({one, card}).hasDoubled(card));
}

TEST(DoubledAddressesTest, ToHaveNoAddressIsNoAddress)
{
    const std::vector<FleetCard> lost = {cardOf("lost1", {}, "0.0.0.0"), cardOf("lost2", {}, "0.0.0.0")};
    EXPECT_EQ(DoubledAddresses(lost).count(), 0U);
}

TEST(DoubledAddressesTest, ATargetThatIsAnAddressMayBeANamedCard)
{
    FleetCard byAddress;
    byAddress.label = byAddress.address = "10.0.0.1";
    EXPECT_EQ(DoubledAddresses({one, byAddress}).count(), 0U);
}

} // namespace
