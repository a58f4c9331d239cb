// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "core/EventLoop.h"
#include "unit/core/ServicesFixture.h"

#include <algorithm>

namespace
{

class EventLoopTest : public ServicesTest
{
protected:
    // Runs so many passes; the loop then ends because select() fails.
    void run(int passes)
    {
        passNext("select", passes);
        failNext("select", EINTR);
        runEventLoop(tcp, *udpFirst, *udpSecond);
    }

    const CapturedLog::Line interrupted = {LOG_WARNING, std::string("select() failed: ") + std::strerror(EINTR)};
};

} // namespace

TEST_F(EventLoopTest, EndsWhenASignalInterruptsSelect)
{
    run(0);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{interrupted}));
}

TEST_F(EventLoopTest, EndsWhenSelectFailsForAnyOtherReason)
{
    failNext("select", ENOMEM);
    runEventLoop(tcp, *udpFirst, *udpSecond);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{std::string("select() failed: ") + std::strerror(ENOMEM)}));
}

TEST_F(EventLoopTest, WarnsAndGoesOnWhenSelectTimesOut)
{
    returnNext("select", 0);
    run(0);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, "select() timed out"}, interrupted}));
}

TEST_F(EventLoopTest, AsksForTheHighestDescriptorPlusOne)
{
    run(0);
    const int highest = std::max({tcp.peerDescriptor(), udpFirst->descriptor(), udpSecond->descriptor()});
    EXPECT_EQ(callsTo("select"), (std::vector<std::string>{std::to_string(highest + 1)}));
}

TEST_F(EventLoopTest, ClosesTheUnconnectedFirstSocketOnItsFirstPass)
{
    const std::string closed = "Socket (" + std::to_string(tcp.peerDescriptor()) + ") successfully closed";
    run(1);
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{{LOG_WARNING, std::string("recv() failed: ") + std::strerror(ENOTCONN)},
                                              {LOG_INFO, closed},
                                              interrupted}));
}

TEST_F(EventLoopTest, AcceptsAClientOnItsSecondPass)
{
    const TcpPeer client(boundPort(tcp.serverDescriptor()));
    run(2);
    EXPECT_NE(tcp.peerDescriptor(), -1);
    const std::vector<std::string> infos = log.infos();
    EXPECT_TRUE(infos.back().starts_with("Connection from 127.0.0.1 accepted on ports ")) << infos.back();
}

TEST_F(EventLoopTest, ServesTheClientOnItsThirdPass)
{
    const TcpPeer client(boundPort(tcp.serverDescriptor()));
    client.send(SampleHeader{.commandId = 2}.bytes());
    run(3);
    EXPECT_EQ(SampleHeader::from(client.receive(20)).status, 6);
}

TEST_F(EventLoopTest, DoesNotAcceptASecondClientWhileTheFirstIsConnected)
{
    const auto first = connect();
    const TcpPeer second(boundPort(tcp.serverDescriptor()));
    sendToFirst(SampleHeader{.commandId = 0x11}.bytes());
    run(1);
    EXPECT_TRUE(callsTo("accept").empty());
}

TEST_F(EventLoopTest, AcceptsTheSecondClientOnceTheFirstHasGone)
{
    auto first = connect();
    const TcpPeer second(boundPort(tcp.serverDescriptor()));
    second.send(SampleHeader{.commandId = 2}.bytes());
    first.reset();
    run(3);
    EXPECT_EQ(SampleHeader::from(second.receive(20)).status, 6);
}

TEST_F(EventLoopTest, WatchesBothDatagramSockets)
{
    const auto client = connect();
    sendToSecond(SampleHeader{.commandId = 0x22}.bytes());
    run(1);
    EXPECT_EQ(SampleHeader::from(requester.receive()).commandId, 0x8022);
}

TEST_F(EventLoopTest, EndsWithoutAFurtherMessageWhenAcceptingFails)
{
    const TcpPeer client(boundPort(tcp.serverDescriptor()));
    failNext("accept", EMFILE);
    runEventLoop(tcp, *udpFirst, *udpSecond);
    EXPECT_EQ(log.lines().back(),
              (CapturedLog::Line{LOG_WARNING, std::string("accept() failed: ") + std::strerror(EMFILE)}));
}
