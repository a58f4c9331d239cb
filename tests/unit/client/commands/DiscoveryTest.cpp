// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Discovery.h"

#include "ProgramFixture.h"

#include "client/engine/EventLoop.h"
#include "client/wire/Endpoint.h"
#include "client/wire/Network.h"
#include "support/FakeInterface.h"
#include "support/LossyKernel.h"
#include "support/PortMapping.h"
#include "support/VirtualTime.h"

#include <cstdint>
#include <functional>
#include <sys/socket.h>

namespace
{

using Milliseconds = std::vector<std::int64_t>;

class DiscoveryTest : public ProgramFixture
{
protected:
    // When each datagram was sent, and when nobody listened any more.
    Milliseconds timesOf(const NetworkOptions& options)
    {
        const VirtualTime time;
        Network network(loop, options);
        Discovery discovery(network, [](const FoundCard&) {});
        Task<void> running = discovery.run(0);
        running.start();
        Milliseconds times;
        const auto note = [&] {
            const std::int64_t now = std::chrono::duration_cast<std::chrono::milliseconds>(time.passed()).count();
            times.resize(callsTo("sendto").size(), now);
            return now;
        };
        while (!running.done()) {
            note();
            loop.run(aMillisecond());
        }
        times.push_back(note());
        return times;
    }

private:
    Task<void> aMillisecond() { co_await loop.until(after(Seconds(0.001))); }

    EventLoop loop;
};

TEST_F(DiscoveryTest, SendsBothProbesThreeTimesAndListens)
{
    EXPECT_EQ(timesOf({.policy = {}, .interfaces = {"lo"}}), (Milliseconds{0, 0, 300, 300, 900, 900, 1200}));
}

TEST_F(DiscoveryTest, ListensForAsLongAsTheUserSays)
{
    EXPECT_EQ(timesOf({.policy = {Seconds(6)}, .interfaces = {"lo"}, .timeoutGiven = true}),
              (Milliseconds{0, 0, 1500, 1500, 4500, 4500, 6000}));
}

Descriptor boundTo(const std::string& address, std::uint16_t port)
{
    Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const sockaddr_in own = socketAddress({address, port});
    return ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&own), sizeof own) == 0 ? std::move(socket)
                                                                                          : Descriptor();
}

std::uint16_t portOf(const Descriptor& socket)
{
    sockaddr_in own = {};
    socklen_t size = sizeof own;
    ::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&own), &size);
    return ntohs(own.sin_port);
}

// Cards with an address each, as far as the loopback device goes; they answer when the test says so.
class CrowdTest : public SystemTest
{
protected:
    void forgetProbes() const
    {
        std::byte one;
        while (::recv(hearer.get(), &one, sizeof one, MSG_DONTWAIT) != -1) {
        }
    }

    // Each refuses the first probe.
    void answerFrom(unsigned number)
    {
        Bytes bytes(100);
        sockaddr_in client = {};
        socklen_t size = sizeof client;
        const ssize_t received =
            ::recvfrom(hearer.get(), bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&client), &size);
        ASSERT_GT(received, 0) << "nobody was asked";
        bytes.resize(static_cast<std::size_t>(received));
        constexpr std::size_t flags = 9;
        constexpr std::size_t status = 10;
        bytes.at(flags) |= std::byte{0x80}; // a reply
        bytes.at(status) = std::byte{refused};
        for (unsigned card = 1; card <= number; ++card) {
            const Descriptor socket = boundTo("127.1.0." + std::to_string(card), portOf(hearer));
            ::sendto(socket.get(), bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&client), size);
        }
    }

    void discover(unsigned number, const std::function<void()>& meanwhile)
    {
        found.clear();
        forgetCalls();
        forgetProbes();
        Network network(loop, {.policy = {}, .interfaces = {"lo"}});
        Discovery discovery(network, [&](const FoundCard& card) { found.push_back(card); });
        Task<void> running = discovery.run(number);
        running.start();
        meanwhile();
        answerFrom(number);
        while (!running.done()) {
            loop.run(aMillisecond());
        }
    }

    // How often the interfaces are looked at until that many cards were found.
    std::size_t looksFor(unsigned number)
    {
        discover(number, [] {});
        EXPECT_EQ(found.size(), number);
        return callsTo("getifaddrs").size();
    }

    Task<void> aMillisecond() { co_await loop.until(after(Seconds(0.001))); }

    const VirtualTime time;
    const Descriptor hearer = boundTo("127.0.0.1", 0);
    const PortMapping mapping{cardPort, portOf(hearer)};
    EventLoop loop;
    std::vector<FoundCard> found;
};

TEST_F(CrowdTest, LooksAtTheInterfacesAsOftenForManyCardsAsForOne)
{
    const std::size_t looks = looksFor(1);
    EXPECT_EQ(looksFor(100), looks);
}

TEST_F(CrowdTest, LooksAtTheInterfacesAgainInEachRound)
{
    FakeInterface lan("lo", "127.0.0.1", "255.0.0.0"); // one that can broadcast
    lan.isUp = false;
    discover(1, [] {});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_FALSE(found.front().reachable);
    discover(1, [&] {
        lan.isUp = true;
        while (callsTo("sendto").size() < 4) {
            loop.run(aMillisecond());
        }
    });
    ASSERT_EQ(found.size(), 1U);
    EXPECT_TRUE(found.front().reachable);
}

TEST_F(DiscoveryTest, LooksAtTheInterfacesAFewTimesForManyNames)
{
    card.answer(ipGet, refusal);
    EXPECT_EQ(run({"discover", "--names", "card[1-60]", "--expect", "60"}), 0) << err;
    EXPECT_TRUE(outHas("card60"));
    EXPECT_LT(callsTo("getifaddrs").size(), 20U);
}

// What is said of datagrams that did not fit, and how often.
class LossTest : public ProgramFixture
{
protected:
    [[nodiscard]] std::size_t warnings() const
    {
        std::size_t number = 0;
        for (std::size_t at = err.find(warning); at != std::string::npos; at = err.find(warning, at + 1)) {
            ++number;
        }
        return number;
    }

    const std::string warning = "warning: 7 datagrams were lost because a receive buffer was full";
};

TEST_F(LossTest, IsWarnedOfOnce)
{
    const LossyKernel kernel(7);
    EXPECT_EQ(run({"discover", "--timeout", "3"}), 0);
    EXPECT_EQ(warnings(), 1U) << err;
}

TEST_F(LossTest, IsWarnedOfWhenACommandFails)
{
    const LossyKernel kernel(7);
    EXPECT_EQ(runBare({"tarvelctl", "-i", "lo", "-i", "no-such-dev", "discover"}), 6);
    EXPECT_EQ(warnings(), 1U) << err;
}

TEST_F(LossTest, IsNotWarnedOfWhenAllWasHeard)
{
    EXPECT_EQ(run({"discover", "--timeout", "0.1"}), 0);
    EXPECT_FALSE(errHas("lost")) << err;
}

} // namespace
