// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/services/TarvelTcpFixture.h"

#include <array>

namespace
{

using TarvelServiceTcpTest = TarvelTcpTest;
using TarvelServiceTcpStartTest = SystemTest;

} // namespace

TEST_F(TarvelServiceTcpStartTest, ClosesTheUnconnectedFirstSocket)
{
    TarvelServiceTcp service;
    service.open(
        {.port = 0, .deviceNumber = 5, .serviceNumber = 4, .bindDevice = 0, .deviceName = nullptr, .broadcast = 0});
    const std::string closed = "Socket (" + std::to_string(service.peerDescriptor()) + ") successfully closed";
    log.clear();
    service.dispatch();
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{{LOG_WARNING, std::string("recv() failed: ") + std::strerror(ENOTCONN)},
                                              {LOG_INFO, closed}}));
    EXPECT_EQ(service.peerDescriptor(), -1);
}

TEST_F(TarvelServiceTcpTest, AnswersAnUnlistedCommandWithStatus6)
{
    const SampleHeader request = {.commandId = 2};
    serve(request.bytes());
    expectStatus(request, 6);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"Unknown command ID: 0x2"}));
}

TEST_F(TarvelServiceTcpTest, KeepsTheConnectionOpenAfterAnUnlistedCommand)
{
    serve(SampleHeader{.commandId = 2}.bytes());
    EXPECT_TRUE(isConnected());
}

TEST_F(TarvelServiceTcpTest, ServesTheNextMessageBehindADrainedPayload)
{
    const SampleHeader next = {.commandId = 0x33};
    serve(SampleHeader{.commandId = 2, .payloadLength = 5}.bytes() + Bytes(5, 0xAA) + next.bytes());
    static_cast<void>(client.receive(20));
    dispatch();
    expectStatus(next, 6);
}

TEST_F(TarvelServiceTcpTest, DoesNotKnowTheDatagramCommands)
{
    for (const std::uint16_t commandId : {std::uint16_t{3}, std::uint16_t{4}, std::uint16_t{9}}) {
        const SampleHeader request = {.commandId = commandId};
        serve(request.bytes());
        expectStatus(request, 6);
    }
}

TEST_F(TarvelServiceTcpTest, DoesNotKnowACommandWithTheReplyFlag)
{
    const SampleHeader request = {.commandId = 0x8001};
    serve(request.bytes());
    expectStatus(request, 6);
}

TEST_F(TarvelServiceTcpTest, GivesUploadAndUpgradeToTheSameHandler)
{
    for (const std::uint16_t command : std::array<std::uint16_t, 2>{7, 8}) {
        const SampleHeader request = {.messageFormat = 0, .commandId = command};
        serve(request.bytes());
        expectStatus(request, 2);
        EXPECT_EQ(log.warnings().back(), "FWUpgrade message should only contain a 8bit section!");
        log.clear();
    }
}

TEST_F(TarvelServiceTcpTest, RepliesAndClosesTheConnectionOnARefusedHeader)
{
    const SampleHeader request = {.device = 6};
    const std::string closed = "Socket (" + std::to_string(service.peerDescriptor()) + ") successfully closed";
    serve(request.bytes());
    EXPECT_FALSE(isConnected());
    EXPECT_EQ(hex(client.receiveAll()), hex(replyTo(request, 4).bytes()));
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_INFO, closed}}));
}

TEST_F(TarvelServiceTcpTest, ClosesTheConnectionWithoutAReplyWhenTheClientClosesInsideAHeader)
{
    client.send(Bytes(10));
    client.finishSending();
    dispatch();
    EXPECT_FALSE(isConnected());
    EXPECT_EQ(client.receiveAll(), Bytes{});
}

TEST_F(TarvelServiceTcpTest, ClosesTheConnectionWhenReceivingFails)
{
    failNext("recv", ECONNRESET);
    dispatch();
    EXPECT_FALSE(isConnected());
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{std::string("recv() failed: ") + std::strerror(ECONNRESET)}));
}

TEST_F(TarvelServiceTcpTest, KeepsTheSocketIfItCannotBeClosed)
{
    const std::string failed = "Failed to close socket (" + std::to_string(service.peerDescriptor()) + "): ";
    failNext("recv", ECONNRESET);
    failNext("close", EIO);
    dispatch();
    EXPECT_TRUE(isConnected());
    EXPECT_EQ(log.warnings().back(), failed + std::strerror(EIO));
}

TEST_F(TarvelServiceTcpTest, AcceptsTheNextClientAfterTheFirstHasGone)
{
    client.finishSending();
    dispatch();
    const TcpPeer second(boundPort(service.serverDescriptor()));
    EXPECT_EQ(service.acceptPeer(), 0);
    second.send(SampleHeader{.commandId = 2}.bytes());
    dispatch();
    EXPECT_EQ(SampleHeader::from(second.receive(20)).status, 6);
}

TEST_F(TarvelServiceTcpTest, SendsTheCommonFailureReply)
{
    const SampleHeader request = {.messageFormat = 1, .commandId = 17, .payloadLength = 4};
    MessageHeader header = {};
    header.commandId = request.commandId;
    header.sequenceId = request.sequenceId;
    EXPECT_EQ(service.sendFailureReply(header), 0);
    EXPECT_EQ(hex(client.receive(20)), "81c39aff 01000504 11800201 0d0c0b0a 00000000");
}
