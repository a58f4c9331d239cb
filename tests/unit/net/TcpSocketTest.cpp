// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/TcpSocket.h"

#include "Connection.h"
#include "net/SetupError.h"
#include "support/ErrorText.h"

#include <cerrno>
#include <span>

#include <fcntl.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace
{

using TcpSocketTest = SystemTest;
using TcpSocketReceiveTest = ConnectionTest;
using TcpSocketSendTest = ConnectionTest;
using TcpSocketKeepAliveTest = ConnectionTest;

const Bytes twenty = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20};
constexpr int size = 20;

int keepAliveOptionOf(const TcpSocket& socket, int option)
{
    int value = -1;
    socklen_t length = sizeof value;
    getsockopt(socket.descriptor(), IPPROTO_TCP, option, &value, &length);
    return value;
}

TEST_F(TcpSocketTest, ANewSocketIsAStreamThatShellCommandsDoNotInherit)
{
    const TcpSocket socket;
    EXPECT_EQ(callsTo("socket"), Texts{"SOCK_STREAM|SOCK_CLOEXEC"});
    EXPECT_EQ(fcntl(socket.descriptor(), F_GETFD), FD_CLOEXEC);
}

TEST_F(TcpSocketTest, ANewSocketIsLoggedWithItsDescriptor)
{
    const TcpSocket socket;
    EXPECT_EQ(log.lines(),
              (Lines{{6, "Stream socket (" + std::to_string(socket.descriptor()) + ") successfully created"}}));
}

TEST_F(TcpSocketTest, ASocketThatCannotBeCreatedIsAWarningAndTheEnd)
{
    failNext("socket", EMFILE);
    EXPECT_THROW(TcpSocket(), SetupError);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("Creating stream socket failed: ", EMFILE)}}));
}

TEST_F(TcpSocketTest, ASocketWithoutConnectionCannotReceive)
{
    TcpSocket socket;
    std::byte byte;
    EXPECT_EQ(socket.receive(&byte, 1, 0), -1);
    EXPECT_EQ(log.warnings(), Texts{errorText("recv() failed: ", ENOTCONN)});
}

TEST_F(TcpSocketReceiveTest, ReceiveReadsExactlyTheBytesAskedFor)
{
    client->send(twenty + twenty);
    Bytes buffer(size);
    EXPECT_EQ(peer.receive(buffer.data(), size, 0), size);
    EXPECT_EQ(buffer, twenty);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TcpSocketReceiveTest, ReceiveIntoASpanFillsIt)
{
    client->send(twenty);
    std::vector<std::byte> buffer(size);
    EXPECT_EQ(peer.receive(std::span(buffer)), size);
    EXPECT_EQ(buffer.back(), std::byte{20});
}

TEST_F(TcpSocketReceiveTest, ReceivePutsPiecesTogether)
{
    client->send(twenty);
    limitNext("recv", 8);
    limitNext("recv", 1);
    Bytes buffer(size);
    EXPECT_EQ(peer.receive(buffer.data(), size, 0), size);
    EXPECT_EQ(buffer, twenty);
    EXPECT_EQ(callsTo("recv"), (Texts{"20", "12", "11"}));
}

TEST_F(TcpSocketReceiveTest, ReceiveHandsItsFlagsOn)
{
    client->send(twenty);
    Bytes buffer(size);
    EXPECT_EQ(peer.receive(buffer.data(), size, MSG_PEEK), size);
    EXPECT_EQ(peer.receive(buffer.data(), size, 0), size);
}

TEST_F(TcpSocketReceiveTest, ReceiveOfNothingDoesNotAskTheSystem)
{
    EXPECT_EQ(peer.receive(nullptr, 0, 0), 0);
    EXPECT_EQ(peer.receive(nullptr, -1, 0), 0);
    EXPECT_TRUE(callsTo("recv").empty());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TcpSocketReceiveTest, APeerThatClosesBetweenMessagesIsNoError)
{
    client.reset();
    Bytes buffer(size);
    EXPECT_EQ(peer.receive(buffer.data(), size, 0), 0);
    EXPECT_EQ(log.lines(), (Lines{{6, "Client closed the connection"}}));
}

TEST_F(TcpSocketReceiveTest, APeerThatClosesAfterEightOfTwentyBytesIsNoError)
{
    client->send({1, 2, 3, 4, 5, 6, 7, 8});
    client.reset();
    Bytes buffer(size);
    EXPECT_EQ(peer.receive(buffer.data(), size, 0), 0);
    EXPECT_EQ(log.lines(), (Lines{{6, "Client closed the connection"}}));
}

TEST_F(TcpSocketReceiveTest, APeerThatResetsTheConnectionIsAWarning)
{
    client->reset();
    Bytes buffer(size);
    EXPECT_EQ(peer.receive(buffer.data(), size, 0), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("recv() failed: ", ECONNRESET)}}));
}

TEST_F(TcpSocketReceiveTest, AnErrorInTheMiddleOfAMessageIsAWarning)
{
    client->send(twenty);
    limitNext("recv", 8);
    failNext("recv", EINTR);
    Bytes buffer(size);
    EXPECT_EQ(peer.receive(buffer.data(), size, 0), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("recv() failed: ", EINTR)}}));
}

TEST_F(TcpSocketSendTest, SendWritesAllBytes)
{
    EXPECT_EQ(peer.send(twenty.data(), size, 0), size);
    EXPECT_EQ(client->receive(size), twenty);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TcpSocketSendTest, SendWritesPiecesUntilAllAreOut)
{
    limitNext("send", 8);
    limitNext("send", 1);
    EXPECT_EQ(peer.send(twenty.data(), size, 0), size);
    EXPECT_EQ(client->receive(size), twenty);
    EXPECT_EQ(callsTo("send"), (Texts{"20", "12", "11"}));
}

TEST_F(TcpSocketSendTest, SendWritesASingleByte)
{
    EXPECT_EQ(peer.send(twenty.data(), 1, 0), 1);
    EXPECT_EQ(callsTo("send"), Texts{"1"});
}

TEST_F(TcpSocketSendTest, SendHandsItsFlagsOn)
{
    peer.send(twenty.data(), size, MSG_MORE);
    EXPECT_EQ(callsTo("send"), Texts{"20 MSG_MORE"});
}

TEST_F(TcpSocketSendTest, SendOfNothingDoesNotAskTheSystem)
{
    EXPECT_EQ(peer.send(nullptr, 0, 0), 0);
    EXPECT_EQ(peer.send(nullptr, -1, 0), 0);
    EXPECT_TRUE(callsTo("send").empty());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TcpSocketSendTest, APeerThatHasClosedIsNoError)
{
    client.reset();
    int result = size;
    while (result == size) { // the first bytes leave before the peer's kernel can refuse them
        result = peer.send(twenty.data(), size, 0);
    }
    EXPECT_EQ(result, 0);
    EXPECT_EQ(log.lines(), (Lines{{6, "Client closed the connection"}}));
}

TEST_F(TcpSocketSendTest, ABrokenPipeInTheMiddleOfAMessageIsNoError)
{
    limitNext("send", 8);
    failNext("send", EPIPE);
    EXPECT_EQ(peer.send(twenty.data(), size, 0), 0);
    EXPECT_EQ(log.lines(), (Lines{{6, "Client closed the connection"}}));
}

TEST_F(TcpSocketSendTest, AnyOtherErrorIsAWarning)
{
    failNext("send", ECONNRESET);
    EXPECT_EQ(peer.send(twenty.data(), size, 0), -1);
    EXPECT_EQ(log.lines(), (Lines{{4, errorText("send() failed: ", ECONNRESET)}}));
}

TEST_F(TcpSocketKeepAliveTest, AnAcceptedConnectionIsProbedWhenItsPeerIsSilent)
{
    int value = 0;
    socklen_t length = sizeof value;
    getsockopt(peer.descriptor(), SOL_SOCKET, SO_KEEPALIVE, &value, &length);
    EXPECT_EQ(value, 1);
}

TEST_F(TcpSocketKeepAliveTest, TheFirstProbeIsSentAfterAMinute)
{
    EXPECT_EQ(keepAliveOptionOf(peer, TCP_KEEPIDLE), 60);
}

TEST_F(TcpSocketKeepAliveTest, ThreeProbesTenSecondsApartDecide)
{
    EXPECT_EQ(keepAliveOptionOf(peer, TCP_KEEPINTVL), 10);
    EXPECT_EQ(keepAliveOptionOf(peer, TCP_KEEPCNT), 3);
}

TEST_F(TcpSocketKeepAliveTest, AReplyThatIsNotAcknowledgedEndsTheConnectionAfterAMinuteAndAHalf)
{
    EXPECT_EQ(keepAliveOptionOf(peer, TCP_USER_TIMEOUT), 90000);
}

TEST_F(TcpSocketKeepAliveTest, ASystemThatRefusesProbesIsNotWorthAMessage)
{
    failAlways("setsockopt", ENOPROTOOPT);
    peer.enableKeepAlive();
    EXPECT_TRUE(log.lines().empty());
}

} // namespace
