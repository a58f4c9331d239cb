// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/protocol/TcpServiceFixture.h"

using TcpServiceOpenTest = SystemTest;

namespace
{

constexpr ServiceConfig anyPort = {
    .port = 0, .deviceNumber = 5, .serviceNumber = 4, .bindDevice = 1, .deviceName = "lo", .broadcast = 1};

std::string hexReply(const SampleHeader& request, std::uint8_t status)
{
    return hex(replyTo(request, status).bytes());
}

} // namespace

TEST_F(TcpServiceOpenTest, HasNoDescriptorsBeforeItIsOpened)
{
    const TcpService service;
    EXPECT_EQ(service.peerDescriptor(), -1);
    EXPECT_EQ(service.serverDescriptor(), -1);
}

TEST_F(TcpServiceOpenTest, CreatesThePeerSocketBeforeTheServerSocket)
{
    TcpService service;
    EXPECT_EQ(service.open(anyPort), 0);
    EXPECT_EQ(
        log.infos(),
        (std::vector<std::string>{
            "Stream socket (" + std::to_string(service.peerDescriptor()) + ") successfully created",
            "Stream socket (" + std::to_string(service.serverDescriptor()) + ") successfully created",
            "Server socket options successfully set", "Bind() was successful", "Listen on port 0 was successful"}));
}

TEST_F(TcpServiceOpenTest, ListensOnAllAddressesAndOnNoDevice)
{
    TcpService service;
    service.open(anyPort);
    EXPECT_EQ(callsTo("bind"), (std::vector<std::string>{"0.0.0.0:0"}));
    EXPECT_EQ(callsTo("setsockopt"), (std::vector<std::string>{"SO_REUSEADDR 1"}));
}

TEST_F(TcpServiceOpenTest, ClosesThePeerSocketAndThenTheServerSocket)
{
    TcpService service;
    service.open(anyPort);
    const std::vector<std::string> expected = {
        "Socket (" + std::to_string(service.peerDescriptor()) + ") successfully closed",
        "Socket (" + std::to_string(service.serverDescriptor()) + ") successfully closed"};
    log.clear();
    EXPECT_EQ(service.close(), 0);
    EXPECT_EQ(log.infos(), expected);
}

TEST_F(TcpServiceOpenTest, ClosesNothingIfItWasNeverOpened)
{
    TcpService service;
    EXPECT_EQ(service.close(), 0);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TcpServiceOpenTest, CannotReceiveAHeaderOnTheFirstUnconnectedSocket)
{
    TcpService service;
    service.open(anyPort);
    MessageHeader header = {};
    EXPECT_EQ(service.receiveHeader(header), -1);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{std::string("recv() failed: ") + std::strerror(ENOTCONN)}));
}

TEST_F(TcpServiceTest, ReceivesAHeaderInHostOrder)
{
    const SampleHeader sent = {.commandId = 0x0102, .sequenceId = 0x01020304, .payloadLength = 0x05060708};
    client.send(sent.bytes());
    MessageHeader header = {};
    EXPECT_EQ(service.receiveHeader(header), 0);
    EXPECT_EQ(sampleOf(header), sent);
}

TEST_F(TcpServiceTest, ReceivesAHeaderThatComesInPieces)
{
    const SampleHeader sent = {.commandId = 0x0102};
    client.send(sent.bytes());
    limitNext("recv", 7);
    MessageHeader header = {};
    EXPECT_EQ(service.receiveHeader(header), 0);
    EXPECT_EQ(sampleOf(header), sent);
}

TEST_F(TcpServiceTest, RefusesAHeaderInWhoseMiddleTheClientCloses)
{
    client.send(Bytes(19));
    client.finishSending();
    MessageHeader header = {};
    EXPECT_EQ(service.receiveHeader(header), -1);
    EXPECT_EQ(log.infos(), (std::vector<std::string>{"Client closed the connection"}));
    EXPECT_TRUE(client.hasNothing());
}

TEST_F(TcpServiceTest, RefusesAHeaderThatCannotBeReceived)
{
    failNext("recv", ECONNRESET);
    MessageHeader header = {};
    EXPECT_EQ(service.receiveHeader(header), -1);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{std::string("recv() failed: ") + std::strerror(ECONNRESET)}));
}

TEST_F(TcpServiceTest, AcceptsAHeaderForItsNumbersSilently)
{
    EXPECT_EQ(service.checkHeader(hostHeader({})), 0);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(client.hasNothing());
}

TEST_F(TcpServiceTest, AcceptsAnyStartPattern)
{
    EXPECT_EQ(service.checkHeader(hostHeader({.startPattern = 0x12345678})), 0);
}

TEST_F(TcpServiceTest, AcceptsARequestThatHasTheReplyFlag)
{
    EXPECT_EQ(service.checkHeader(hostHeader({.commandId = 0x8001})), 0);
}

TEST_F(TcpServiceTest, AnswersAWrongVersionWithStatus3)
{
    const SampleHeader request = {.version = 2};
    EXPECT_EQ(service.checkHeader(hostHeader(request)), -1);
    EXPECT_EQ(hex(client.receive(20)), hexReply(request, 3));
}

TEST_F(TcpServiceTest, AnswersAWrongDeviceWithStatus4)
{
    const SampleHeader request = {.device = 6};
    EXPECT_EQ(service.checkHeader(hostHeader(request)), -1);
    EXPECT_EQ(hex(client.receive(20)), hexReply(request, 4));
}

TEST_F(TcpServiceTest, AnswersAWrongServiceWithStatus5)
{
    const SampleHeader request = {.service = 3};
    EXPECT_EQ(service.checkHeader(hostHeader(request)), -1);
    EXPECT_EQ(hex(client.receive(20)), hexReply(request, 5));
}

TEST_F(TcpServiceTest, PrefersTheWrongVersionToTheWrongDevice)
{
    const SampleHeader request = {.version = 2, .device = 6};
    service.checkHeader(hostHeader(request));
    EXPECT_EQ(hex(client.receive(20)), hexReply(request, 3));
}

TEST_F(TcpServiceTest, PrefersTheWrongVersionToTheWrongService)
{
    const SampleHeader request = {.version = 0, .service = 3};
    service.checkHeader(hostHeader(request));
    EXPECT_EQ(hex(client.receive(20)), hexReply(request, 3));
}

TEST_F(TcpServiceTest, PrefersTheWrongDeviceToTheWrongService)
{
    const SampleHeader request = {.device = 6, .service = 3};
    service.checkHeader(hostHeader(request));
    EXPECT_EQ(hex(client.receive(20)), hexReply(request, 4));
}

TEST_F(TcpServiceTest, LogsNothingAboutARefusedHeader)
{
    service.checkHeader(hostHeader({.version = 2, .device = 6, .service = 3}));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(TcpServiceTest, DoesNotReadThePayloadOfARefusedHeader)
{
    client.send(Bytes(16, 0xAA));
    service.checkHeader(hostHeader({.device = 6, .payloadLength = 16}));
    EXPECT_TRUE(callsTo("recv").empty());
}
