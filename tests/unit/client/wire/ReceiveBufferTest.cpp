// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/wire/ReceiveBuffer.h"

#include "client/wire/Network.h"
#include "support/LossyKernel.h"
#include "support/SystemTest.h"

#include <array>
#include <cerrno>
#include <linux/sock_diag.h>
#include <memory>
#include <poll.h>
#include <sys/socket.h>

namespace
{

constexpr int burst = 1000;
constexpr std::size_t sizeOfHeader = 20;

void sendBurst(int receiver)
{
    sockaddr_in to = {};
    socklen_t size = sizeof to;
    ::getsockname(receiver, reinterpret_cast<sockaddr*>(&to), &size);
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const Descriptor source(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const std::array<char, sizeOfHeader> answer = {};
    for (int count = 0; count < burst; ++count) {
        const auto sent =
            ::sendto(source.get(), answer.data(), answer.size(), 0, reinterpret_cast<const sockaddr*>(&to), size);
        ASSERT_EQ(sent, static_cast<ssize_t>(answer.size())) << count;
    }
}

// What the kernel says itself; nothing if it does not, as under some emulators.
std::optional<int> lostBy(int socket)
{
    std::array<std::uint32_t, SK_MEMINFO_VARS> numbers = {};
    socklen_t length = sizeof numbers;
    const bool isTold =
        ::getsockopt(socket, SOL_SOCKET, SO_MEMINFO, numbers.data(), &length) == 0 && length == sizeof numbers;
    return isTold ? std::optional(static_cast<int>(numbers.at(SK_MEMINFO_DROPS))) : std::nullopt;
}

bool hasWhatIsWanted(int socket)
{
    int size = 0;
    socklen_t length = sizeof size;
    ::getsockopt(socket, SOL_SOCKET, SO_RCVBUF, &size, &length);
    return size >= 2 * receiveBuffer;
}

// Waits for the next one, which may be on its way still.
bool isReadable(int socket)
{
    constexpr int longEnough = 10000; // milliseconds, which only a failure takes
    pollfd polled{socket, POLLIN, 0};
    return ::poll(&polled, 1, longEnough) == 1;
}

class ReceiveBufferTest : public SystemTest
{
protected:
    static Descriptor datagramSocket() { return Descriptor(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)); }
    static void shrink(int socket)
    {
        const int least = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &least, sizeof least);
    }
    // Of one socket.
    static std::optional<std::string> losses(bool isSmall = false)
    {
        const Descriptor socket = datagramSocket();
        enlargeReceiveBuffer(socket.get());
        if (isSmall) {
            shrink(socket.get());
        }
        LostDatagrams lost;
        lost.add(socket.get());
        return lost.describe();
    }

    const std::string all = std::to_string(receiveBuffer);
    const std::string larger = "; with net.core.rmem_max=" + all + " this machine keeps more of them";
};

// Of a thousand cards, before the first is read.
TEST_F(ReceiveBufferTest, HoldsTheAnswersOfAThousandCards)
{
    EventLoop loop;
    const Network network(loop, {{}, {"lo"}});
    const std::vector<BroadcastSocket> sockets = network.openInterfaces();
    const int socket = sockets.front().descriptor();
    if (!hasWhatIsWanted(socket)) {
        GTEST_SKIP() << "this machine allows no larger buffer";
    }
    sendBurst(socket);
    for (int count = 0; count < burst; ++count) {
        ASSERT_TRUE(isReadable(socket)) << count;
        ASSERT_TRUE(sockets.front().receive());
    }
    EXPECT_FALSE(network.lost().describe());
}

TEST_F(ReceiveBufferTest, TellsHowManyDatagramsAllSocketsLost)
{
    EventLoop loop;
    const Network network(loop, {{}, {"lo", "lo"}});
    std::vector<BroadcastSocket> sockets = network.openInterfaces();
    if (!lostBy(sockets.front().descriptor())) {
        GTEST_SKIP() << "the kernel does not tell what it throws away";
    }
    int read = 0;
    for (const BroadcastSocket& socket : sockets) {
        shrink(socket.descriptor());
        sendBurst(socket.descriptor());
        for (int here = 0; here + *lostBy(socket.descriptor()) < burst; ++here) {
            ASSERT_TRUE(isReadable(socket.descriptor())) << here << " read, and the rest neither there nor lost";
            ASSERT_TRUE(socket.receive());
            ++read;
        }
    }
    EXPECT_LT(read, 2 * burst);
    EXPECT_FALSE(network.lost().describe()); // as long as they are open
    sockets.clear();
    EXPECT_EQ(network.lost().describe(),
              std::to_string(2 * burst - read) +
                  " datagrams were lost because a receive buffer was full: some cards may be missing" + larger);
}

TEST_F(ReceiveBufferTest, TellsNothingOfSocketsThatLostNothing)
{
    EXPECT_EQ(losses(), std::nullopt);
}

TEST_F(ReceiveBufferTest, TellsOfOneDatagram)
{
    const LossyKernel kernel(1);
    EXPECT_TRUE(losses().value_or("").starts_with("1 datagram was lost because"));
}

TEST_F(ReceiveBufferTest, AddsUpBeyondWhatTheKernelCounts)
{
    const LossyKernel kernel(UINT32_MAX);
    const Descriptor socket = datagramSocket();
    LostDatagrams lost;
    lost.add(socket.get());
    lost.add(socket.get());
    EXPECT_TRUE(lost.describe().value_or("").starts_with("8589934590 datagrams were lost")) << *lost.describe();
}

TEST_F(ReceiveBufferTest, NamesTheRemedyOnlyWhereItIsOne)
{
    const LossyKernel kernel(7);
    EXPECT_TRUE(losses(true).value_or("").ends_with("may be missing" + larger)) << *losses(true);
    const Descriptor probed = datagramSocket();
    enlargeReceiveBuffer(probed.get());
    if (hasWhatIsWanted(probed.get())) {
        EXPECT_TRUE(losses().value_or("").ends_with("may be missing")) << *losses();
    }
}

TEST_F(ReceiveBufferTest, CountsWhatASocketLostThatOutlivesItsWire)
{
    const LossyKernel kernel(7);
    EventLoop loop;
    auto wire = std::make_unique<Wire>(Wire{loop, SendGate(), {}});
    const std::shared_ptr<LostDatagrams> lost = wire->lost;
    std::optional<BroadcastSocket> socket(std::in_place, *wire, "lo");
    wire.reset();
    EXPECT_EQ(lost->count(), 0U);
    socket.reset();
    EXPECT_EQ(lost->count(), 7U);
}

TEST_F(ReceiveBufferTest, TellsNothingWhereTheKernelDoesNot)
{
    failAlways("getsockopt", ENOPROTOOPT);
    EXPECT_EQ(losses(), std::nullopt);
}

TEST_F(ReceiveBufferTest, TellsNothingWhereAnEmulatorTellsTheFirstNumberOnly)
{
    const LossyKernel kernel(7, 1);
    EXPECT_EQ(losses(), std::nullopt);
}

TEST_F(ReceiveBufferTest, IsAsLargeAsAllowedWithoutPrivilege)
{
    const Descriptor socket = datagramSocket();
    shrink(socket.get());
    failNext("setsockopt", EPERM);
    enlargeReceiveBuffer(socket.get());
    EXPECT_EQ(callsTo("setsockopt"), (Texts{"SO_RCVBUFFORCE " + all, "SO_RCVBUF " + all}));
}

TEST_F(ReceiveBufferTest, NeverBecomesSmaller)
{
    const Descriptor socket = datagramSocket();
    enlargeReceiveBuffer(socket.get());
    if (!hasWhatIsWanted(socket.get())) {
        GTEST_SKIP() << "this machine allows no larger buffer";
    }
    forgetCalls();
    enlargeReceiveBuffer(socket.get());
    EXPECT_EQ(callsTo("setsockopt"), Texts{});
}

} // namespace
