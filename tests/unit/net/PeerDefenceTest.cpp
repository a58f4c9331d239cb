// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "net/PeerDefence.h"

#include "unit/net/Connection.h"
#include "util/Hardened.h"

#include <array>
#include <cerrno>

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace
{

using PeerDefenceTest = ConnectionTest;

timeval limitOf(const TcpSocket& socket)
{
    timeval limit = {};
    socklen_t size = sizeof limit;
    getsockopt(socket.descriptor(), SOL_SOCKET, SO_RCVTIMEO, &limit, &size);
    return limit;
}

// An emulator of another processor may hand the option on in a form that the kernel reads otherwise.
bool limitCanBeReadBack(const TcpSocket& socket)
{
    timeval limit = {};
    limit.tv_sec = 7;
    setsockopt(socket.descriptor(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    return limitOf(socket).tv_sec == limit.tv_sec;
}

const std::string stalled = "Client has sent nothing for 30 s in the middle of a message, close the connection";

bool hasUrgentByte(const TcpSocket& socket, int patience)
{
    pollfd watched = {.fd = socket.descriptor(), .events = POLLPRI, .revents = 0};
    return poll(&watched, 1, patience) == 1 && (watched.revents & POLLPRI) != 0;
}

} // namespace

TEST_F(PeerDefenceTest, AsksForAReceiveThatEndsAfter30Seconds)
{
    limitStalls(peer.descriptor());
    EXPECT_EQ(callsTo("setsockopt"), Texts{"SO_RCVTIMEO 30 s 0 us"});
}

TEST_F(PeerDefenceTest, AReceiveEndsAfter30Seconds)
{
    if (!limitCanBeReadBack(peer)) {
        GTEST_SKIP() << "the emulator does not give back the time limit of a socket";
    }
    limitStalls(peer.descriptor());
    EXPECT_EQ(limitOf(peer).tv_sec, 30);
    EXPECT_EQ(limitOf(peer).tv_usec, 0);
}

TEST_F(PeerDefenceTest, OnlyTheHardenedBuildLimitsAnAcceptedConnection)
{
    EXPECT_EQ(limitOf(peer).tv_sec, hardened ? 30 : 0);
}

TEST_F(PeerDefenceTest, OnlyTheHardenedBuildEndsAConnectionThatStalls)
{
    client->send({1});
    passNext("recv");
    failNext("recv", EAGAIN);
    std::array<std::byte, 2> buffer;
    EXPECT_EQ(peer.receive(buffer), -1);
    EXPECT_EQ(log.warnings().size(), 1U);
    EXPECT_EQ(log.warnings().front() == stalled, hardened);
    EXPECT_EQ(client->hasNothing(), !hardened); // an end is something
}

TEST_F(PeerDefenceTest, WhatASilentClientSendsTooLateIsNotRead)
{
    giveUpStalled(peer.descriptor());
    EXPECT_EQ(log.lines(), (Lines{{4, stalled}}));
    EXPECT_TRUE(client->receiveAll().empty());
    std::array<std::byte, 1> buffer;
    EXPECT_EQ(peer.receive(buffer), 0);
}

TEST_F(PeerDefenceTest, AnUrgentByteIsReadAway)
{
    client->sendUrgent();
    ASSERT_TRUE(hasUrgentByte(peer, 5000));
    dropUrgentByte(peer.descriptor());
    EXPECT_FALSE(hasUrgentByte(peer, 0));
}

TEST_F(PeerDefenceTest, WithoutAnUrgentByteNothingIsReadAway)
{
    client->send({7});
    dropUrgentByte(peer.descriptor());
    std::array<std::byte, 1> buffer;
    EXPECT_EQ(peer.receive(buffer), 1);
    EXPECT_EQ(buffer[0], std::byte{7});
}
