// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/UdpSocket.h"

#include "net/SetupError.h"
#include "net/UdpServer.h"
#include "support/ErrorText.h"
#include "support/LoopbackPeer.h"
#include "support/SystemTest.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/socket.h>

namespace
{

class UdpSocketTest : public SystemTest
{
protected:
    UdpSocketTest()
    {
        destination.sin_family = AF_INET;
        destination.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        destination.sin_port = htons(peer.port());
    }

    UdpPeer peer;
    sockaddr_in destination = {};
};

// With a socket that datagrams can be sent to. What happened up to there is forgotten.
class UdpReceiveTest : public UdpSocketTest
{
protected:
    UdpReceiveTest()
    {
        log.clear();
        forgetCalls();
    }

    UdpServer socket{0, ""};
    std::uint16_t port = boundPort(socket.descriptor());
    sockaddr_in sender = {};
};

using UdpSendTest = UdpReceiveTest;

TEST_F(UdpSocketTest, ANewSocketIsForDatagramsAndNotInheritedByShellCommands)
{
    const UdpSocket socket;
    EXPECT_EQ(callsTo("socket"), Texts{"SOCK_DGRAM|SOCK_CLOEXEC"});
    EXPECT_EQ(fcntl(socket.descriptor(), F_GETFD), FD_CLOEXEC);
}

TEST_F(UdpSocketTest, ANewSocketIsLoggedWithItsDescriptor)
{
    const UdpSocket socket;
    EXPECT_EQ(log.lines(),
              (Lines{{6, "Datagram socket (" + std::to_string(socket.descriptor()) + ") successfully created"}}));
}

TEST_F(UdpSocketTest, ASocketThatCannotBeCreatedIsAWarningAndTheEnd)
{
    failNext("socket", EMFILE);
    EXPECT_THROW(UdpSocket(), SetupError);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("Creating datagram socket failed: ", EMFILE)}}));
}

TEST_F(UdpSocketTest, TheEndOfTheObjectClosesTheSocket)
{
    int number = -1;
    {
        const UdpSocket socket;
        number = socket.descriptor();
    }
    EXPECT_EQ(log.infos().back(), "Socket (" + std::to_string(number) + ") successfully closed");
}

TEST_F(UdpSendTest, SetBroadcastSetsTheOption)
{
    EXPECT_EQ(socket.setBroadcast(1), 0);
    int value = 0;
    socklen_t length = sizeof value;
    getsockopt(socket.descriptor(), SOL_SOCKET, SO_BROADCAST, &value, &length);
    EXPECT_EQ(value, 1);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(UdpSendTest, SetBroadcastFailsSilently)
{
    failNext("setsockopt", ENOPROTOOPT);
    EXPECT_EQ(socket.setBroadcast(1), -1);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(UdpReceiveTest, ReceiveFromTakesOneDatagram)
{
    peer.send(port, {1, 2, 3});
    peer.send(port, {4});
    Bytes buffer(100);
    EXPECT_EQ(socket.receiveFrom(buffer.data(), buffer.size(), &sender, 0), 3);
    buffer.resize(3);
    EXPECT_EQ(buffer, (Bytes{1, 2, 3}));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(UdpReceiveTest, ReceiveFromStoresWhereTheDatagramCameFrom)
{
    peer.send(port, {1, 2, 3});
    Bytes buffer(100);
    socket.receiveFrom(buffer.data(), buffer.size(), &sender, 0);
    EXPECT_EQ(sender.sin_family, AF_INET);
    EXPECT_EQ(sender.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
    EXPECT_EQ(sender.sin_port, htons(peer.port()));
}

TEST_F(UdpReceiveTest, ReceiveFromCutsADatagramThatIsTooLongWithoutNotice)
{
    peer.send(port, {1, 2, 3});
    peer.send(port, {4});
    Bytes buffer(2);
    EXPECT_EQ(socket.receiveFrom(buffer.data(), buffer.size(), &sender, 0), 2);
    EXPECT_EQ(buffer, (Bytes{1, 2}));
    EXPECT_EQ(socket.receiveFrom(buffer.data(), buffer.size(), &sender, 0), 1);
    EXPECT_EQ(buffer.front(), 4);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(UdpReceiveTest, ReceiveFromTakesAnEmptyDatagram)
{
    peer.send(port, {});
    Bytes buffer(100);
    EXPECT_EQ(socket.receiveFrom(buffer.data(), buffer.size(), &sender, 0), 0);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(UdpReceiveTest, ReceiveFromHandsItsFlagsOn)
{
    Bytes buffer(100);
    EXPECT_EQ(socket.receiveFrom(buffer.data(), buffer.size(), &sender, MSG_DONTWAIT), -1);
    EXPECT_EQ(log.warnings(), Texts{errorText("recvfrom() failed: ", EAGAIN)});
}

TEST_F(UdpReceiveTest, ReceiveFromThatFailsIsAWarning)
{
    failNext("recvfrom", ENETDOWN);
    Bytes buffer(100);
    EXPECT_EQ(socket.receiveFrom(buffer.data(), buffer.size(), &sender, 0), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("recvfrom() failed: ", ENETDOWN)}}));
}

TEST_F(UdpSendTest, SendToSendsOneDatagram)
{
    const Bytes datagram = {1, 2, 3};
    EXPECT_EQ(socket.sendTo(datagram.data(), datagram.size(), &destination, 0), 3);
    EXPECT_EQ(peer.receive(), datagram);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(UdpSendTest, SendToThatFailsIsAWarning)
{
    failNext("sendto", ENETUNREACH);
    EXPECT_EQ(socket.sendTo("text", 4, &destination, 0), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("sendto() failed: ", ENETUNREACH)}}));
}

TEST_F(UdpSendTest, SendToOfMoreThanADatagramCanHoldIsAWarning)
{
    const Bytes datagram(70000);
    EXPECT_EQ(socket.sendTo(datagram.data(), datagram.size(), &destination, 0), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("sendto() failed: ", EMSGSIZE)}}));
}

TEST_F(UdpSendTest, SendToThatSendsLessIsAWarningButNoFailure)
{
    limitNext("sendto", 2);
    EXPECT_EQ(socket.sendTo("text", 4, &destination, 0), 2);
    EXPECT_EQ(log.lines(), (Lines{{4, "Datagram has been truncated by sendto()"}}));
}

} // namespace
