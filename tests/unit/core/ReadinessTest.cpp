// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "core/EventLoop.h"
#include "unit/core/ServicesFixture.h"
#include "util/Hardened.h"

namespace
{

class ReadinessTest : public ServicesTest
{
protected:
    static fd_set setOf(std::initializer_list<int> descriptors)
    {
        fd_set set;
        FD_ZERO(&set);
        for (const int descriptor : descriptors) {
            FD_SET(descriptor, &set);
        }
        return set;
    }

    int handleReadable(std::initializer_list<int> descriptors)
    {
        return handleReadiness(setOf(descriptors), setOf({}), tcp, *udpFirst, *udpSecond);
    }

    void expectReported(std::initializer_list<int> descriptors, const std::string& warning)
    {
        reportExceptions(setOf(descriptors), tcp, *udpFirst, *udpSecond);
        EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, warning}}));
    }
};

} // namespace

TEST_F(ReadinessTest, ReportsAnExceptionOnTheServerSocketFirst)
{
    expectReported({tcp.serverDescriptor(), tcp.peerDescriptor(), udpFirst->descriptor(), udpSecond->descriptor()},
                   "Exception pending on Tarvel TCP server socket");
}

TEST_F(ReadinessTest, ReportsAnExceptionOnThePeerSocketSecond)
{
    expectReported({tcp.peerDescriptor(), udpFirst->descriptor(), udpSecond->descriptor()},
                   "Exception pending on Tarvel TCP peer socket");
}

TEST_F(ReadinessTest, ReportsAnExceptionOnTheFirstDatagramSocketThird)
{
    expectReported({udpFirst->descriptor(), udpSecond->descriptor()}, "Exception pending on VEMT Tarvel UDP socket");
}

TEST_F(ReadinessTest, ReportsAnExceptionOnTheSecondDatagramSocketLast)
{
    expectReported({udpSecond->descriptor()}, "Exception pending on KORV Tarvel UDP socket");
}

TEST_F(ReadinessTest, ReportsNothingWithoutAnException)
{
    reportExceptions(setOf({}), tcp, *udpFirst, *udpSecond);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ReadinessTest, TestsNoDescriptorOfAServiceThatHasNone)
{
    tcp.close();
    udpFirst->close();
    udpSecond->close();
    log.clear();
    fd_set everything;
    std::memset(&everything, 0xFF, sizeof everything);
    EXPECT_EQ(handleReadiness(everything, everything, tcp, *udpFirst, *udpSecond), 0);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(ReadinessTest, GoesOnAfterAnException)
{
    EXPECT_EQ(handleReadiness(setOf({}), setOf({tcp.serverDescriptor()}), tcp, *udpFirst, *udpSecond), 0);
    EXPECT_EQ(log.warnings().size(), 1U);
}

TEST_F(ReadinessTest, ReportsAnExceptionBeforeItServes)
{
    const auto client = connect();
    client->send(SampleHeader{.commandId = 2}.bytes());
    handleReadiness(setOf({tcp.peerDescriptor()}), setOf({udpFirst->descriptor()}), tcp, *udpFirst, *udpSecond);
    EXPECT_EQ(log.warnings(),
              (std::vector<std::string>{"Exception pending on VEMT Tarvel UDP socket", "Unknown command ID: 0x2"}));
}

TEST_F(ReadinessTest, ServesOneRequestOfAReadablePeer)
{
    const auto client = connect();
    client->send(SampleHeader{.commandId = 2}.bytes() + SampleHeader{.commandId = 3}.bytes());
    EXPECT_EQ(handleReadable({tcp.peerDescriptor()}), 0);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Unknown command ID: 0x2"}));
}

TEST_F(ReadinessTest, AcceptsAConnectionOnAReadableServer)
{
    tcp.dispatch();
    const TcpPeer client(boundPort(tcp.serverDescriptor()));
    EXPECT_EQ(handleReadable({tcp.serverDescriptor()}), 0);
    EXPECT_NE(tcp.peerDescriptor(), -1);
}

TEST_F(ReadinessTest, EndsTheLoopWhenAcceptingFails)
{
    tcp.dispatch();
    log.clear();
    failNext("accept", EMFILE);
    EXPECT_EQ(handleReadable({tcp.serverDescriptor(), udpFirst->descriptor()}), -1);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{
                               {LOG_WARNING, std::string("accept() failed: ") + std::strerror(EMFILE)}}));
    EXPECT_TRUE(callsTo("recvfrom").empty());
}

TEST_F(ReadinessTest, ServesTheFirstDatagramSocketBeforeTheSecond)
{
    sendToSecond(SampleHeader{.commandId = 0x22}.bytes());
    sendToFirst(SampleHeader{.commandId = 0x11}.bytes());
    EXPECT_EQ(handleReadable({udpFirst->descriptor(), udpSecond->descriptor()}), 0);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Unknown command ID: 0x11", "Unknown command ID: 0x22"}));
}

TEST_F(ReadinessTest, ServesThePeerBeforeTheDatagrams)
{
    const auto client = connect();
    client->send(SampleHeader{.commandId = 2}.bytes());
    sendToFirst(SampleHeader{.commandId = 0x11}.bytes());
    handleReadable({tcp.peerDescriptor(), udpFirst->descriptor()});
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Unknown command ID: 0x2", "Unknown command ID: 0x11"}));
}

TEST_F(ReadinessTest, DoesNotLookAtTheResultsOfTheServices)
{
    failAlways("recv", EIO);
    failAlways("recvfrom", EIO);
    EXPECT_EQ(handleReadable({tcp.peerDescriptor(), udpFirst->descriptor(), udpSecond->descriptor()}), 0);
}

TEST_F(ReadinessTest, ReadsAnUrgentByteAwayOnlyInTheHardenedBuild)
{
    const auto client = connect();
    client->sendUrgent();
    handleReadiness(setOf({}), setOf({tcp.peerDescriptor()}), tcp, *udpFirst, *udpSecond);
    EXPECT_EQ(callsTo("recv").size(), hardened ? 1U : 0U);
}

TEST_F(ReadinessTest, ReadsNothingAwayForAnExceptionOfAnotherSocket)
{
    const auto client = connect();
    handleReadiness(setOf({}), setOf({udpFirst->descriptor()}), tcp, *udpFirst, *udpSecond);
    EXPECT_TRUE(callsTo("recv").empty());
}

TEST_F(ReadinessTest, LeavesASocketThatIsNotReadableAlone)
{
    sendToSecond(SampleHeader{.commandId = 0x22}.bytes());
    handleReadable({});
    EXPECT_TRUE(log.lines().empty());
}
