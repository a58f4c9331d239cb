// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "ProgramFixture.h"

#include "client/card/AddressCheck.h"
#include "client/card/Identification.h"
#include "client/card/Lookup.h"
#include "client/engine/EventLoop.h"
#include "client/wire/Network.h"
#include "support/FakeInterface.h"
#include "support/LossyKernel.h"

#include <cerrno>
#include <chrono>
#include <thread>

namespace
{

constexpr std::chrono::milliseconds slowness{500}; // more than a fast card is listened to for

FakeCard::Behaviour slowly(FakeCard::Answer answer)
{
    return [answer = std::move(answer)](const FakeCard::Request&) {
        std::this_thread::sleep_for(slowness);
        return answer;
    };
}

// A card that needs its time for whatever it is asked, and takes it in the order in which it is.
class SlowCardTest : public ProgramFixture
{
protected:
    SlowCardTest()
    {
        card.behave(ipGet, slowly(says(ipXml("127.0.0.1"))));
        card.behave(probe, slowly({}));
    }

    Identified identified()
    {
        Identification identification(network, Way::overTcp, {});
        return loop.run(identification.run({{"card1", "card1", std::nullopt}})).front();
    }

    EventLoop loop;
    Network network{loop, NetworkOptions{.policy = {Seconds(60), 0}, .interfaces = {"lo"}}};
};

// Another of its name may be as slow.
TEST_F(SlowCardTest, IsListenedToAsLongAgainAsItTook)
{
    const TimePoint start = Clock::now();
    Lookup lookup(network, {"card1"});
    loop.run(lookup.hearOut());
    EXPECT_GE(Clock::now() - start, 2 * slowness);
}

TEST_F(SlowCardTest, IsWaitedForBehindTheProbe)
{
    const Identified one = identified();
    EXPECT_FALSE(one.refusal);
    EXPECT_TRUE(one.checked);
    EXPECT_EQ(card.texts(probe).size(), 1U);
    EXPECT_EQ(card.texts(ipGet).size(), 2U);
}

TEST_F(SlowCardTest, IsNotCheckedIfAnswersToTheProbeWereLost)
{
    const LossyKernel kernel(1);
    const Identified one = identified();
    EXPECT_FALSE(one.refusal);
    EXPECT_FALSE(one.checked);
    EXPECT_EQ(one.warnings,
              std::vector<std::string>{"whether two cards share its address was not checked: answers were lost"});
}

TEST_F(SlowCardTest, IsRefusedIfAnotherAnswersTheProbeFromItsAddress)
{
    card.behave(probe, slowly({.copies = 2}));
    const Identified one = identified();
    ASSERT_TRUE(one.refusal);
    EXPECT_EQ(one.refusal->code, ExitCode::ambiguous);
    EXPECT_NE(one.refusal->hint.find("two cards share the address 127.0.0.1"), std::string::npos);
    EXPECT_FALSE(one.checked);
}

TEST_F(SlowCardTest, IsRefusedIfAnotherOfItsNameAnswersBehindTheProbe)
{
    int times = 0; // of the card's thread
    card.behave(ipGet, [&times](const FakeCard::Request&) {
        std::this_thread::sleep_for(slowness);
        FakeCard::Answer answer = says(ipXml("127.0.0.1"));
        answer.copies = ++times;
        return answer;
    });
    const Identified one = identified();
    ASSERT_TRUE(one.refusal);
    EXPECT_NE(one.refusal->hint.find("two cards have this name"), std::string::npos);
}

// Each of the two cards answered one of the questions only, and each question once.
TEST_F(SlowCardTest, IsRefusedIfAnotherOfItsNameAnswersBehindTheProbeInItsPlace)
{
    int times = 0; // of the card's thread
    card.behave(ipGet, [&times](const FakeCard::Request&) {
        std::this_thread::sleep_for(slowness);
        return says(ipXml(++times == 1 ? "127.0.0.1" : "127.0.0.2"));
    });
    const Identified one = identified();
    ASSERT_TRUE(one.refusal);
    EXPECT_NE(one.refusal->hint.find("two cards have this name: different answers"), std::string::npos);
}

TEST_F(SlowCardTest, IsDoubtedOnceIfBothTwinsAnswerBothTimes)
{
    FakeCard::Answer twice = says(ipXml("127.0.0.1"));
    twice.copies = 2;
    card.behave(ipGet, slowly(twice));
    Identification identification(network, Way::overTcp, {.force = true});
    const std::vector<Identified> cards = loop.run(identification.run({{"card1", "card1", std::nullopt}}));
    ASSERT_EQ(cards.front().warnings.size(), 1U);
    EXPECT_TRUE(cards.front().warnings.front().ends_with("answered by 127.0.0.1 on lo and 127.0.0.1 on lo"));
}

// The answer may be that of another, which is faster.
TEST_F(SlowCardTest, IsNotCheckedIfItIsNotSeenToHaveAnsweredTheProbe)
{
    card.answer(probe, {});
    passNext("sendto", 2); // its name, and the probe
    failNext("sendto", ENETUNREACH);
    const Identified one = identified();
    EXPECT_FALSE(one.refusal);
    EXPECT_FALSE(one.checked);
}

TEST_F(SlowCardTest, MakesNoIdentificationOldByTheTimeOfTheProbe)
{
    constexpr int waits = 3; // for its name, the probe and its name
    const TimePoint start = Clock::now();
    EXPECT_GE(identified().asOf - start, waits * slowness);
}

class AddressOfSlowCardTest : public SlowCardTest
{
protected:
    AddressFinding look(bool probes = true)
    {
        failNext("getifaddrs", ENFILE); // else it is found to be this machine's
        const AddressCheck check(network, probes);
        return loop.run(check.look("card1", "127.0.0.1", {"127.0.0.1"}));
    }

    const FakeInterface lan{"lan0", "127.0.0.5", "255.0.0.0"};
};

TEST_F(AddressOfSlowCardTest, IsItsOwn)
{
    EXPECT_EQ(look().state, "its own");
    EXPECT_EQ(card.texts(probe).size(), 1U);
}

TEST_F(AddressOfSlowCardTest, IsItsOwnWithoutAProbe)
{
    EXPECT_EQ(look(false).state, "its own");
    EXPECT_TRUE(card.texts(probe).empty());
}

TEST_F(AddressOfSlowCardTest, IsInUseIfAnotherAnswersTheProbe)
{
    card.behave(probe, slowly({.copies = 2}));
    const AddressFinding finding = look();
    EXPECT_EQ(finding.state, "in use");
    EXPECT_EQ(finding.objection, "another card has 127.0.0.1 already");
}

} // namespace
