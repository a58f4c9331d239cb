// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Sections.h"

#include "unit/client/report/Cards.h"

#include <gtest/gtest.h>

namespace
{

FleetCard cardAt(const std::string& label, const std::string& address, const std::string& heardFrom)
{
    return cardOf(label, {fixed("VemkEth1", address), leased("VemkEth2")}, heardFrom);
}

std::string sectionOf(std::vector<FleetCard> cards)
{
    return addressesSection(Fleet(std::move(cards))).text();
}

TEST(AddressesSectionTest, BothInterfacesAreShown)
{
    const std::string text = sectionOf({cardAt("card1", "10.0.0.1", "10.0.0.1")});
    EXPECT_TRUE(has(text, "<td>10.0.0.1<small> 255.255.255.0, gateway 10.0.0.254</small></td>"));
    EXPECT_TRUE(has(text, ">Dhcp</td>"));
    EXPECT_FALSE(has(text, "doubled"));
}

TEST(AddressesSectionTest, ADoubledAddressNamesWhoHasItToo)
{
    const std::string text =
        sectionOf({cardAt("card1", "10.0.0.1", "10.0.0.1"), cardAt("card2", "10.0.0.1", "10.0.0.1")});
    EXPECT_TRUE(has(text, "doubled: "));
    EXPECT_TRUE(has(text, "also card2"));
    EXPECT_TRUE(has(text, "also card1"));
}

TEST(AddressesSectionTest, OfManyWhoHaveAnAddressSomeAreNamed)
{
    std::vector<FleetCard> cards;
    for (const char* label : {"a", "b", "c", "d", "e", "f"}) {
        cards.push_back(cardAt(label, "10.0.0.1", "10.0.0.1"));
    }
    EXPECT_TRUE(has(sectionOf(std::move(cards)), "also b, c, d and 2 more"));
}

TEST(AddressesSectionTest, ATargetThatIsAnAddressCouldNotBeAsked)
{
    FleetCard card;
    card.label = card.address = "10.0.0.9";
    card.components.emplace(1, Component{"kernel", "1"});
    EXPECT_TRUE(has(sectionOf({card}), "not asked: only a name can be asked"));
    card.isAskedByName = true;
    EXPECT_TRUE(has(sectionOf({card}), "did not tell its settings"));
}

TEST(AddressesSectionTest, ANameThatAnswersFromElsewhereIsMarked)
{
    FleetCard card = cardAt("card1", "10.0.0.1", "10.0.0.1");
    card.address = "10.0.0.7";
    EXPECT_TRUE(has(sectionOf({card}), "its name answers from 10.0.0.1"));
    card.address = "10.0.0.1";
    EXPECT_FALSE(has(sectionOf({card}), "its name answers"));
}

TEST(AddressesSectionTest, WhoDidNotAnswerHasNoRow)
{
    FleetCard silent;
    silent.label = "card9";
    EXPECT_FALSE(has(sectionOf({cardAt("card1", "10.0.0.1", "10.0.0.1"), silent}), "card9"));
}

} // namespace
