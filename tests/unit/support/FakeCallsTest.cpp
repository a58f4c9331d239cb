// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "OrdinaryCalls.h"
#include "support/LoopbackPeer.h"
#include "support/PortMapping.h"
#include "support/SystemTest.h"

#include <cerrno>

using FakeCallsTest = SystemTest;

TEST_F(FakeCallsTest, LogLinesAreCapturedWithTheirLevel)
{
    ordinary::logWarning("number");
    EXPECT_EQ(log.warnings(), Texts{"number 7"});
    EXPECT_TRUE(log.infos().empty());
}

TEST_F(FakeCallsTest, SettingTheClockIsOnlyNotedDown)
{
    EXPECT_EQ(ordinary::setClock(86400), 0);
    ASSERT_EQ(clock.settings().size(), 1U);
    EXPECT_EQ(clock.settings().front().tv_sec, 86400);
}

TEST_F(FakeCallsTest, SettingTheClockCanFail)
{
    failNext("clock_settime", EPERM);
    EXPECT_EQ(ordinary::setClock(86400), -1);
    EXPECT_EQ(errno, EPERM);
}

TEST_F(FakeCallsTest, TheClockStandsWhereTheTestStopsIt)
{
    clock.stopAt(1234567890);
    EXPECT_EQ(ordinary::readClock(), 1234567890);
}

TEST_F(FakeCallsTest, TheJournalKeepsTheOrderOfDifferentCalls)
{
    ordinary::makeDirectory("/tmp/upgrade");
    ordinary::logWarning("made");
    ordinary::runSystem("reboot");
    EXPECT_EQ(orderOf({"log", "system", "mkdir"}),
              (Texts{"mkdir: /tmp/upgrade 0777", "log: made 7", "system: reboot"}));
}

TEST_F(FakeCallsTest, ALockFileIsOpenedInTheSandbox)
{
    EXPECT_EQ(ordinary::lockFile("/var/lock.file"), 0);
    EXPECT_EQ(callsTo("open"), Texts{"/var/lock.file O_RDWR|O_CREAT|O_CLOEXEC 0644"});
    EXPECT_EQ(callsTo("flock"), Texts{"LOCK_EX"});
    EXPECT_TRUE(sandbox.exists("/var/lock.file"));
}

TEST_F(FakeCallsTest, ABroadcastArrivesAtThePeerOnTheSamePort)
{
    const UdpPeer peer;
    const int socket = ordinary::openDatagramSocket();
    EXPECT_EQ(ordinary::sendDatagram(socket, "255.255.255.255", peer.port(), "hello"), 5);
    EXPECT_EQ(peer.receive(), (Bytes{'h', 'e', 'l', 'l', 'o'}));
    EXPECT_EQ(callsTo("sendto"), Texts{"5 255.255.255.255:" + std::to_string(peer.port())});
    ordinary::closeDescriptor(socket);
}

TEST_F(FakeCallsTest, AMappedPortIsFoundAtAnyAddress)
{
    const UdpPeer peer;
    const PortMapping mapping(50003, peer.port());
    const int socket = ordinary::openDatagramSocket();
    EXPECT_EQ(ordinary::sendDatagram(socket, "10.0.0.1", 50003, "hello"), 5);
    EXPECT_EQ(peer.receive().size(), 5U);
    EXPECT_EQ(callsTo("sendto"), Texts{"5 10.0.0.1:50003"});
    EXPECT_EQ(PortMapping::knownOf(peer.port()), 50003);
    ordinary::closeDescriptor(socket);
}

TEST_F(FakeCallsTest, ADatagramOfAPeerIsReceived)
{
    const UdpPeer peer;
    const int socket = ordinary::openDatagramSocket();
    ASSERT_EQ(ordinary::bindTo(socket, 0), 0);
    peer.send(boundPort(socket), {1, 2, 3});
    EXPECT_EQ(ordinary::receiveDatagram(socket), 3);
    EXPECT_TRUE(peer.hasNothing());
    ordinary::closeDescriptor(socket);
}
