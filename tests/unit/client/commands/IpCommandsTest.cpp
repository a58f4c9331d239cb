// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ProgramFixture.h"

#include "client/card/IpMemory.h"
#include "support/FakeInterface.h"

#include <cerrno>

namespace
{

// The card has from then on what it is set to. It is heard from 127.0.0.1, whatever that is.
class IpCommandsTest : public ProgramFixture
{
protected:
    IpCommandsTest()
    {
        card.behave(ipSet, [this](const FakeCard::Request& request) {
            const std::size_t start = request.text.find("<Interface");
            const std::size_t end = request.text.find("</IpConfiguration>");
            card.answer(ipGet, says(ipXmlWith(request.text.substr(start, end - start))));
            return done;
        });
    }

    int set(std::vector<std::string> what, const std::vector<std::string>& globals = {})
    {
        std::vector<std::string> line = globals;
        line.insert(line.end(), {"-o", "json", "ip", "set", "--if", "VemkEth1"});
        line.insert(line.end(), what.begin(), what.end());
        line.emplace_back("card1");
        return run(line);
    }

    // An answer from 127.0.0.1 is then none from the card's former address, which would prove nothing.
    void isElsewhere() { card.answer(ipGet, says(ipXmlWith(interfaceXml("VemkEth1", "10.0.0.9")))); }

    // As `ip set` does before it changes card1.
    static void remember(const InterfaceConfig& settings) { ASSERT_TRUE(rememberIp("card1", settings, 1772600000)); }

    static std::string request(const std::string& interface)
    {
        return R"(<IpConfiguration From="tarvelctl" To="card1">)" + interface + "</IpConfiguration>";
    }

    static constexpr const char* dhcp = R"(<Interface Name="VemkEth1" Mode="Dhcp"/>)";
    const InterfaceConfig formerSettings{"VemkEth1", IpMode::fixed, "127.0.0.1", "255.0.0.0", std::nullopt};
    const std::string former = interfaceXml("VemkEth1", "127.0.0.1");
};

TEST_F(IpCommandsTest, GetPrintsTheInterfaces)
{
    EXPECT_EQ(run({"ip", "get", "card1"}), 0);
    EXPECT_EQ(out, "TARGET  HEARD FROM  HEARD ON  INTERFACE  MODE    ADDRESS    NETMASK    GATEWAY\n"
                   "card1   127.0.0.1   lo        VemkEth1   Static  127.0.0.1  255.0.0.0\n"
                   "card1   127.0.0.1   lo        VemkEth2   Static  10.0.1.11  255.0.0.0\n");
}

TEST_F(IpCommandsTest, GetTakesNoAddress)
{
    EXPECT_EQ(run({"ip", "get", "127.0.0.1"}), 2);
    EXPECT_TRUE(errHas("127.0.0.1 is an address, but this command addresses cards by name"));
}

TEST_F(IpCommandsTest, SetSeesTheChangeThrough)
{
    isElsewhere();
    EXPECT_EQ(set({"--dhcp"}), 0);
    EXPECT_TRUE(outHas("\"state\": \"applied\""));
    EXPECT_TRUE(outHas("\"changed\": true"));
    EXPECT_EQ(card.texts(ipSet), Texts{request(dhcp)});
    EXPECT_TRUE(errHas("  now:    Static 10.0.0.9/255.0.0.0\n  wanted: Dhcp\n"));
}

TEST_F(IpCommandsTest, SetTakesNoAddressForTheCardsOwnThatTheCardIsNotHeardFrom)
{
    const FakeInterface lan("lan0", "192.0.2.1", "255.255.255.0");
    card.answer(ipGet, says(ipXmlWith(R"(<Interface Name="VemkEth1" Mode="Static" )"
                                      R"(Address="192.0.2.5/24 192.0.2.7/24"/>)")));
    EXPECT_EQ(set({"--static", "192.0.2.7/24", "--wait", "1"}, {"--yes"}), 2);
    EXPECT_FALSE(outHas("\"address_state\": \"its own\"")) << out << err;
    EXPECT_TRUE(card.texts(ipSet).empty());
}

TEST_F(IpCommandsTest, SetTakesTheAddressOfTheOtherInterfaceOnlyWithForce)
{
    EXPECT_EQ(set({"--static", "10.0.1.11/24", "--wait", "1"}), 2);
    EXPECT_TRUE(outHas("\"category\": \"needs-force\"")) << out;
    EXPECT_TRUE(outHas("10.0.1.11 is the address of VemkEth2; nothing was sent")) << out;
    EXPECT_TRUE(card.texts(ipSet).empty());
}

TEST_F(IpCommandsTest, SetDoesNothingThatIsDoneAlready)
{
    card.answer(ipGet, says(ipXmlWith(dhcp)));
    EXPECT_EQ(set({"--dhcp"}), 0);
    EXPECT_TRUE(card.texts(ipSet).empty());
}

TEST_F(IpCommandsTest, SetIsNotSentInADryRun)
{
    EXPECT_EQ(set({"--dhcp"}, {"--dry-run"}), 0);
    EXPECT_TRUE(card.texts(ipSet).empty());
    EXPECT_FALSE(sandbox.exists("/tmp/state/tarvelctl"));
}

TEST_F(IpCommandsTest, SetRollsBackACardThatIsNotSeenToChange)
{
    EXPECT_EQ(set({"--static", "198.51.100.20/24", "--wait", "1.5"}, {"--force"}), 7);
    EXPECT_TRUE(outHas("\"state\": \"rolled back\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(errHas("warning: card1: not back with the new configuration; rolling back"));
    ASSERT_EQ(card.texts(ipSet).size(), 2U);
    EXPECT_EQ(card.texts(ipSet).back(), request(former));
}

TEST_F(IpCommandsTest, SetLooksForTheEffectOfAChangeThatIsNotAnswered)
{
    isElsewhere();
    card.behave(ipSet, [this](const FakeCard::Request&) {
        card.answer(ipGet, says(ipXmlWith(dhcp)));
        return FakeCard::Answer{.hangsUp = true};
    });
    EXPECT_EQ(set({"--dhcp"}, {"--timeout", "2"}), 0);
    EXPECT_TRUE(errHas("card1: no answer to the change; looking for its effect"));
    EXPECT_EQ(card.texts(ipSet).size(), 1U);
}

TEST_F(IpCommandsTest, SetTellsThatACardIsLost)
{
    card.behave(ipSet, [this](const FakeCard::Request&) {
        card.answer(ipGet, {.hangsUp = true});
        card.answer(ipSet, {.status = refused}); // in silence it would be waited for, however short --wait is
        return done;
    });
    EXPECT_EQ(set({"--dhcp", "--wait", "0.1"}), 7);
    EXPECT_TRUE(outHas("\"state\": \"lost\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(errHas("did not take the former one either ("));
    EXPECT_TRUE(errHas("); try `tarvelctl ip rescue card1`"));
}

TEST_F(IpCommandsTest, SetDoesNotKnowTheOutcomeWhenThisMachineCannotAsk)
{
    card.behave(ipSet, [](const FakeCard::Request&) {
        failAlways("socket", EMFILE);
        return done;
    });
    EXPECT_EQ(set({"--dhcp"}), 5);
    EXPECT_TRUE(outHas("\"category\": \"no-socket\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(errHas("the change was sent, but what the card has now is not known: "));
}

TEST_F(IpCommandsTest, SetDoesNotKnowTheOutcomeOfARollbackWhenThisMachineCannotAsk)
{
    card.behave(ipSet, [this](const FakeCard::Request&) {
        card.behave(ipSet, [](const FakeCard::Request&) {
            failAlways("socket", EMFILE);
            return done;
        });
        return done;
    });
    EXPECT_EQ(set({"--dhcp", "--wait", "0.1"}), 5);
    EXPECT_TRUE(outHas("\"category\": \"no-socket\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
}

TEST_F(IpCommandsTest, SetKnowsARollbackThatOnlyTheSettingsSayFromOneThatWasSeen)
{
    card.answer(ipSet, done); // the card has what it had, and is heard over its other interface alone
    EXPECT_EQ(run({"--force", "-o", "json", "ip", "set", "--if", "VemkEth2", "--static", "198.51.100.20/24", "--wait",
                   "0.1", "card1"}),
              7);
    EXPECT_TRUE(outHas("\"state\": \"rollback stored\""));
    EXPECT_TRUE(outHas("\"category\": \"rolled-back\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(errHas("only its settings were seen to be the former ones again"));
    EXPECT_EQ(card.texts(ipSet).size(), 2U);
}

TEST_F(IpCommandsTest, SetTellsThatTheCardRefuses)
{
    card.answer(ipSet, {.status = refused});
    EXPECT_EQ(set({"--dhcp"}), 3);
}

TEST_F(IpCommandsTest, SetWantsAnAgreementIfThereIsNoWayBack)
{
    card.answer(ipGet, {.status = refused});
    EXPECT_EQ(set({"--dhcp"}), 2);
    EXPECT_TRUE(errHas("--yes does it all the same"));
    EXPECT_TRUE(card.texts(ipSet).empty());
    EXPECT_EQ(set({"--dhcp"}, {"--yes"}), 0);
    EXPECT_EQ(card.texts(ipSet), Texts{request(dhcp)});
}

TEST_F(IpCommandsTest, SetWantsForceForAnAddressThatCannotBeLookedAt)
{
    EXPECT_EQ(set({"--static", "198.51.100.20/24"}), 2);
    EXPECT_TRUE(outHas("\"category\": \"needs-force\""));
    EXPECT_TRUE(outHas("\"address_state\": \"not checked\""));
    EXPECT_TRUE(card.texts(ipSet).empty());
}

TEST_F(IpCommandsTest, SetRefusesWhatMakesNoSense)
{
    EXPECT_EQ(set({}), 2);
    EXPECT_TRUE(errHas("give one of --static, --dhcp and --disabled"));
    EXPECT_EQ(set({"--static", "10.0.0.20/8", "card2"}), 2);
    EXPECT_TRUE(errHas("one static address cannot be that of several cards"));
    EXPECT_TRUE(card.requests().empty());
}

TEST_F(IpCommandsTest, RescueGivesTheFormerConfigurationBack)
{
    remember(formerSettings);
    card.answer(ipGet, says(ipXmlWith(dhcp)));
    EXPECT_EQ(run({"ip", "rescue", "card1"}), 2);
    EXPECT_TRUE(errHas("127.0.0.1 is this machine's own address"));
    EXPECT_EQ(run({"--force", "-o", "json", "ip", "rescue", "card1"}), 0);
    EXPECT_TRUE(outHas("\"state\": \"rescued\""));
    EXPECT_TRUE(outHas("\"changed\": true"));
    EXPECT_EQ(card.texts(ipSet).back(), request(former));
}

TEST_F(IpCommandsTest, RescueSeesTheEffectHoweverLongItWouldWaitForAnAnswer)
{
    isElsewhere();
    card.behave(ipSet, [this](const FakeCard::Request&) {
        card.answer(ipGet, says(ipXmlWith(dhcp)));
        return FakeCard::Answer{.hangsUp = true};
    });
    EXPECT_EQ(run({"--timeout", "60", "ip", "rescue", "--if", "VemkEth1", "--dhcp", "--wait", "4", "card1"}), 0);
    EXPECT_EQ(card.texts(ipSet).size(), 1U);
}

TEST_F(IpCommandsTest, RescueTellsWhatOnlyTheSettingsSay)
{
    EXPECT_EQ(run({"-o", "json", "ip", "rescue", "--if", "VemkEth1", "--dhcp", "--wait", "3", "card1"}), 0);
    EXPECT_TRUE(outHas("\"state\": \"stored\""));
    EXPECT_TRUE(outHas("whether VemkEth1 works cannot be seen from here"));
}

TEST_F(IpCommandsTest, RescueListsWhatItHasToGive)
{
    remember(formerSettings);
    EXPECT_EQ(run({"-o", "csv", "--columns", "number,interface,settings", "ip", "rescue", "--list", "card1"}), 0);
    EXPECT_EQ(out, "number,interface,settings\n1,VemkEth1,Static 127.0.0.1/255.0.0.0\n");
    EXPECT_EQ(run({"ip", "rescue", "--to", "2", "card1"}), 2);
    EXPECT_TRUE(errHas("1 former settings of card1 are known, so there is none with number 2"));
}

TEST_F(IpCommandsTest, RescueNeedsSomethingToGive)
{
    EXPECT_EQ(run({"ip", "rescue", "card1"}), 2);
    EXPECT_TRUE(errHas("no change of card1 was made from here"));
}

TEST_F(IpCommandsTest, RescueTellsThatTheCardHasSomethingElse)
{
    card.answer(ipSet, done);
    EXPECT_EQ(run({"ip", "rescue", "--if", "VemkEth1", "--dhcp", "--wait", "1.5", "card1"}), 7);
    EXPECT_TRUE(errHas("card1 answers, but has Static 127.0.0.1/255.0.0.0"));
}

} // namespace
