// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/Network.h"

#include "client/wire/CausesOfSilence.h"
#include "support/ErrorText.h"
#include "support/FakeInterface.h"
#include "support/SystemTest.h"
#include "support/VirtualTime.h"
#include "unit/client/CardAnswers.h"
#include "unit/client/FailureOf.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sys/socket.h>

namespace
{

// One card behind the port that all cards have, asked over the loopback device.
class NetworkTest : public SystemTest
{
protected:
    // What a request ended with; nothing if it was answered.
    template<typename Answer>
    Category endOf(Task<Answer> asking)
    {
        return failureOf([&] { loop.run(std::move(asking)); }).category;
    }

    FakeCard card;
    EventLoop loop;
    Endpoint endpoint{"127.0.0.1"};
    Request reading = bareRequest(CommandId::versions);
    Request changing = textRequest(CommandId::timeReferenceSet, "<x/>");
    Request readingByName = textRequest(CommandId::ipConfigGet, "<x/>");
    Request changingByName = textRequest(CommandId::ipConfigSet, "<x/>");
    Network network{loop, {{Seconds(5), 2}, {"lo"}}};
    Network hasty{loop, {{Seconds(0.05), 2}, {"lo"}}};
    Network patient{loop, {{Seconds(20), 200}, {"lo"}}};
};

TEST_F(NetworkTest, BringsTheAnswerOfOneExchange)
{
    card.answer(versions, {.text = "<Versions/>"});
    EXPECT_EQ(textOf(loop.run(network.ask(endpoint, reading))), "<Versions/>");
    EXPECT_EQ(card.requests().size(), 1U);
}

TEST_F(NetworkTest, RepeatsWhatReadsIfTheCardHangsUp)
{
    card.answer(versions, hangUp);
    EXPECT_EQ(endOf(network.ask(endpoint, reading)), Category::closed);
    EXPECT_EQ(card.requests().size(), 3U);
}

TEST_F(NetworkTest, NeverRepeatsAChange)
{
    card.answer(timeSet, hangUp);
    EXPECT_EQ(endOf(network.ask(endpoint, changing)), Category::closed);
    EXPECT_EQ(card.requests().size(), 1U);
}

TEST_F(NetworkTest, TellsARefusalUnlessAnyStatusWillDo)
{
    card.answer(versions, refusal);
    EXPECT_EQ(endOf(network.ask(endpoint, reading)), Category::refusedByCard);
    EXPECT_EQ(loop.run(network.askOnce(endpoint, reading)).header.status, 2);
    EXPECT_EQ(loop.run(network.askUntil(after(Seconds(5)), endpoint, reading)).header.status, 2);
}

TEST_F(NetworkTest, AsksByNameAndTellsWhereTheAnswerCameFrom)
{
    card.answer(ipGet, {.text = "<IpConfiguration/>"});
    const CardReply answer = loop.run(network.askByName("card1", readingByName));
    EXPECT_EQ(textOf(answer.reply), "<IpConfiguration/>");
    EXPECT_EQ(answer.address, "127.0.0.1");
    EXPECT_EQ(answer.interface, "lo");
}

TEST_F(NetworkTest, RepeatsABroadcastThatReads)
{
    int asked = 0;
    card.behave(ipGet, [&asked](const FakeCard::Request&) {
        return ++asked == 3 ? FakeCard::Answer{.text = "<IpConfiguration/>"} : hangUp;
    });
    loop.run(patient.askByName("card1", readingByName));
    EXPECT_GE(card.texts(ipGet).size(), 3U);
}

TEST_F(NetworkTest, NeverRepeatsABroadcastThatChanges)
{
    card.answer(ipGet, {.text = "<IpConfiguration/>"});
    EXPECT_EQ(endOf(hasty.askByName("card1", changingByName)), Category::timeout);
    loop.run(network.askByName("card1", readingByName)); // when this is answered, all before it was heard
    EXPECT_EQ(card.texts(ipSet).size(), 1U);
}

TEST_F(NetworkTest, TellsWhyNobodyMayHaveAnswered)
{
    card.answer(ipGet, hangUp);
    const Failure failure = failureOf([&] { loop.run(hasty.askByName("card1", readingByName)); });
    EXPECT_EQ(failure.hint, "nobody answered as \"card1\": " + causesOfSilence());
    EXPECT_NE(causesOfSilence().find("port 50003"), std::string::npos);
}

TEST_F(NetworkTest, PassesOverTheAnswerOfAnother)
{
    card.answer(ipGet, {.text = "<IpConfiguration/>"});
    ByName how;
    int seen = 0;
    how.isMine = [&seen](const CardReply&) { return ++seen == 2; };
    loop.run(patient.askByName("card1", readingByName, how));
    EXPECT_EQ(seen, 2);
}

TEST_F(NetworkTest, PassesOverWhatIsNoReply)
{
    card.answer(ipGet, {.startPattern = 0});
    EXPECT_EQ(endOf(hasty.askByName("card1", readingByName)), Category::timeout);
}

TEST_F(NetworkTest, TellsARefusalByNameUnlessAnyStatusWillDo)
{
    card.answer(ipGet, refusal);
    EXPECT_EQ(endOf(network.askByName("card1", readingByName)), Category::refusedByCard);
    EXPECT_EQ(loop.run(network.askAnybody(readingByName)).header.status, 2);
}

// Two interfaces, of which the first takes no broadcast.
class HalfDeafNetworkTest : public NetworkTest
{
protected:
    std::optional<Failure> broadcast(Reach reach)
    {
        failNext("sendto", EPERM);
        return both.broadcast(sockets, reading, reach);
    }

    std::vector<std::string> warnings;
    Network both{loop, {.policy = {}, .interfaces = {"lo", "lo"}, .warn = [this](const auto& text) {
                            warnings.push_back(text);
                        }}};
    std::vector<BroadcastSocket> sockets = both.openInterfaces();
    const std::string lo = errorText("lo took no broadcast, so that nobody there was asked: ", EPERM);
};

TEST_F(HalfDeafNetworkTest, WarnsOnceOfAnInterfaceThatTakesNoBroadcast)
{
    broadcast(Reach::anyInterface);
    broadcast(Reach::anyInterface);
    EXPECT_EQ(warnings, std::vector<std::string>{lo});
}

TEST_F(HalfDeafNetworkTest, TellsEachTimeThatSomebodyWasNotAsked)
{
    for (int time = 1; time <= 2; ++time) {
        const std::optional<Failure> unasked = broadcast(Reach::anyInterface);
        ASSERT_TRUE(unasked);
        EXPECT_EQ(unasked->category, Category::noNetwork);
    }
    EXPECT_FALSE(both.broadcast(sockets, reading));
}

TEST_F(NetworkTest, TellsOfAnInterfaceThatIsDownUnlessOthersAreNamed)
{
    FakeInterface lan("lan0", "192.0.2.1", "255.255.255.0");
    const Network any(loop, {});
    EXPECT_FALSE(any.leftOut());
    lan.isUp = false;
    ASSERT_TRUE(any.leftOut());
    EXPECT_EQ(any.leftOut()->hint, "lan0 is down, so that nobody there was asked; -i leaves an interface out");
    EXPECT_FALSE(network.leftOut());
}

TEST_F(HalfDeafNetworkTest, FailsIfAllInterfacesMustTakeIt)
{
    const Failure failure = failureOf([&] { (void)broadcast(Reach::allInterfaces); });
    EXPECT_EQ(failure.code, ExitCode::unreachable);
    EXPECT_EQ(failure.category, Category::noNetwork);
    EXPECT_EQ(failure.hint, lo + "; -i leaves an interface out");
    EXPECT_TRUE(warnings.empty());
}

TEST_F(NetworkTest, TellsAnInterfaceThatIsNone)
{
    const Network wrong(loop, {{}, {"no-such-dev"}});
    const Failure failure = failureOf([&] { (void)wrong.openInterfaces(); });
    EXPECT_EQ(failure.code, ExitCode::unreachable);
    EXPECT_EQ(failure.category, Category::noInterface);
    EXPECT_TRUE(failure.hint.starts_with("cannot broadcast on no-such-dev: ")) << failure.hint;
}

TEST_F(NetworkTest, TellsOfAMachineThatGivesNoSocket)
{
    failNext("socket", EMFILE);
    const Failure failure = failureOf([&] { (void)network.openInterfaces(); });
    EXPECT_EQ(failure.code, ExitCode::internal);
    EXPECT_EQ(failure.category, Category::noSocket);
    EXPECT_EQ(failure.hint, errorText("cannot broadcast on lo: ", EMFILE));
}

TEST_F(NetworkTest, DoesNotPassOverAnInterfaceThatThisMachineGivesNoSocketFor)
{
    const FakeInterface lan("lan0", "192.0.2.1", "255.255.255.0");
    const Network any(loop, {});
    EXPECT_EQ(failureOf([&] { (void)any.openInterfaces(); }).category, Category::noInterface);
    failNext("socket", EPERM);
    EXPECT_EQ(failureOf([&] { (void)any.openInterfaces(); }).category, Category::noSocket);
}

// Somebody who has always sent one more before the last is looked at, in a time that each look at the clock takes.
class FloodTest : public NetworkTest
{
protected:
    void show(Direction direction)
    {
        if (direction == Direction::received && ++received < endless) {
            sendOne();
        }
    }

    void sendOne() const
    {
        sockaddr_in client = {};
        socklen_t size = sizeof client;
        ::getsockname(sockets.front().descriptor(), reinterpret_cast<sockaddr*>(&client), &size);
        client.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::sendto(source.get(), "x", 1, 0, reinterpret_cast<const sockaddr*>(&client), size);
    }

    Task<void> takeAll()
    {
        Listening listening(after(Seconds(0.2)));
        for (;;) {
            const std::optional<Datagram> datagram = co_await flooded.receive(sockets, listening);
            if (!datagram) {
                co_return;
            }
        }
    }

    Task<void> countAfter(Seconds pause)
    {
        co_await loop.until(after(pause));
        receivedThen = received;
    }

    static constexpr std::size_t endless = 100000; // that a test which fails ends nevertheless
    VirtualTime time{std::chrono::milliseconds(1)};
    std::size_t received = 0;
    std::size_t receivedThen = 0;
    Network flooded{loop, {{}, {"lo"}}, [this](const std::string&, Direction direction, std::span<const std::byte>) {
                        show(direction);
                    }};
    std::vector<BroadcastSocket> sockets = flooded.openInterfaces();
    Descriptor source{::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
};

TEST_F(FloodTest, EndsWithTheTime)
{
    sendOne();
    loop.run(takeAll());
    EXPECT_GT(received, mostDatagramsWaiting); // what may have waited is taken
    EXPECT_LT(received, 2 * mostDatagramsWaiting);
}

TEST_F(FloodTest, LeavesOthersTheirTurn)
{
    sendOne();
    Task<void> counting = countAfter(Seconds(0.05));
    counting.start();
    loop.run(takeAll());
    EXPECT_GT(receivedThen, 0U);
    EXPECT_LT(receivedThen, 500U);
}

TEST_F(NetworkTest, GivesAStepItsOwnTimeUnlessTheUserSaidOne)
{
    EXPECT_EQ(network.timeoutOr(Seconds(60)), Seconds(60));
    const Network said(loop, {.policy = {Seconds(2), 0}, .interfaces = {}, .timeoutGiven = true});
    EXPECT_EQ(said.timeoutOr(Seconds(60)), Seconds(2));
}

} // namespace
