// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ProgramFixture.h"

#include "client/card/Identification.h"
#include "client/card/Lookup.h"
#include "client/engine/EventLoop.h"
#include "client/wire/Network.h"
#include "support/VirtualTime.h"

#include <algorithm>
#include <thread>

namespace
{

class LookupTest : public ProgramFixture
{
protected:
    static std::vector<std::string> nobodies(int count)
    {
        std::vector<std::string> names;
        for (int number = 1; number <= count; ++number) {
            names.push_back("nobody" + std::to_string(number));
        }
        return names;
    }

    static std::size_t sent() { return callsTo("sendto").size(); }

    Task<void> untilSent(std::size_t count)
    {
        while (sent() < count) {
            co_await loop.until(after(Seconds(0.001)));
        }
    }

    EventLoop loop;
    Network network{loop, NetworkOptions{.policy = {Seconds(60), 0}, .interfaces = {"lo"}}};
};

TEST_F(LookupTest, AsksForFiftyNamesAtATime)
{
    Lookup lookup(network, nobodies(120));
    Task<void> asking = lookup.run();
    asking.start();
    EXPECT_EQ(sent(), 50U); // before the loop has turned once
    loop.run(untilSent(51));
    EXPECT_EQ(sent(), 100U); // and no more before it has turned again
    loop.run(untilSent(101));
    EXPECT_EQ(sent(), 120U);
}

// What was sent until each millisecond, with or without what was sent in it: an answer that comes then, and is read
// between the two, turns their order round.
class PaceOfLookupTest : public LookupTest
{
protected:
    Task<void> countSent(std::size_t all)
    {
        while (sentUntil.empty() || sentUntil.back() < all) {
            sentUntil.push_back(sent());
            co_await loop.until(after(Seconds(0.001)));
        }
    }

    std::vector<std::size_t> sentUntil;
};

TEST_F(PaceOfLookupTest, AsksForFiftyNamesInATenthOfASecondOnEachInterface)
{
    constexpr std::size_t interfaces = 2;
    constexpr std::size_t lessThanATenth = 99;
    const VirtualTime time;
    Network both{loop, NetworkOptions{.policy = {Seconds(60), 0}, .interfaces = {"lo", "lo"}}};
    Lookup lookup(both, nobodies(220));
    Task<void> asking = lookup.run();
    asking.start();
    loop.run(countSent(220 * interfaces));
    std::size_t most = sentUntil.front();
    for (std::size_t end = 1; end < sentUntil.size(); ++end) {
        most = std::max(most, sentUntil[end] - (end < lessThanATenth ? 0 : sentUntil[end - lessThanATenth]));
    }
    EXPECT_EQ(most, 50 * interfaces);
    EXPECT_GT(sentUntil.size(), 4 * lessThanATenth);
}

TEST_F(LookupTest, EndsWithAFloodOfSecondAnswers)
{
    Lookup lookup(network, {"card1"});
    loop.run(lookup.run());
    constexpr std::size_t endless = 20000;
    for (std::size_t number = 0; number < endless; ++number) {
        returnNext("recvfrom", 0);
    }
    EXPECT_TRUE(lookup.secondAnswers().empty());
    EXPECT_LT(callsTo("recvfrom").size(), endless / 2);
    forgetScripts();
}

TEST_F(LookupTest, KeepsAHundredAnswersToANameOfAllThatComeInAFlood)
{
    card.behave(ipGet,
                [](const FakeCard::Request&) { return FakeCard::Answer{.text = ipXml("127.0.0.1"), .copies = 150}; });
    Lookup lookup(network, {"card1"});
    loop.run(lookup.hearOut());
    EXPECT_EQ(lookup.answersTo("card1").size(), 100U);
}

TEST_F(LookupTest, RemembersBeforeAChangeWhereACardWasHeardUnlessItIsADryRun)
{
    Network dry{loop, NetworkOptions{.policy = {Seconds(60), 0}, .interfaces = {"lo"}, .dryRun = DryRun::changes}};
    for (Network* const each : {&dry, &network}) {
        Lookup lookup(*each, {"card1"});
        loop.run(lookup.hearOut());
        EXPECT_EQ(lookup.answersTo("card1").size(), 1U);
        EXPECT_EQ(sandbox.exists("/tmp/state/tarvelctl/heard"), each == &network);
    }
}

TEST_F(LookupTest, AsksForNoMoreNamesOnceEnoughHaveAnswered)
{
    std::vector<std::string> names = nobodies(119);
    names.insert(names.begin(), "card1");
    Lookup lookup(network, names);
    Task<void> asking = lookup.run(1);
    asking.start();
    while (card.requests().size() < 2) { // the first is answered then
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_TRUE(loop.run(lookup.answerOf("card1")));
    EXPECT_EQ(sent(), 50U);
}

class IdentificationOfManyTest : public LookupTest
{
protected:
    static std::vector<Target> targets(const std::vector<std::string>& names)
    {
        std::vector<Target> all;
        for (const std::string& name : names) {
            all.push_back({name, name, std::nullopt});
        }
        return all;
    }
};

TEST_F(IdentificationOfManyTest, AsksForAllNamesWithinOneTimeOut)
{
    Identification identification(network, Way::byName, {});
    Task<std::vector<Identified>> identifying = identification.run(targets(nobodies(300)));
    identifying.start();
    loop.run(untilSent(300)); // all of them while none has had its time
    EXPECT_FALSE(identifying.done());
}

TEST_F(IdentificationOfManyTest, AsksAgainForNamesThatWereNotHeard)
{
    Network hurried{loop, NetworkOptions{.policy = {Seconds(0.2), 2}, .interfaces = {"lo"}}};
    const std::vector<Identified> cards = loop.run(Identification(hurried, Way::byName, {}).run(targets(nobodies(60))));
    EXPECT_EQ(sent(), 180U);
    for (const Identified& silent : cards) {
        ASSERT_TRUE(silent.refusal) << silent.target.name;
        EXPECT_EQ(silent.refusal->code, ExitCode::noAnswer);
        EXPECT_EQ(silent.refusal->phase, "looking for the card");
    }
}

TEST_F(IdentificationOfManyTest, LooksForOneTimeOutAtMostWhatIsWhereSilentNamesWereHeard)
{
    card.answer(versions, {.keepsSilent = true});
    std::string heard;
    for (const std::string& name : nobodies(300)) {
        heard += name + " 127.0.0.1 1000000000\n";
    }
    sandbox.write("/tmp/state/tarvelctl/heard", heard);
    const VirtualTime time;
    Network once{loop, NetworkOptions{.policy = {Seconds(30), 0}, .interfaces = {"lo"}}};
    const std::vector<Identified> cards = loop.run(Identification(once, Way::byName, {}).run(targets(nobodies(300))));
    for (const Identified& silent : cards) {
        ASSERT_TRUE(silent.refusal) << silent.target.name;
        EXPECT_EQ(silent.refusal->category, Category::notHeard);
    }
    EXPECT_LT(Seconds(time.passed()), Seconds(62)); // 30 for the answers, and what the bursts take
}

// What is told of a host where a name was last heard.
class SilenceTest : public LookupTest
{
protected:
    std::string toldOf(const FakeCard::Answer& answer)
    {
        card.answer(versions, answer);
        sandbox.write("/tmp/state/tarvelctl/heard", "nobody1 127.0.0.1 1000000000\n");
        const Seconds timeout(answer.keepsSilent ? 0.3 : 20);
        Network anyNetwork{loop, NetworkOptions{.policy = {timeout, 0}, .interfaces = {"lo"}}};
        Lookup lookup(anyNetwork, {"nobody1"});
        {
            const VirtualTime time; // nobody has that name, so there is nothing to wait for
            loop.run(lookup.run());
        }
        return std::get<std::string>(loop.run(lookup.explainSilence("nobody1")).fields.back().value);
    }
};

TEST_F(SilenceTest, SaysWhatWasSeen)
{
    EXPECT_EQ(toldOf({.keepsSilent = true}), "accepts connections and does not answer");
    EXPECT_EQ(toldOf({.hangsUp = true}), "accepts connections and closes them without an answer");
    EXPECT_EQ(toldOf({.startPattern = 'H'}), "answers something else than a card");
    EXPECT_EQ(toldOf(says("<Nonsense/>")), "answers something else than a card");
    EXPECT_EQ(toldOf({.status = refused}), "answers as a card, but not by this name");
    EXPECT_EQ(toldOf(says(versionsXml("KERN-6.1.0"))), "answers as a card, but not by this name");
}

TEST_F(SilenceTest, LooksAtNoAddressOutsideOfThisMachinesNetworks)
{
    sandbox.write("/tmp/state/tarvelctl/heard", "nobody1 192.0.2.9 1000000000\nnobody2 0.0.0.0 1000000000\n");
    EXPECT_EQ(run({"--timeout", "0.1", "-o", "csv", "--columns", "target,category,last_address,there_now", "versions",
                   "nobody[1-2]"}),
              5);
    EXPECT_EQ(out, "target,category,last_address,there_now\n"
                   "nobody1,not-heard,192.0.2.9,is in none of this machine's networks now\n"
                   "nobody2,not-heard,,\n");
    EXPECT_TRUE(callsTo("connect").empty());
}

// As a memory of an earlier program, which kept no interface.
TEST_F(SilenceTest, LooksAtNoAddressThatIsInTheNetworksOfSeveralInterfaces)
{
    sandbox.write("/tmp/state/tarvelctl/heard", "nobody1 127.0.0.1 1000000000\n");
    for (std::vector<std::string> interfaces(2, "lo"); interfaces.size() <= 4; interfaces.emplace_back("lo")) {
        Network several{loop, NetworkOptions{.policy = {Seconds(0.1), 0}, .interfaces = interfaces}};
        Lookup lookup(several, {"nobody1"});
        loop.run(lookup.run());
        EXPECT_EQ(std::get<std::string>(loop.run(lookup.explainSilence("nobody1")).fields.back().value),
                  "was not looked at: on which network it was heard is not known")
            << interfaces.size();
    }
}

TEST_F(SilenceTest, PutsNamesTogetherThatWereHeardAtAddressesOfTheirOwn)
{
    sandbox.write("/tmp/state/tarvelctl/heard", "nobody1 127.0.0.2 1000000000\nnobody2 127.0.0.3 1100000000\n");
    EXPECT_EQ(run({"--timeout", "2", "--fold", "-o", "csv", "--columns", "target,last_address,there_now", "versions",
                   "nobody[1-2]"}),
              5);
    EXPECT_EQ(out, "target,last_address,there_now\nnobody[1-2],,refuses connections\n");
    EXPECT_EQ(run({"--timeout", "2", "versions", "nobody[1-2]"}), 5);
    EXPECT_TRUE(errHas("nobody1: not-heard while looking for the card (127.0.0.2, ")) << err;
    EXPECT_TRUE(errHas("nobody2: not-heard while looking for the card (127.0.0.3, ")) << err;
    EXPECT_EQ(err.find("not heard; last at"), err.rfind("not heard; last at")) << err;
}

TEST_F(SilenceTest, SaysThatConnectionsAreRefused)
{
    card.behave(versions, [this](const FakeCard::Request&) {
        card.refuseConnections();
        return FakeCard::Answer{.hangsUp = true};
    });
    EXPECT_EQ(run({"versions", "127.0.0.1"}), 6); // that ends it
    sandbox.write("/tmp/state/tarvelctl/heard", "nobody1 127.0.0.1 1000000000\n");
    EXPECT_EQ(run({"--timeout", "2", "versions", "nobody1"}), 5);
    EXPECT_TRUE(errHas("refuses connections")) << err;
}

TEST_F(IdentificationOfManyTest, AsksOnceForACardThatIsGivenTwice)
{
    const std::vector<Identified> cards =
        loop.run(Identification(network, Way::byName, {}).run(targets({"card1", "card1"})));
    EXPECT_EQ(sent(), 1U);
    EXPECT_EQ(cards[0].heardFrom, std::vector<std::string>{"127.0.0.1"});
    EXPECT_EQ(cards[1].sameAs, 0U);
}

// How long it takes at least, however fast the machine is: a second card may answer until then.
TEST_F(IdentificationOfManyTest, ListensForASecondCardAfterTheFirstAnswer)
{
    const TimePoint start = Clock::now();
    const std::vector<Identified> cards = loop.run(Identification(network, Way::byName, {}).run(targets({"card1"})));
    EXPECT_GE(Seconds(Clock::now() - start), Seconds(0.3));
    EXPECT_FALSE(cards[0].refusal);
}

TEST_F(IdentificationOfManyTest, ListensAsLongForASecondAnswerToTheProbe)
{
    const TimePoint start = Clock::now();
    loop.run(Identification(network, Way::overTcp, {.probe = true}).run(targets({"card1"})));
    EXPECT_GE(Seconds(Clock::now() - start), Seconds(0.6));
}

} // namespace
