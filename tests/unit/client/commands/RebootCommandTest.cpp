// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ProgramFixture.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>

namespace
{

using RebootCommandTest = ProgramFixture;

TEST_F(RebootCommandTest, ChangesNothingWhereTheCardFallsSilentBefore)
{
    card.behave(ipGet, [this](const FakeCard::Request&) {
        card.answer(ipGet, {.hangsUp = true});
        return says(ipXml("127.0.0.1"));
    });
    EXPECT_EQ(run({"--timeout", "2", "-o", "json", "reboot", "card1"}), 5);
    EXPECT_TRUE(outHas("\"changed\": false"));
}

TEST_F(RebootCommandTest, TellsWhereASilentNameWasLastHeard)
{
    sandbox.write("/tmp/state/tarvelctl/heard", "card2 127.0.0.1 1000000000\n");
    EXPECT_EQ(run({"--timeout", "3", "-o", "csv", "--columns", "target,category,last_address", "reboot", "card[2-3]"}),
              5);
    EXPECT_EQ(out, "target,category,last_address\ncard2,not-heard,127.0.0.1\ncard3,not-found,\n");
    EXPECT_TRUE(errHas("card2: not-heard while looking for the card (127.0.0.1, "));
    EXPECT_TRUE(errHas("not heard; last at an address that answers as a card, but not by this name"));
    EXPECT_EQ(run({"--timeout", "0.1", "--dry-run", "reboot", "card2"}), 5);
    EXPECT_TRUE(errHas("that was not looked at"));
}

TEST_F(RebootCommandTest, TellsWhatManyNamesCostBefore)
{
    EXPECT_EQ(run({"--timeout", "0.1", "reboot", "nobody[1-65]"}), 5);
    EXPECT_TRUE(errHas("65 names are asked for"));
    EXPECT_TRUE(errHas("addresses avoid that"));
    EXPECT_EQ(run({"--timeout", "0.1", "reboot", "nobody[1-64]"}), 5);
    EXPECT_FALSE(errHas("names are asked for"));
}

TEST_F(RebootCommandTest, AsksForTheReboot)
{
    card.answer(reboot, done);
    EXPECT_EQ(run({"-o", "json", "reboot", "card1"}), 0);
    EXPECT_TRUE(outHas("\"state\": \"rebooting\""));
    EXPECT_TRUE(outHas("\"changed\": true"));
    EXPECT_EQ(card.texts(reboot).size(), 1U);
}

TEST_F(RebootCommandTest, TakesAnInterfaceThatIsGivenTwiceForOne)
{
    card.answer(reboot, done);
    EXPECT_EQ(run({"-i", "lo", "reboot", "card1"}), 0); // and not for two answers to one question
}

TEST_F(RebootCommandTest, IsNotRepeated)
{
    EXPECT_NE(run({"--timeout", "3", "reboot", "card1"}), 0);
    EXPECT_EQ(card.texts(reboot).size(), 1U);
}

TEST_F(RebootCommandTest, TellsThatACardWithoutAnAnswerDidNotReboot)
{
    EXPECT_EQ(run({"-o", "json", "--timeout", "2", "reboot", "card1"}), 7);
    EXPECT_TRUE(outHas("\"category\": \"stayed-up\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
}

TEST_F(RebootCommandTest, DoesNotJudgeACardThatHadNoTimeToGoDown)
{
    EXPECT_EQ(run({"--timeout", "0.8", "reboot", "card1"}), 5);
    EXPECT_TRUE(errHas("a longer --timeout tells more"));
}

TEST_F(RebootCommandTest, TellsThatTheOutcomeOfASilentCardIsNotKnown)
{
    card.behave(reboot, [this](const FakeCard::Request&) {
        card.refuseConnections();
        card.answer(ipGet, {.hangsUp = true});
        return FakeCard::Answer{.hangsUp = true};
    });
    EXPECT_EQ(run({"-o", "json", "--timeout", "2", "reboot", "card1"}), 5);
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(outHas("it may reboot, or be out of reach"));
}

TEST_F(RebootCommandTest, SeesThroughARebootThatWasNotConfirmed)
{
    card.behave(reboot, [this](const FakeCard::Request&) {
        card.refuseConnections();
        return FakeCard::Answer{.hangsUp = true};
    });
    EXPECT_EQ(run({"-o", "json", "--timeout", "2", "reboot", "--wait", "card1"}), 0);
    EXPECT_TRUE(outHas("\"state\": \"back\""));
    EXPECT_TRUE(errHas("did not confirm the reboot, but went down and came back"));
}

TEST_F(RebootCommandTest, IsNotSentInADryRun)
{
    EXPECT_EQ(run({"--dry-run", "reboot", "--wait", "card1"}), 0);
    EXPECT_TRUE(card.texts(reboot).empty());
}

TEST_F(RebootCommandTest, TellsThatTheCardStayedUp)
{
    card.answer(reboot, done);
    EXPECT_EQ(run({"-o", "json", "reboot", "--wait", "--wait-time", "0.1", "card1"}), 7);
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(errHas("waiting for the card to go down"));
}

TEST_F(RebootCommandTest, DoesNotTakeAMachineThatCannotAskForACardThatIsDown)
{
    card.behave(reboot, [](const FakeCard::Request&) {
        failAlways("socket", EMFILE);
        return done;
    });
    EXPECT_EQ(run({"-o", "json", "reboot", "--wait", "--wait-time", "0.5", "card1"}), 5);
    EXPECT_TRUE(outHas("\"category\": \"no-socket\""));
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(errHas("whether the card rebooted is not known: "));
}

TEST_F(RebootCommandTest, DoesNotTakeAMachineThatCannotAskForACardThatDoesNotComeBack)
{
    card.behave(reboot, [this](const FakeCard::Request&) {
        card.refuseConnections();
        card.behave(ipGet, [](const FakeCard::Request&) {
            failAlways("socket", EMFILE);
            return FakeCard::Answer{.hangsUp = true};
        });
        return done;
    });
    EXPECT_EQ(run({"-o", "json", "reboot", "--wait", "--wait-time", "3", "card1"}), 5);
    EXPECT_TRUE(outHas("\"category\": \"no-socket\""));
    EXPECT_TRUE(outHas("\"changed\": true"));
    EXPECT_TRUE(errHas("whether the card is back is not known: "));
}

TEST_F(RebootCommandTest, TellsAnInterruptionByWhatTheCardConfirmed)
{
    card.behave(reboot, [](const FakeCard::Request&) {
        std::raise(SIGINT);
        return FakeCard::Answer{.hangsUp = true};
    });
    EXPECT_EQ(run({"-o", "json", "reboot", "card1"}), 130);
    EXPECT_TRUE(outHas("\"changed\": null"));
    EXPECT_TRUE(errHas("the card may reboot all the same"));
    card.answer(reboot, done);
    card.behave(ipGet, [this](const FakeCard::Request&) {
        if (card.texts(reboot).size() == 2) {
            std::raise(SIGINT);
        }
        return says(ipXml("127.0.0.1"));
    });
    card.refuseConnections();
    EXPECT_EQ(run({"-o", "json", "reboot", "--wait", "card1"}), 130);
    EXPECT_TRUE(errHas("the card reboots all the same"));
}

TEST_F(RebootCommandTest, DoesNotTakeASlowCardForOneThatIsDown)
{
    card.answer(reboot, done);
    card.behave(ipGet, [this](const FakeCard::Request&) {
        card.refuseConnections(); // so that only its answers tell that it is up
        card.behave(ipGet, [](const FakeCard::Request&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(450));
            return says(ipXml("127.0.0.1"));
        });
        return says(ipXml("127.0.0.1"));
    });
    EXPECT_EQ(run({"-o", "json", "reboot", "--wait", "--wait-time", "2", "card1"}), 7);
    EXPECT_TRUE(outHas("\"category\": \"stayed-up\""));
}

TEST_F(RebootCommandTest, SeesTheCardGoDownAndComeBack)
{
    card.behave(reboot, [this](const FakeCard::Request&) {
        card.refuseConnections();
        card.behave(ipGet, [this](const FakeCard::Request&) { // the first question comes too early
            card.answer(ipGet, says(ipXml("127.0.0.1")));
            return FakeCard::Answer{.hangsUp = true};
        });
        return done;
    });
    EXPECT_EQ(run({"-o", "json", "reboot", "--wait", "card1"}), 0);
    EXPECT_TRUE(outHas("\"state\": \"back\""));
    EXPECT_TRUE(outHas("\"down_after\""));
    EXPECT_TRUE(outHas("\"back_after\""));
}

TEST_F(RebootCommandTest, RefusesAnAddressThatHasTwoNames)
{
    sandbox.write("/tmp/groups", "card1 127.0.0.1\nold 127.0.0.1\n");
    const std::string groups = sandbox.path("/tmp/groups");
    for (const char* const force : {"-q", "--force"}) {
        EXPECT_EQ(run({"--groups", groups, force, "reboot", "127.0.0.1"}), 11);
        EXPECT_TRUE(errHas("the groups file gives 127.0.0.1 several names: card1 and old")) << err;
    }
    EXPECT_TRUE(card.requests().empty());
    EXPECT_EQ(run({"--groups", groups, "ip", "get", "127.0.0.1"}), 0);
    EXPECT_TRUE(errHas("warning: the groups file gives 127.0.0.1 several names: card1 and old; card1 is meant")) << err;
}

} // namespace
