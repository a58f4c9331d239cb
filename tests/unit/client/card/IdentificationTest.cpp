// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Identification.h"

#include "support/FakeInterface.h"

#include <gtest/gtest.h>

namespace
{

class IdentificationTest : public testing::Test
{
protected:
    static Identified heard(const std::string& name, const std::string& address)
    {
        Identified card;
        card.target = {name, name, Endpoint{address}};
        card.heardFrom = {address};
        return card;
    }
    static Identified given(const std::string& address)
    {
        Identified card;
        card.target = {address, "", parseEndpoint(address)};
        return card;
    }
    static Identified unheard(const std::string& name, const std::string& address)
    {
        Identified card;
        card.target = {name, name, Endpoint{address}};
        return card;
    }
    static Identified refused(Identified card)
    {
        card.refusal = Failure{ExitCode::noAnswer, Category::notFound, "looking for the card", "silence"};
        return card;
    }
    void compare(Caution caution = {}) { Identification(network, Way::overTcp, caution).compare(cards); }
    void check(const Census& census) { Identification(network, Way::overTcp, {}).check(cards, census); }

    static Identified heardOn(const std::string& name, const std::string& address, const std::string& interface)
    {
        Identified card = heard(name, address);
        card.target.endpoint->interface = interface;
        card.heardAt = {{address, interface}};
        return card;
    }
    static Census answered(const std::vector<Sender>& senders)
    {
        Census census;
        for (const auto& [address, interface] : senders) {
            census.note({{}, address, cardPort, interface});
        }
        return census;
    }

    FakeInterface lan{"lan0", "10.0.0.1", "255.255.255.0"};
    EventLoop loop;
    Network network{loop, {}};
    std::vector<Identified> cards;
};

TEST_F(IdentificationTest, FindsNothingWrongWithDifferentCards)
{
    cards = {heard("card1", "10.0.0.11"), heard("card2", "10.0.0.12"), given("10.0.0.13")};
    compare();
    for (const Identified& card : cards) {
        EXPECT_FALSE(card.refusal || card.sameAs) << card.target.label;
    }
}

TEST_F(IdentificationTest, RefusesBothNamesOfOneAddress)
{
    cards = {heard("card1", "10.0.0.12"), heard("card2", "10.0.0.12"), heard("card3", "10.0.0.13")};
    compare();
    ASSERT_TRUE(cards[0].refusal && cards[1].refusal);
    EXPECT_EQ(cards[0].refusal->code, ExitCode::ambiguous);
    EXPECT_NE(cards[1].refusal->hint.find("card1 and card2 both lead to 10.0.0.12"), std::string::npos);
    EXPECT_FALSE(cards[2].refusal);
}

TEST_F(IdentificationTest, WarnsOnlyIfTheUserKnowsBetter)
{
    cards = {heard("card1", "10.0.0.12"), heard("card2", "10.0.0.12")};
    compare({true, false, true});
    EXPECT_FALSE(cards[0].refusal || cards[1].refusal);
    EXPECT_EQ(cards[0].warnings.size(), 1U);
}

TEST_F(IdentificationTest, TakesCardsWithoutAnAddressForDifferentOnes)
{
    cards = {heard("card1", "0.0.0.0"), heard("card2", "0.0.0.0")};
    compare();
    EXPECT_FALSE(cards[0].refusal || cards[1].refusal || cards[1].sameAs);
}

TEST_F(IdentificationTest, KnowsTheAddressOfACardThatIsNamedToo)
{
    cards = {heard("card3", "10.0.0.13"), given("10.0.0.13")};
    compare();
    EXPECT_EQ(cards[1].sameAs, 0U);
    cards = {given("10.0.0.13"), heard("card3", "10.0.0.13")};
    compare();
    EXPECT_EQ(cards[1].sameAs, 0U);
}

TEST_F(IdentificationTest, KnowsTheCardByItsOtherAddress)
{
    cards = {heard("card3", "10.0.0.13"), given("10.0.1.13")};
    cards[0].stated.emplace_back("10.0.1.13");
    compare();
    EXPECT_EQ(cards[1].sameAs, 0U);
}

TEST_F(IdentificationTest, TakesForwardedPortsForCardsOfTheirOwn)
{
    cards = {heard("card3", "10.0.0.13"), given("10.0.0.13:6000"), given("10.0.0.13:6001")};
    compare();
    EXPECT_FALSE(cards[1].sameAs || cards[2].sameAs);
}

TEST_F(IdentificationTest, CountsOneCardThatIsGivenThreeTimesFromTheFirst)
{
    cards = {given("10.0.0.13"), given("10.0.0.13:50003"), heard("card3", "10.0.0.13")};
    compare();
    EXPECT_EQ(cards[1].sameAs, 0U);
    EXPECT_EQ(cards[2].sameAs, 0U);
}

TEST_F(IdentificationTest, RefusesAnAddressThatAnsweredTwice)
{
    cards = {heard("card1", "10.0.0.12"), given("10.0.0.13"), given("10.9.0.1")};
    Census census;
    census.note({{}, "10.0.0.12", cardPort, "lan0"});
    census.note({{}, "10.0.0.12", cardPort, "lan0"});
    census.note({{}, "10.0.0.13", cardPort, "lan0"});
    check(census);
    ASSERT_TRUE(cards[0].refusal);
    EXPECT_EQ(cards[0].refusal->code, ExitCode::ambiguous);
    EXPECT_TRUE(cards[1].checked);
    EXPECT_FALSE(cards[1].refusal || cards[2].refusal || cards[2].checked);
}

TEST_F(IdentificationTest, TellsOfARefusedNameBesideItsNotedAddress)
{
    cards = {given("10.0.0.13"), refused(unheard("card3", "10.0.0.13"))};
    compare();
    EXPECT_FALSE(cards[0].sameAs || cards[0].refusal || cards[1].sameAs);
    cards = {refused(unheard("card3", "10.0.0.13")), given("10.0.0.13")};
    compare();
    EXPECT_FALSE(cards[1].sameAs);
}

TEST_F(IdentificationTest, TellsOfASilentNameThatIsNotedWhereAnotherWasHeard)
{
    cards = {heard("card1", "10.0.0.11"), refused(unheard("card2", "10.0.0.11"))};
    compare();
    EXPECT_FALSE(cards[1].sameAs);
    EXPECT_EQ(cards[1].refusal->code, ExitCode::noAnswer);
    EXPECT_FALSE(cards[0].refusal);
}

TEST_F(IdentificationTest, TellsOfBothSilentNamesThatAreNotedAtOneAddress)
{
    cards = {refused(unheard("card1", "10.0.0.11")), refused(unheard("card2", "10.0.0.11"))};
    compare();
    EXPECT_FALSE(cards[1].sameAs);
}

TEST_F(IdentificationTest, RefusesBothNamesOfOneNotedAddressThatIsBelieved)
{
    cards = {unheard("card1", "10.0.0.11"), unheard("card2", "10.0.0.11")};
    compare({false, true, true});
    ASSERT_TRUE(cards[0].refusal && cards[1].refusal);
    EXPECT_FALSE(cards[1].sameAs);
    cards = {heard("card1", "10.0.0.11"), unheard("card2", "10.0.0.11")};
    compare({false, true, true});
    ASSERT_TRUE(cards[0].refusal && cards[1].refusal);
    EXPECT_EQ(cards[1].refusal->code, ExitCode::ambiguous);
}

TEST_F(IdentificationTest, RefusesTheAddressThatTwoNamesLeadTo)
{
    cards = {given("10.0.0.12"), heard("card1", "10.0.0.12"), heard("card2", "10.0.0.12")};
    compare();
    EXPECT_TRUE(cards[0].refusal && cards[1].refusal && cards[2].refusal);
    EXPECT_FALSE(cards[1].sameAs || cards[2].sameAs);
}

TEST_F(IdentificationTest, TakesSilentNamesForCardsOfTheirOwnWhereTheyAreReachedByName)
{
    cards = {unheard("card1", "10.0.0.11"), unheard("card2", "10.0.0.11")};
    Identification(network, Way::byNameUnheard, {}).compare(cards);
    EXPECT_FALSE(cards[0].refusal || cards[1].refusal || cards[1].sameAs);
}

TEST_F(IdentificationTest, RefusesBothNamesOfOneAddressAlsoWhereTheyAreReachedByName)
{
    cards = {heard("card1", "10.0.0.12"), heard("card2", "10.0.0.12"), heard("card3", "10.0.0.13")};
    Identification(network, Way::byName, {}).compare(cards);
    ASSERT_TRUE(cards[0].refusal && cards[1].refusal);
    EXPECT_EQ(cards[0].refusal->code, ExitCode::ambiguous);
    EXPECT_EQ(cards[1].refusal->code, ExitCode::ambiguous);
    EXPECT_FALSE(cards[1].sameAs || cards[2].refusal);
}

TEST_F(IdentificationTest, TellsOfTwoCardsOfOneNameBeforeAnAddressThatIsMissing)
{
    const CardReply one{.reply = {}, .address = "0.0.0.0", .interface = "lan0"};
    Identified card = unheard("card1", "");
    card.target.endpoint.reset();
    Identification(network, Way::overTcp, {}).hear(card, {one}, HostInterfaces());
    ASSERT_TRUE(card.refusal);
    EXPECT_EQ(card.refusal->code, ExitCode::unreachable);
    card.refusal.reset();
    Identification(network, Way::overTcp, {}).hear(card, {one, one}, HostInterfaces());
    ASSERT_TRUE(card.refusal);
    EXPECT_EQ(card.refusal->code, ExitCode::ambiguous);
}

TEST_F(IdentificationTest, TellsOfTheDoubledAddressOfACardThatIsNamedToo)
{
    cards = {heard("card3", "10.0.0.13"), given("10.0.1.13")};
    cards[0].stated.emplace_back("10.0.1.13");
    compare();
    Census census;
    census.note({{}, "10.0.1.13", cardPort, "lan0"});
    census.note({{}, "10.0.1.13", cardPort, "lan0"});
    check(census);
    EXPECT_TRUE(cards[1].refusal);
    EXPECT_FALSE(cards[1].sameAs);
}

TEST_F(IdentificationTest, RefusesAnAddressThatAnsweredOnTwoInterfaces)
{
    cards = {given("10.0.0.12"), given("10.0.0.13")};
    check(answered({{"10.0.0.12", "lan0"}, {"10.0.0.12", "lan1"}, {"10.0.0.13", "lan0"}}));
    ASSERT_TRUE(cards[0].refusal);
    EXPECT_EQ(cards[0].refusal->code, ExitCode::ambiguous);
    EXPECT_NE(cards[0].refusal->hint.find("on lan0 and on lan1"), std::string::npos);
    EXPECT_FALSE(cards[0].checked || cards[1].refusal);
    EXPECT_TRUE(cards[1].checked);
}

TEST_F(IdentificationTest, RefusesAnAddressThatAnsweredWhereItsNetworkIsNot)
{
    cards = {given("10.0.1.13")};
    check(answered({{"10.0.1.13", "lan0"}}));
    ASSERT_TRUE(cards[0].refusal);
    EXPECT_EQ(cards[0].refusal->code, ExitCode::ambiguous);
    EXPECT_FALSE(cards[0].checked);
}

TEST_F(IdentificationTest, ReachesAnAddressWhereItAnswered)
{
    cards = {given("10.0.0.13"), given("10.0.0.14")};
    check(answered({{"10.0.0.13", "lan0"}}));
    EXPECT_EQ(cards[0].target.endpoint->interface, "lan0");
    EXPECT_EQ(cards[1].target.endpoint->interface, "");
}

TEST_F(IdentificationTest, TakesACardThatItsNameWasHeardFromOnBothInterfacesForOne)
{
    for (const bool isNameFirst : {true, false}) {
        Identified named = heardOn("card1", "10.0.0.12", "lan0");
        named.heardAt.insert({"10.0.0.12", "lan1"});
        cards = {given("10.0.0.12")};
        cards.insert(isNameFirst ? cards.begin() : cards.end(), named);
        compare();
        check(answered({{"10.0.0.12", "lan0"}, {"10.0.0.12", "lan1"}}));
        EXPECT_TRUE(cards[0].checked && cards[1].checked);
        EXPECT_EQ(cards[1].sameAs, 0U);
    }
}

TEST_F(IdentificationTest, ReachesANameWhereItWasHeardWhoeverHasItsAddressElsewhere)
{
    cards = {given("10.0.0.12"), heardOn("card1", "10.0.0.12", "lan0")};
    compare();
    ASSERT_EQ(cards[1].sameAs, 0U);
    check(answered({{"10.0.0.12", "lan0"}, {"10.0.0.12", "lan1"}}));
    EXPECT_TRUE(cards[0].refusal);
    EXPECT_FALSE(cards[1].refusal || cards[1].sameAs);
    EXPECT_TRUE(cards[1].checked);
}

TEST_F(IdentificationTest, HasNotCheckedANameWhoseAddressAnsweredElsewhereOnly)
{
    cards = {heardOn("card1", "10.0.0.12", "lan0")};
    check(answered({{"10.0.0.12", "lan1"}}));
    EXPECT_FALSE(cards[0].refusal || cards[0].checked);
}

} // namespace
