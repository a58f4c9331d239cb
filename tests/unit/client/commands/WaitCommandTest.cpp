// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ProgramFixture.h"
#include "client/card/CardWatch.h"
#include "client/commands/Commands.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <thread>

namespace
{

using WaitCommandTest = ProgramFixture;

TEST_F(WaitCommandTest, EndsAtOnceForACardThatIsUp)
{
    EXPECT_EQ(run({"-o", "json", "wait", "--for", "up", "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("\"state\": \"up\""));
    EXPECT_TRUE(outHas("\"changed\": false"));
    EXPECT_EQ(run({"wait", "--for", "up", "card1"}), 0);
}

TEST_F(WaitCommandTest, LooksAgainUntilTheCardIsIdle)
{
    card.behave(versions, [this](const FakeCard::Request&) {
        card.answer(versions, says(versionsXml("KERN-6.1.0")));
        return FakeCard::Answer{.hangsUp = true};
    });
    EXPECT_EQ(run({"wait", "--for", "idle", "127.0.0.1"}), 0);
    EXPECT_TRUE(outHas("up and idle"));
    EXPECT_EQ(card.texts(versions).size(), 2U);
}

TEST_F(WaitCommandTest, LooksAgainUntilTheCardHasTheVersions)
{
    sandbox.write("/tmp/release", "kernel KERN-7.0.0\n");
    card.behave(versions, [this](const FakeCard::Request&) {
        card.answer(versions, says(versionsXml("KERN-7.0.0")));
        return says(versionsXml("KERN-6.1.0"));
    });
    EXPECT_EQ(run({"wait", "--for", "versions=" + sandbox.path("/tmp/release"), "card1"}), 0);
    EXPECT_EQ(card.texts(versions).size(), 2U);
}

TEST_F(WaitCommandTest, TellsWhatItSawWhenTheTimeIsOver)
{
    card.answer(versions, {.hangsUp = true});
    EXPECT_EQ(run({"-o", "csv", "wait", "--for", "idle", "--wait-time", "0.1", "127.0.0.1"}), 5);
    EXPECT_TRUE(outHas("127.0.0.1,no,5,timeout,no,busy,"));
    EXPECT_TRUE(errHas("error: 127.0.0.1: timeout while waiting for idle: busy when 0.1 s were over"));
}

TEST_F(WaitCommandTest, LooksOnceMoreWhenTheTimeIsOver)
{
    card.behave(versions, [this](const FakeCard::Request&) {
        card.answer(versions, says(versionsXml("KERN-6.1.0")));
        return FakeCard::Answer{.hangsUp = true};
    });
    EXPECT_EQ(run({"wait", "--for", "idle", "--wait-time", "1", "127.0.0.1"}), 0); // less than between two looks
}

TEST_F(WaitCommandTest, WaitsForACardToGoDown)
{
    EXPECT_EQ(run({"wait", "--for", "down", "--wait-time", "0.1", "127.0.0.1"}), 5);
    EXPECT_EQ(run({"wait", "--for", "down", "127.0.0.1:1"}), 0);
    EXPECT_TRUE(outHas("daemon down"));
    EXPECT_TRUE(errHas("it was not seen up before"));
}

TEST_F(WaitCommandTest, DoesNotTakeAMachineThatCannotAskForACardThatIsDown)
{
    failAlways("socket", EMFILE);
    EXPECT_EQ(run({"-o", "json", "wait", "--for", "down", "--wait-time", "0.1", "127.0.0.1"}), 1);
    EXPECT_TRUE(outHas("\"category\": \"no-socket\""));
    EXPECT_FALSE(outHas("\"state\""));
    forgetScripts();
    failAlways("connect", ENETUNREACH);
    EXPECT_EQ(run({"-o", "json", "wait", "--for", "down", "--wait-time", "0.1", "127.0.0.1"}), 6);
    EXPECT_TRUE(outHas("\"category\": \"no-network\""));
    EXPECT_EQ(run({"-o", "json", "wait", "--for", "idle", "--wait-time", "0.1", "127.0.0.1"}), 6);
    EXPECT_TRUE(outHas("\"category\": \"no-network\""));
}

TEST_F(WaitCommandTest, DoesNotTakeAMachineThatCannotBroadcastForACardThatIsDown)
{
    failAlways("socket", EMFILE);
    EXPECT_EQ(run({"-o", "json", "wait", "--for", "down", "--wait-time", "0.1", "card1"}), 1);
    EXPECT_TRUE(outHas("\"category\": \"no-socket\""));
}

TEST_F(WaitCommandTest, GoesOnWhenTheMachineCanAskForANameAgain)
{
    failNext("socket", EMFILE);
    EXPECT_EQ(run({"wait", "--for", "up", "--wait-time", "0.1", "card1"}), 0);
}

TEST_F(WaitCommandTest, GoesOnWhenTheMachineCanAskAgain)
{
    failNext("socket", EMFILE);
    EXPECT_EQ(run({"wait", "--for", "up", "--wait-time", "0.1", "127.0.0.1"}), 0);
}

TEST_F(WaitCommandTest, TakesANameThatNobodyHasForDown)
{
    EXPECT_EQ(run({"--timeout", "0.05", "wait", "--for", "down", "card2"}), 0);
    EXPECT_TRUE(errHas("not heard by its name, now or before, and no address is known to look at: what is no card's "
                       "name, or a card that is busy, or whose daemon stands still, looks the same"));
    EXPECT_EQ(run({"--timeout", "0.05", "wait", "--for", "up", "--wait-time", "0.1", "card2"}), 5);
    EXPECT_TRUE(outHas("not found"));
}

TEST_F(WaitCommandTest, TellsWhereTheAddressIsFromThatItAskedLast)
{
    sandbox.write("/tmp/groups", "card1 127.0.0.1:1\n"); // where nobody is
    EXPECT_EQ(run({"--groups", sandbox.path("/tmp/groups"), "-o", "json", "wait", "--for", "up", "card1"}), 0);
    EXPECT_TRUE(outHas("\"address_from\": \"lookup\""));
}

// As one is seen that was heard before it had an address.
class AddresslessCardTest : public ProgramFixture
{
protected:
    CardState stateAfterALook()
    {
        sight.state = CardState::up;
        loop.run(watch.look(target, sight));
        return sight.state;
    }

    const Target target{.label = "card1", .name = "card1", .endpoint = {}};
    Sight sight;

    EventLoop loop;
    Network network{loop, {{Seconds(3), 2}, {"lo"}}};
    CardWatch watch{loop, network, CardWatch::Question::versions, 1};
};

TEST_F(AddresslessCardTest, IsAskedByItsNameUntilItHasOne)
{
    EXPECT_EQ(stateAfterALook(), CardState::upAndIdle);
}

TEST_F(AddresslessCardTest, IsNotDownOnceTheMachineCannotBroadcast)
{
    stateAfterALook();
    failAlways("socket", EMFILE);
    stateAfterALook();
    ASSERT_TRUE(sight.hindrance);
    EXPECT_EQ(sight.hindrance->category, Category::noSocket);
}

TEST_F(AddresslessCardTest, IsNotMissingOnceTheMachineCannotBroadcast)
{
    card.answer(ipGet, {.hangsUp = true});
    EXPECT_EQ(stateAfterALook(), CardState::notFound);
    failAlways("socket", EMFILE);
    stateAfterALook();
    ASSERT_TRUE(sight.hindrance);
    EXPECT_EQ(sight.hindrance->category, Category::noSocket);
}

TEST_F(AddresslessCardTest, IsNotFoundOnceItIsSilent)
{
    card.answer(ipGet, {.hangsUp = true});
    EXPECT_EQ(stateAfterALook(), CardState::notFound);
}

TEST_F(AddresslessCardTest, IsNotSeenByAMachineThatNoLongerHasItsInterface)
{
    card.answer(ipGet, {.hangsUp = true});
    sight.heardOn = "lan1";
    stateAfterALook();
    ASSERT_TRUE(sight.hindrance);
    EXPECT_EQ(sight.hindrance->hint, "nobody was asked on lan1, where the card was heard");
}

// With two interfaces, of which the first takes no broadcast.
class HalfDeafWatchTest : public AddresslessCardTest
{
protected:
    Category hindranceOf(const Target& one)
    {
        card.answer(ipGet, {.hangsUp = true});
        failNext("sendto", EPERM);
        sight.endpoint = one.endpoint;
        loop.run(deafWatch.look(one, sight));
        return sight.hindrance ? sight.hindrance->category : Category::none;
    }

    Network halfDeaf{loop, {{Seconds(0.05), 0}, {"lo", "lo"}}};
    CardWatch deafWatch{loop, halfDeaf, CardWatch::Question::connection, 1};
};

TEST_F(HalfDeafWatchTest, SeesNoSilentCard)
{
    EXPECT_EQ(hindranceOf(target), Category::noNetwork);
}

TEST_F(HalfDeafWatchTest, SeesNoSilentCardThatRefusesConnectionsWhereItWas)
{
    EXPECT_EQ(hindranceOf({.label = "card1", .name = "card1", .endpoint = Endpoint{"127.0.0.1", 1}}),
              Category::noNetwork);
}

// Asked twice over the same interface, the one card answers as two would.
TEST_F(AddresslessCardTest, IsDoubtedIfAnotherIsHeardInALaterLook)
{
    Network doubling{loop, {{Seconds(20), 0}, {"lo", "lo"}}};
    CardWatch doubled{loop, doubling, CardWatch::Question::connection, 1};
    loop.run(doubled.look(target, sight));
    std::set<std::string> doubts;
    for (int tries = 0; tries < 10000 && doubts.empty(); ++tries) { // the second may come a little later
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        doubts = doubled.secondAnswers();
    }
    ASSERT_EQ(doubts.size(), 1U);
    EXPECT_TRUE(doubts.begin()->starts_with("card1: two cards have this name, and one address")) << *doubts.begin();
}

TEST_F(WaitCommandTest, AsksForSilentNamesTogether)
{
    const std::size_t before = callsTo("bind").size();
    EXPECT_EQ(run({"--timeout", "0.1", "wait", "--for", "up", "--wait-time", "1", "nobody[1-20]"}), 5);
    EXPECT_LE(callsTo("bind").size() - before,
              4U); // a socket for each of two lookups; the kernel may give the cards' port
}

TEST_F(WaitCommandTest, GivesTwoMinutesUnlessItIsTold)
{
    OptionSet options;
    const std::unique_ptr<Command> wait = makeWait();
    wait->declare(options);
    const auto time =
        std::ranges::find_if(options.specs(), [](const OptionSpec& one) { return one.names == "--wait-time"; });
    ASSERT_NE(time, options.specs().end());
    EXPECT_EQ(*std::get<double*>(time->destination), 120);
    EXPECT_NE(time->help.find("(120)"), std::string::npos);
}

TEST_F(WaitCommandTest, RefusesWhatNobodyCanWaitFor)
{
    EXPECT_EQ(run({"wait", "--for", "godot", "127.0.0.1"}), 2);
    EXPECT_TRUE(errHas("--for is up, down, idle or versions=FILE, not \"godot\""));
    EXPECT_EQ(run({"wait", "127.0.0.1"}), 2);
    EXPECT_EQ(run({"wait", "--for", "versions=" + sandbox.path("/tmp/nowhere"), "127.0.0.1"}), 10);
    EXPECT_EQ(run({"--dry-run", "wait", "--for", "up", "127.0.0.1"}), 0);
    EXPECT_TRUE(card.requests().empty());
}

} // namespace
